#include "engine/CommandCollector.h"

#include <gtest/gtest.h>

#include "engine/CopyCommand.h"
#include "engine/EngineFixture.h"
#include "engine/HeapFailure.h"
#include "engine/OpenCommand.h"
#include "support/AllocationFailure.h"
#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/Replaced.h"

namespace {

struct Collector {
  const char* element;
  HRESULT (*collect)(IXMLDOMDocument2*, std::unique_ptr<CListItem>*);
  bool reportsFailures;  // else its result is S_OK and the failure shows in the log and in a short chain
  std::size_t commandSize;
  const char* allocationFailure;

  // The result of a collection that ended with `failure`.
  HRESULT ResultOf(HRESULT failure) const { return reportsFailures ? failure : S_OK; }
};

const Collector kCollectors[] = {
    {"Copy", CollectCopyCommands, false, sizeof(CCopyCommand), "Failed to create copy command."},
    {"Open", CollectOpenCommands, true, sizeof(COpenCommand), "Failed to create open command."},
};

class CommandCollectorTest : public testing::TestWithParam<Collector> {
 protected:
  CommandCollectorTest() : element(Wide(GetParam().element)) {}

  HRESULT Collect(IXMLDOMDocument2* document) {
    const auto source = ParseElement(GoodElement("http://h/before.txt"));
    chain = std::make_unique<CCopyCommand>(source.Get(), nullptr);
    const CListItem* const before = chain.get();
    const HRESULT hr = GetParam().collect(document, &chain);
    EXPECT_NE(before, chain.get()) << "the chain was not set";
    return hr;
  }

  int Length() const {
    int length = 0;
    for (const CListItem* item = chain.get(); item; item = item->Next())
      ++length;
    return length;
  }

  // A message in which %s stands for the element's name.
  std::string Message(const std::string& level, const std::string& text) const {
    return Replaced(level + " " + text, "%s", GetParam().element);
  }

  std::string Element(const std::string& content) const {
    const std::string name = GetParam().element;
    return "<" + name + " browser='false'>" + content + "</" + name + ">";
  }

  std::string GoodElement(const std::string& source) const {
    return Element("<Source>" + source + "</Source><Destination><Temp/></Destination>");
  }

  std::wstring element;
  std::unique_ptr<CListItem> chain;
};

TEST_P(CommandCollectorTest, NeedsADocument) {
  const LogCapture log;
  std::unique_ptr<CListItem> untouched;
  EXPECT_HRESULT(E_INVALIDARG, GetParam().collect(nullptr, &untouched));
  EXPECT_EQ(nullptr, untouched);
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", "0x80070057 '%s' missing XML document parameter.")}, log.Messages());
  EXPECT_EQ(std::string(GetParam().element) + "Command", log.Entries().at(0).file);
}

TEST_P(CommandCollectorTest, NeedsAPlaceForTheChain) {
  FakeDocument document;
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, GetParam().collect(&document, nullptr));
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", "0x80070057 '%s' missing command list return value parameter.")},
            log.Messages());
}

TEST_P(CommandCollectorTest, TheDocumentIsMissedBeforeThePlace) {
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, GetParam().collect(nullptr, nullptr));
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", "0x80070057 '%s' missing XML document parameter.")}, log.Messages());
}

TEST_P(CommandCollectorTest, ADocumentWithoutSuchElementsGivesAnEmptyChain) {
  const LogCapture log;
  EXPECT_HRESULT(S_OK, Collect(ParseXml("<VantorManifest/>").Get()));
  EXPECT_EQ(nullptr, chain);
  EXPECT_EQ("", log.Text());
}

TEST_P(CommandCollectorTest, AnEmptyDocumentGivesAnEmptyChain) {
  Microsoft::WRL::ComPtr<IXMLDOMDocument2> document;
  ASSERT_HRESULT(S_OK, CreateXMLDocument(&document));
  EXPECT_HRESULT(S_OK, Collect(document.Get()));
  EXPECT_EQ(nullptr, chain);
}

