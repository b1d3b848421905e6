#include "permissions/PermissionList.h"

#include <gtest/gtest.h>

#include <vector>

#include "log/LogFile.h"
#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

constexpr char kOwner[] = "TheOwner";

using Texts = std::vector<std::wstring>;
using Lines = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

// Three entries "one", "two", "three" below a container.
class EntryTextsTest : public testing::Test {
 protected:
  EntryTextsTest() {
    list.items = {&nodes[0], &nodes[1], &nodes[2]};
    container.lists[L"URL"] = &list;
  }

  Texts Read() {
    Texts texts;
    EntryTexts entries(kOwner, &container, L"URL");
    for (BString text; entries.Next(text);)
      texts.push_back(text.Get());
    BString text;
    EXPECT_FALSE(entries.Next(text)) << "the end of a list is its end";
    return texts;
  }

  // The reader's last word is one trace in its owner's name.
  void ExpectTrace(HRESULT code) {
    const auto entries = log.Entries();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ("ERROR", entries.back().level);
    EXPECT_EQ(kOwner, entries.back().file);
    EXPECT_LT(1000, entries.back().line) << "the owner's own lines have the numbers below";
    EXPECT_HRESULT(code, entries.back().code);
    EXPECT_EQ("", entries.back().message);
  }

  void ExpectOnlyTrace(HRESULT code) {
    EXPECT_EQ(1u, log.Entries().size()) << log.Text();
    ExpectTrace(code);
  }

  FakeNode nodes[3] = {FakeNode(L"one"), FakeNode(L"two"), FakeNode(L"three")};
  FakeNodeList list;
  FakeNode container;
  LogCapture log;
};

TEST_F(EntryTextsTest, ComeInDocumentOrder) {
  EXPECT_EQ((Texts{L"one", L"two", L"three"}), Read());
  EXPECT_EQ("", log.Text());
}

TEST_F(EntryTextsTest, AnEmptyListHasNone) {
  list.items.clear();
  EXPECT_EQ(Texts(), Read());
  EXPECT_EQ("", log.Text());
}

TEST_F(EntryTextsTest, AnEmptyTextIsAText) {
  nodes[1].text = L"";
  EXPECT_EQ((Texts{L"one", L"", L"three"}), Read());
  EXPECT_EQ("", log.Text());
}

TEST_F(EntryTextsTest, ASelectionThatFailsIsTraced) {
  container.Answer("selectNodes", E_ABORT);
  EXPECT_EQ(Texts(), Read());
  EXPECT_EQ(Lines{"ERROR 0x80004004 URL"}, log.Messages());
  ExpectTrace(E_ABORT);
}

TEST_F(EntryTextsTest, ASelectionWithoutAListIsTraced) {
  container.lists.clear();
  EXPECT_EQ(Texts(), Read());
  EXPECT_EQ((Codes{E_POINTER, E_POINTER}), log.ErrorTraces());
  ExpectTrace(E_POINTER);
}

TEST_F(EntryTextsTest, AMissingContainerIsTraced) {
  BString text;
  EntryTexts entries(kOwner, nullptr, L"URL");
  EXPECT_FALSE(entries.Next(text));
  EXPECT_FALSE(text);
  EXPECT_EQ((Codes{E_INVALIDARG, E_INVALIDARG}), log.ErrorTraces());
  ExpectTrace(E_INVALIDARG);
}

TEST_F(EntryTextsTest, ASelectionWithoutMemoryIsTraced) {
  {
    PATCH_IMPORT(noMemory, SysAllocString, [](auto, const OLECHAR*) -> BSTR { return nullptr; });
    EXPECT_EQ(Texts(), Read());
  }
  EXPECT_EQ((Codes{E_OUTOFMEMORY, E_OUTOFMEMORY}), log.ErrorTraces());
  ExpectTrace(E_OUTOFMEMORY);
}

TEST_F(EntryTextsTest, AListWithoutLengthIsTraced) {
  list.Answer("get_length", E_ABORT);
  EXPECT_EQ(Texts(), Read());
  ExpectOnlyTrace(E_ABORT);
}

TEST_F(EntryTextsTest, AListThatCannotBeResetIsTraced) {
  list.Answer("reset", E_ABORT);
  EXPECT_EQ(Texts(), Read());
  ExpectOnlyTrace(E_ABORT);
}

