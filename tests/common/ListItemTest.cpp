#include "common/ListItem.h"

#include <gtest/gtest.h>

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

TEST(ListItemTest, AppendingWalksToTheTail) {
  Item* const chain = new Item(1, nullptr);
  chain->Append(new Item(2, nullptr));
  chain->Append(new Item(3, nullptr));
  EXPECT_EQ((std::vector<int>{1, 2, 3}), NumbersIn(chain));
  delete chain;
}

TEST(ListItemTest, AppendingAChainAppendsAllOfIt) {
  Item* const chain = new Item(1, nullptr);
  Item* const other = new Item(2, nullptr);
  other->Append(new Item(3, nullptr));
  chain->Append(other);
  EXPECT_EQ((std::vector<int>{1, 2, 3}), NumbersIn(chain));
  delete chain;
}

TEST(ListItemTest, AppendingNothingChangesNothing) {
  Item chain(1, nullptr);
  chain.Append(nullptr);
  EXPECT_EQ(std::vector<int>{1}, NumbersIn(&chain));
}

TEST(ListItemTest, DeletingAnItemDeletesItsSuccessorsAfterItself) {
  std::vector<int> deleted;
  Item* const chain = new Item(1, &deleted);
  chain->Append(new Item(2, &deleted));
  chain->Append(new Item(3, &deleted));
  delete chain;
  EXPECT_EQ((std::vector<int>{1, 2, 3}), deleted);
}

// One megabyte of stack, as a host's thread has it, would be gone after a few thousand recursive deletions.
TEST(ListItemTest, AChainOfAMillionItemsIsDeletedWithoutRecursion) {
  std::vector<int> deleted;
  CListBuilder builder;
  for (int i = 0; i < 1000000; ++i)
    builder.Append(new Item(i, i % 100000 ? nullptr : &deleted));
  delete builder.Take();
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
    builder.Append(new Item(1, &deleted));
    builder.Append(new Item(2, &deleted));
  }
  EXPECT_EQ((std::vector<int>{1, 2}), deleted);
}

TEST(ListItemTest, ABuilderStartsAnewAfterItsChainWasTaken) {
  CListBuilder builder;
  EXPECT_EQ(nullptr, builder.Take());
  builder.Append(new Item(1, nullptr));
  CListItem* const first = builder.Take();
  builder.Append(new Item(2, nullptr));
  CListItem* const second = builder.Take();
  EXPECT_EQ(std::vector<int>{1}, NumbersIn(first));
  EXPECT_EQ(std::vector<int>{2}, NumbersIn(second));
  delete first;
  delete second;
}

}  // namespace