TEST_P(CommandCollectorTest, TakesTheElementsInDocumentOrderWhereverTheyStand) {
  const std::string first = GoodElement("http://h/1.txt");
  const std::string second = GoodElement("http://h/2.txt");
  const std::string third = GoodElement("http://h/3.txt");
  const LogCapture log;
  EXPECT_HRESULT(S_OK, Collect(ParseXml("<m>" + first + "<x><y>" + second + "</y></x>" + third + "</m>").Get()));
  ASSERT_EQ(3, Length());
  std::string names;
  for (const CListItem* item = chain.get(); item; item = item->Next())
    names += static_cast<const CCopyCommand*>(item)->GetFileName();
  EXPECT_EQ("1.txt2.txt3.txt", names);
  EXPECT_TRUE(log.Messages().empty());
}

TEST_P(CommandCollectorTest, ElementNamesAreCaseSensitive) {
  EXPECT_HRESULT(S_OK, Collect(ParseXml("<m><copy/><COPY/><open/><OPEN/></m>").Get()));
  EXPECT_EQ(nullptr, chain);
}

TEST_P(CommandCollectorTest, TheFirstUnreadableElementIsTheLastOfTheChain) {
  const std::string good = GoodElement("http://h/1.txt");
  const std::string bad = Element("<Destination><Temp/></Destination>");
  EXPECT_HRESULT(GetParam().ResultOf(E_POINTER), Collect(ParseXml("<m>" + good + good + bad + good + good + "</m>").Get()));
  ASSERT_EQ(3, Length());
  const auto* const last = static_cast<const CCopyCommand*>(chain->Next()->Next());
  EXPECT_EQ(nullptr, last->GetSource());
  EXPECT_HRESULT(E_POINTER, last->GetReadingCode());
}

TEST_P(CommandCollectorTest, AFailedSearchIsReportedWithBothNames) {
  FakeDocument document;
  document.Answer("getElementsByTagName", kAnyFailure);
  const LogCapture log;
  EXPECT_HRESULT(GetParam().ResultOf(kAnyFailure), Collect(&document));
  EXPECT_EQ(nullptr, chain);
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", "0x80041234 Failed to get '%s' (Element: %s) commands from XML.")},
            log.Messages());
}

TEST_P(CommandCollectorTest, ASearchWithoutAListIsAFailure) {
  FakeDocument document;
  const LogCapture log;
  EXPECT_HRESULT(GetParam().ResultOf(E_FAIL), Collect(&document));
  EXPECT_EQ(nullptr, chain);
  const std::string text = "0x80004005 Empty node list returned when retrieving '%s' (Node: %s) commands from XML.";
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", text)}, log.Messages());
}

TEST_P(CommandCollectorTest, AListWithoutALengthIsAFailure) {
  FakeNodeList list;
  FakeDocument document;
  document.elements[element] = &list;
  list.Answer("get_length", kAnyFailure);
  const LogCapture log;
  EXPECT_HRESULT(GetParam().ResultOf(kAnyFailure), Collect(&document));
  EXPECT_EQ(nullptr, chain);
  EXPECT_EQ(
      std::vector<std::string>{Message("ERROR", "0x80041234 Failed to get number of %s elements in XML.")}, log.Messages());
}

TEST_P(CommandCollectorTest, AListThatCannotBeResetGivesNothing) {
  const auto good = ParseElement(GoodElement("http://h/1.txt"));
  FakeNodeList list;
  list.items = {good.Get()};
  FakeDocument document;
  document.elements[element] = &list;
  list.Answer("reset", kAnyFailure);
  const LogCapture log;
  EXPECT_HRESULT(GetParam().ResultOf(kAnyFailure), Collect(&document));
  EXPECT_EQ(nullptr, chain);
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", "0x80041234 Reseting %s element list failed.")}, log.Messages());
}

TEST_P(CommandCollectorTest, AnItemThatCannotBeHadEndsTheChain) {
  const auto good = ParseElement(GoodElement("http://h/1.txt"));
  FakeNodeList list;
  list.items = {good.Get()};
  FakeDocument document;
  document.elements[element] = &list;
  list.Answer("get_item", kAnyFailure);
  const LogCapture log;
  EXPECT_HRESULT(GetParam().ResultOf(kAnyFailure), Collect(&document));
  EXPECT_EQ(nullptr, chain);
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", "0x80041234 Getting %s element failed.")}, log.Messages());
}