TEST_F(EntryTextsTest, AnEntryThatCannotBeFetchedEndsThem) {
  list.Answer("get_item", E_ABORT);
  EXPECT_EQ(Texts(), Read());
  ExpectOnlyTrace(E_ABORT);
}

TEST_F(EntryTextsTest, AMissingEntryEndsThem) {
  list.items[1] = nullptr;
  EXPECT_EQ(Texts{L"one"}, Read());
  ExpectOnlyTrace(E_FAIL);
}

TEST_F(EntryTextsTest, AListShorterThanItSaysEndsThem) {
  list.claimedLength = 1000;
  EXPECT_EQ((Texts{L"one", L"two", L"three"}), Read());
  ExpectOnlyTrace(E_FAIL);
}

TEST_F(EntryTextsTest, AListLongerThanItSaysIsReadAsFarAsItSays) {
  list.claimedLength = 2;
  EXPECT_EQ((Texts{L"one", L"two"}), Read());
  EXPECT_EQ("", log.Text());
}

TEST_F(EntryTextsTest, ATextThatCannotBeReadEndsThem) {
  nodes[1].Answer("get_text", E_ABORT);
  EXPECT_EQ(Texts{L"one"}, Read());
  ExpectOnlyTrace(E_ABORT);
}

TEST_F(EntryTextsTest, AnEntryWithoutTextEndsThem) {
  nodes[2].text = nullptr;
  EXPECT_EQ((Texts{L"one", L"two"}), Read());
  ExpectOnlyTrace(E_FAIL);
}

TEST_F(EntryTextsTest, FailuresLeaveNoLineWithoutDebugLogging) {
  LogCapture release(false);
  nodes[1].Answer("get_text", E_ABORT);
  EXPECT_EQ(Texts{L"one"}, Read());
  EXPECT_EQ("", release.Text());
}

// An item with a name, that counts how often it was compared and tells when it is deleted.
class Item : public CListItem {
 public:
  explicit Item(const char* itemName, int compareResult = 1) : name(itemName), result(compareResult) {}
  ~Item() override {
    if (isDeleted)
      *isDeleted = true;
  }
  int Compare(const CListItem* other) const override {
    ++compared;
    comparedWith = other;
    return result;
  }
  bool IsKindOf(const char*) const override { return false; }
  void Dump() const override { LogText(name); }

  const char* name;
  int result;
  mutable int compared = 0;
  mutable const CListItem* comparedWith = nullptr;
  bool* isDeleted = nullptr;
};

TEST(AppendEntryTest, AGoodEntryIsAppendedAtTheEnd) {
  LogCapture log;
  CListBuilder list;
  EXPECT_TRUE(AppendEntry(kOwner, std::make_unique<Item>("one"), S_OK, list));
  EXPECT_TRUE(AppendEntry(kOwner, std::make_unique<Item>("two"), S_FALSE, list));
  const std::unique_ptr<CListItem> chain = list.Take();
  ASSERT_TRUE(chain);
  EXPECT_STREQ("one", static_cast<Item*>(chain.get())->name);
  ASSERT_TRUE(chain->Next());
  EXPECT_STREQ("two", static_cast<Item*>(chain->Next())->name);
  EXPECT_EQ(nullptr, chain->Next()->Next());
  EXPECT_EQ("", log.Text());
}

TEST(AppendEntryTest, AnEntryThatCouldNotBeMadeIsABadPointer) {
  LogCapture log;
  CListBuilder list;
  EXPECT_FALSE(AppendEntry(kOwner, nullptr, S_OK, list));
  EXPECT_EQ(nullptr, list.Take());
  EXPECT_EQ(Codes{E_POINTER}, log.ErrorTraces());
  EXPECT_EQ(kOwner, log.Entries().at(0).file);
}

TEST(AppendEntryTest, AnEntryThatFailedIsTracedAndDeleted) {
  LogCapture log;
  CListBuilder list;
  bool isDeleted = false;
  auto item = std::make_unique<Item>("one");
  item->isDeleted = &isDeleted;
  EXPECT_FALSE(AppendEntry(kOwner, std::move(item), E_OUTOFMEMORY, list));
  EXPECT_TRUE(isDeleted);
  EXPECT_EQ(nullptr, list.Take());
  EXPECT_EQ(Codes{E_OUTOFMEMORY}, log.ErrorTraces());
  EXPECT_EQ(kOwner, log.Entries().at(0).file);
}

