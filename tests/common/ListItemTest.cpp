#include "common/ListItem.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

class Item : public CListItem {
 public:
  Item(int number, std::vector<int>* deleted) : number(number), deleted(deleted) {}
  ~Item() override {
    if (deleted)
      deleted->push_back(number);
  }
  int Compare(const CListItem*) const override { return 0; }
  bool IsKindOf(const char*) const override { return false; }
  void Dump() const override {}

  const int number;

 private:
  std::vector<int>* const deleted;
};

std::vector<int> NumbersIn(CListItem* chain) {
  std::vector<int> numbers;
  for (CListIterator items(chain); items.HasMore();)
    numbers.push_back(static_cast<Item*>(items.Next())->number);
  return numbers;
}

std::unique_ptr<Item> NewItem(int number, std::vector<int>* deleted = nullptr) {
  return std::make_unique<Item>(number, deleted);
}

TEST(ListItemTest, AppendingWalksToTheTail) {
  const std::unique_ptr<Item> chain = NewItem(1);
  chain->Append(NewItem(2));
  chain->Append(NewItem(3));
  EXPECT_EQ((std::vector<int>{1, 2, 3}), NumbersIn(chain.get()));
}

TEST(ListItemTest, AppendingAChainAppendsAllOfIt) {
  const std::unique_ptr<Item> chain = NewItem(1);
  std::unique_ptr<Item> other = NewItem(2);
  other->Append(NewItem(3));
  chain->Append(std::move(other));
  EXPECT_EQ((std::vector<int>{1, 2, 3}), NumbersIn(chain.get()));
}

TEST(ListItemTest, AppendingNothingChangesNothing) {
  Item chain(1, nullptr);
  chain.Append(nullptr);
  EXPECT_EQ(std::vector<int>{1}, NumbersIn(&chain));
}

TEST(ListItemTest, DeletingAnItemDeletesItsSuccessorsAfterItself) {
  std::vector<int> deleted;
  std::unique_ptr<Item> chain = NewItem(1, &deleted);
  chain->Append(NewItem(2, &deleted));
  chain->Append(NewItem(3, &deleted));
  chain.reset();
  EXPECT_EQ((std::vector<int>{1, 2, 3}), deleted);
}

// One megabyte of stack, as a host's thread has it, would be gone after a few thousand recursive deletions.
TEST(ListItemTest, AChainOfAMillionItemsIsDeletedWithoutRecursion) {
  std::vector<int> deleted;
  CListBuilder builder;
  for (int i = 0; i < 1000000; ++i)
    builder.Append(NewItem(i, i % 100000 ? nullptr : &deleted));
  builder.Take().reset();
  EXPECT_EQ(10u, deleted.size());
}

TEST(ListItemTest, AnIteratorOverNothingHasNoMore) {
  CListIterator items(nullptr);
  EXPECT_FALSE(items.HasMore());
  EXPECT_EQ(nullptr, items.Next());
}

TEST(ListItemTest, ABuilderDeletesWhatNobodyTook) {
  std::vector<int> deleted;
  {
    CListBuilder builder;
    builder.Append(NewItem(1, &deleted));
    builder.Append(NewItem(2, &deleted));
  }
  EXPECT_EQ((std::vector<int>{1, 2}), deleted);
}

TEST(ListItemTest, ABuilderStartsAnewAfterItsChainWasTaken) {
  CListBuilder builder;
  EXPECT_EQ(nullptr, builder.Take());
  builder.Append(NewItem(1));
  const std::unique_ptr<CListItem> first = builder.Take();
  builder.Append(NewItem(2));
  const std::unique_ptr<CListItem> second = builder.Take();
  EXPECT_EQ(std::vector<int>{1}, NumbersIn(first.get()));
  EXPECT_EQ(std::vector<int>{2}, NumbersIn(second.get()));
}

}  // namespace