TEST_P(CommandCollectorTest, AMissingItemEndsTheChain) {
  const auto good = ParseElement(GoodElement("http://h/1.txt"));
  FakeNodeList list;
  list.items = {good.Get(), nullptr, good.Get()};
  FakeDocument document;
  document.elements[element] = &list;
  const LogCapture log;
  EXPECT_HRESULT(GetParam().ResultOf(E_FAIL), Collect(&document));
  EXPECT_EQ(1, Length());
  EXPECT_EQ(
      std::vector<std::string>{Message("ERROR", "0x80004005 Empty node returned when getting %s element.")}, log.Messages());
}

TEST_P(CommandCollectorTest, AListThatClaimsTooMuchEndsWhereItsItemsEnd) {
  const auto good = ParseElement(GoodElement("http://h/1.txt"));
  FakeNodeList list;
  list.items = {good.Get(), good.Get()};
  list.claimedLength = 1000000;
  FakeDocument document;
  document.elements[element] = &list;
  const LogCapture log;
  EXPECT_HRESULT(GetParam().ResultOf(E_FAIL), Collect(&document));
  EXPECT_EQ(2, Length());
}

TEST_P(CommandCollectorTest, ACommandThatCannotBeAllocatedEndsTheChain) {
  const auto document = ParseXml("<m>" + GoodElement("http://h/1.txt") + GoodElement("http://h/2.txt") + "</m>");
  const LogCapture log(false);
  HRESULT hr = S_OK;
  HeapFailure failure = HeapFailure::OneOfSize(GetParam().commandSize, 2);
  failure.Run([&] { hr = GetParam().collect(document.Get(), &chain); });
  EXPECT_EQ(1, failure.Failures());
  EXPECT_HRESULT(GetParam().ResultOf(E_OUTOFMEMORY), hr);
  EXPECT_EQ(1, Length());
  EXPECT_EQ(
      std::vector<std::string>{Message("ERROR", std::string("0x8007000e ") + GetParam().allocationFailure)}, log.Messages());
}

TEST_P(CommandCollectorTest, ATagNameThatCannotBeAllocatedIsAFailedSearch) {
  FakeDocument document;
  const LogCapture log(false);
  PATCH_IMPORT(strings, SysAllocString, FailWith(BSTR{nullptr}, ERROR_OUTOFMEMORY));
  EXPECT_HRESULT(GetParam().ResultOf(E_OUTOFMEMORY), Collect(&document));
  EXPECT_EQ(nullptr, chain);
  EXPECT_EQ(std::vector<std::string>{Message("ERROR", "0x8007000e Failed to get '%s' (Element: %s) commands from XML.")},
            log.Messages());
}

TEST_P(CommandCollectorTest, EveryAllocationThatFailsLeavesAChainThatCanBeDeleted) {
  const auto document = ParseXml("<m>" + GoodElement("http://h/1.txt") + GoodElement("http://h/2.txt") + "</m>");
  const LogCapture log(false);
  HRESULT hr = E_UNEXPECTED;
  const auto collect = [&] { hr = GetParam().collect(document.Get(), &chain); };
  const auto clear = [&] { chain.reset(); };
  const int failures = ForEachFailedAllocation(clear, collect, [&] {
    EXPECT_GE(2, Length());
    EXPECT_TRUE(hr == S_OK || hr == E_OUTOFMEMORY || hr == E_POINTER) << std::hex << hr;
    if (Length() < 2) {
      EXPECT_EQ(GetParam().reportsFailures, FAILED(hr)) << std::hex << hr;
    }
  });
  EXPECT_LT(10, failures);
  EXPECT_EQ(2, Length());
}

INSTANTIATE_TEST_SUITE_P(, CommandCollectorTest, testing::ValuesIn(kCollectors), [](const auto& row) {
  return row.param.element;
});

}  // namespace