// A chain of three items, of which none matches.
class FindInListTest : public testing::Test {
 protected:
  FindInListTest() : list(new Item("one")) {
    for (Item** const place : {&second, &third}) {
      auto item = std::make_unique<Item>(place == &second ? "two" : "three");
      *place = item.get();
      list->Append(std::move(item));
    }
  }

  const std::unique_ptr<Item> list;
  Item* second;
  Item* third;
  const Item candidate{"candidate"};
};

TEST_F(FindInListTest, AMatchEndsTheSearch) {
  LogCapture log;
  second->result = 0;
  EXPECT_HRESULT(S_OK, FindInList(kOwner, list.get(), &candidate, nullptr));
  EXPECT_EQ(1, list->compared);
  EXPECT_EQ(1, second->compared);
  EXPECT_EQ(0, third->compared);
  EXPECT_EQ("", log.Text());
}

TEST_F(FindInListTest, TheEntriesAreAskedWithTheCandidate) {
  EXPECT_HRESULT(E_ACCESSDENIED, FindInList(kOwner, list.get(), &candidate, nullptr));
  EXPECT_EQ(&candidate, list->comparedWith);
  EXPECT_EQ(&candidate, third->comparedWith);
  EXPECT_EQ(0, candidate.compared);
}

TEST_F(FindInListTest, WithoutAMatchAccessIsDenied) {
  LogCapture log;
  third->result = -1;
  EXPECT_HRESULT(E_ACCESSDENIED, FindInList(kOwner, list.get(), &candidate, nullptr));
  EXPECT_EQ(1, third->compared);
  EXPECT_EQ("", log.Text());
}

TEST_F(FindInListTest, WithoutACandidateThereIsNoItem) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, FindInList(kOwner, list.get(), nullptr, "Checking: "));
  EXPECT_EQ(Lines{"ERROR 0x80070057 No Item"}, log.Messages());
  EXPECT_EQ(kOwner, log.Entries().at(0).file);
  EXPECT_LT(1000, log.Entries().at(0).line);
  EXPECT_EQ(0, list->compared);
}

TEST_F(FindInListTest, WithoutAListThereIsNoList) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, FindInList(kOwner, nullptr, &candidate, "Checking: "));
  EXPECT_EQ(Lines{"ERROR 0x80070057 No List"}, log.Messages());
  EXPECT_EQ(kOwner, log.Entries().at(0).file);
}

TEST_F(FindInListTest, TheCandidateIsLookedAtBeforeTheList) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, FindInList(kOwner, nullptr, nullptr, nullptr));
  EXPECT_EQ(Lines{"ERROR 0x80070057 No Item"}, log.Messages());
}

TEST_F(FindInListTest, TheCandidateIsShownWhileDebugLoggingIsOn) {
  LogCapture log(true);
  EXPECT_HRESULT(E_ACCESSDENIED, FindInList(kOwner, list.get(), &candidate, "Checking: "));
  EXPECT_EQ("Checking: candidate\r\n", log.Text());
}

TEST_F(FindInListTest, TheCandidateIsNotShownWithoutDebugLogging) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, FindInList(kOwner, list.get(), &candidate, "Checking: "));
  EXPECT_EQ("", log.Text());
}

TEST_F(FindInListTest, DumpingShowsEveryEntryOnALineOfItsOwn) {
  LogCapture log(false);
  DumpList(kOwner, list.get());
  EXPECT_EQ("\t\tone\r\n\t\ttwo\r\n\t\tthree\r\n", log.Text());
}

TEST(DumpListTest, AMissingListIsAnError) {
  LogCapture log;
  DumpList(kOwner, nullptr);
  EXPECT_EQ(Lines{"ERROR 0x80070057 Missing List."}, log.Messages());
  EXPECT_EQ(1u, log.Entries().size());
  EXPECT_EQ(kOwner, log.Entries().at(0).file);
}

}  // namespace
