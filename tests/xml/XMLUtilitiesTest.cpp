#include "xml/XMLUtilities.h"

#include <gtest/gtest.h>
#include <wrl/client.h>

#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/XmlDocuments.h"
#include "xml/LogExpectations.h"

using Microsoft::WRL::ComPtr;

namespace {

template <class Interface>
Interface* Stale() {
  return reinterpret_cast<Interface*>(0x1234);
}

auto NoStrings() {
  return FailWith(static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(CreateXMLDocumentTest, ADocumentOfTheParsersClassIsMadeInProcess) {
  constexpr CLSID kExpectedClass = {0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
  constexpr IID kExpectedInterface = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
  const LogCapture log;
  int calls = 0;
  PATCH_IMPORT(creates, CoCreateInstance,
               [&](auto original, REFCLSID id, IUnknown* outer, DWORD context, REFIID iid, void** out) {
    ++calls;
    EXPECT_TRUE(id == kExpectedClass);
    EXPECT_EQ(nullptr, outer);
    EXPECT_EQ(DWORD{CLSCTX_INPROC_SERVER}, context);
    EXPECT_TRUE(iid == kExpectedInterface);
    return original(id, outer, context, iid, out);
  });
  ComPtr<IXMLDOMDocument2> document;
  EXPECT_HRESULT(S_OK, CreateXMLDocument(&document));
  EXPECT_TRUE(document);
  EXPECT_EQ(1, calls);
  EXPECT_EQ("", log.Text());
}

TEST(CreateXMLDocumentTest, AMissingParserIsReportedAndNoOtherIsTried) {
  const LogCapture log;
  int calls = 0;
  PATCH_IMPORT(noParser, CoCreateInstance, [&](auto, auto...) {
    ++calls;
    return REGDB_E_CLASSNOTREG;
  });
  IXMLDOMDocument2* document = Stale<IXMLDOMDocument2>();
  EXPECT_HRESULT(REGDB_E_CLASSNOTREG, CreateXMLDocument(&document));
  EXPECT_EQ(nullptr, document);
  EXPECT_EQ(1, calls);
  ExpectOnlyMessages(log, {"ERROR 0x80040154 Loading the Microsoft XML Parser Library failed."});
}

TEST(CreateXMLDocumentTest, WithoutAPlaceForItNoDocumentIsMade) {
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, CreateXMLDocument(nullptr));
  ExpectOnlyTrace(log, E_INVALIDARG);
}

TEST(SelectNodeTest, TheFirstMatchInDocumentOrderIsFound) {
  const LogCapture log;
  const auto root = ParseElement("<r><c><t>1</t></c><c><t>2</t><u/></c></r>");
  ComPtr<IXMLDOMNode> found;
  EXPECT_HRESULT(S_OK, SelectNode(root.Get(), L"c/t", &found));
  EXPECT_EQ(L"<t>1</t>", XmlOf(found.Get()));
  EXPECT_HRESULT(S_OK, SelectNode(root.Get(), L"c/u", &found));
  EXPECT_EQ(L"<u/>", XmlOf(found.Get()));
  EXPECT_EQ("", log.Text());
}

TEST(SelectNodeTest, AnAbsentNodeIsNotLogged) {
  const LogCapture log;
  const auto root = ParseElement("<r><c/></r>");
  for (const wchar_t* const pattern : {L"d", L"r", L"C", L"c/d"}) {
    IXMLDOMNode* found = Stale<IXMLDOMNode>();
    EXPECT_HRESULT(E_POINTER, SelectNode(root.Get(), pattern, &found)) << pattern;
    EXPECT_EQ(nullptr, found);
  }
  EXPECT_HRESULT(E_POINTER, SelectNode(root.Get(), L"d", nullptr));
  EXPECT_EQ("", log.Text());
}

TEST(SelectNodeTest, WithoutAPlaceForTheNodeOnlyItsPresenceIsTold) {
  const LogCapture log;
  FakeNode child;
  FakeNode node;
  node.children[L"c"] = &child;  // which notices a reference that is kept
  EXPECT_HRESULT(S_OK, SelectNode(&node, L"c", nullptr));
  EXPECT_EQ("", log.Text());
}

TEST(SelectNodeTest, TheParsersCodeOfSuccessIsPassedOn) {
  FakeNode child;
  FakeNode node;
  node.children[L"c"] = &child;
  node.Answer("selectSingleNode", S_FALSE);
  EXPECT_HRESULT(S_FALSE, SelectNode(&node, L"c", nullptr));
}

TEST(SelectNodeTest, MissingArgumentsAreTraced) {
  FakeNode node;
  for (const bool hasNode : {false, true}) {
    const LogCapture log;
    IXMLDOMNode* found = Stale<IXMLDOMNode>();
    EXPECT_HRESULT(E_INVALIDARG, SelectNode(hasNode ? &node : nullptr, hasNode ? nullptr : L"c", &found));
    EXPECT_EQ(nullptr, found);
    ExpectOnlyTrace(log, E_INVALIDARG);
  }
}

TEST(SelectNodeTest, AFailedSelectionIsTraced) {
  const LogCapture log;
  FakeNode child;
  FakeNode node;
  node.children[L"c"] = &child;
  node.Answer("selectSingleNode", E_ACCESSDENIED);
  IXMLDOMNode* found = Stale<IXMLDOMNode>();
  EXPECT_HRESULT(E_ACCESSDENIED, SelectNode(&node, L"c", &found));
  EXPECT_EQ(nullptr, found);
  ExpectOnlyTrace(log, E_ACCESSDENIED);
}

TEST(SelectNodeTest, WithoutMemoryForThePatternNothingIsSelected) {
  const LogCapture log;
  FakeNode child;
  FakeNode node;
  node.children[L"c"] = &child;
  IXMLDOMNode* found = Stale<IXMLDOMNode>();
  {
    PATCH_IMPORT(noMemory, SysAllocString, NoStrings());
    EXPECT_HRESULT(E_OUTOFMEMORY, SelectNode(&node, L"c", &found));
  }
  EXPECT_EQ(nullptr, found);
  ExpectOnlyTrace(log, E_OUTOFMEMORY);
}

TEST(SelectNodesTest, AllMatchesAreFoundInDocumentOrder) {
  const LogCapture log;
  const auto root = ParseElement("<r><c>1</c><d/><c>2</c><d><c>no child of r</c></d><c>3</c></r>");
  ComPtr<IXMLDOMNodeList> found;
  EXPECT_HRESULT(S_OK, SelectNodes(root.Get(), L"c", &found));
  std::wstring all;
  ComPtr<IXMLDOMNode> node;
  while (found && found->nextNode(&node) == S_OK)
    all += XmlOf(node.Get());
  EXPECT_EQ(L"<c>1</c><c>2</c><c>3</c>", all);
  EXPECT_EQ("", log.Text());
}

TEST(SelectNodesTest, NoMatchIsAnEmptyList) {
  const LogCapture log;
  const auto root = ParseElement("<r><c/></r>");
  ComPtr<IXMLDOMNodeList> found;
  EXPECT_HRESULT(S_OK, SelectNodes(root.Get(), L"d", &found));
  ASSERT_TRUE(found);
  LONG length = -1;
  EXPECT_HRESULT(S_OK, found->get_length(&length));
  EXPECT_EQ(0, length);
  EXPECT_EQ("", log.Text());
}

TEST(SelectNodesTest, MissingArgumentsAreTraced) {
  FakeNode node;
  const LogCapture log;
  IXMLDOMNodeList* found = Stale<IXMLDOMNodeList>();
  EXPECT_HRESULT(E_INVALIDARG, SelectNodes(nullptr, L"c", &found));
  EXPECT_EQ(nullptr, found);
  found = Stale<IXMLDOMNodeList>();
  EXPECT_HRESULT(E_INVALIDARG, SelectNodes(&node, nullptr, &found));
  EXPECT_EQ(nullptr, found);
  EXPECT_HRESULT(E_INVALIDARG, SelectNodes(&node, L"c", nullptr));
  EXPECT_EQ((Codes{E_INVALIDARG, E_INVALIDARG, E_INVALIDARG}), log.ErrorTraces());
  EXPECT_EQ(Lines(), log.Messages());
}

TEST(SelectNodesTest, AFailedSelectionIsLoggedWithItsPattern) {
  const LogCapture log;
  FakeNode node;
  node.Answer("selectNodes", E_ACCESSDENIED);
  IXMLDOMNodeList* found = Stale<IXMLDOMNodeList>();
  EXPECT_HRESULT(E_ACCESSDENIED, SelectNodes(&node, L"%s%n/Path", &found));
  EXPECT_EQ(nullptr, found);
  ExpectOnlyMessages(log, {"ERROR 0x80070005 %s%n/Path"});
}

TEST(SelectNodesTest, AMissingListIsTraced) {
  const LogCapture log;
  FakeNode node;
  IXMLDOMNodeList* found = Stale<IXMLDOMNodeList>();
  EXPECT_HRESULT(E_POINTER, SelectNodes(&node, L"c", &found));
  EXPECT_EQ(nullptr, found);
  ExpectOnlyTrace(log, E_POINTER);
}

TEST(SelectNodesTest, WithoutMemoryForThePatternNothingIsSelected) {
  const LogCapture log;
  FakeNodeList list;
  FakeNode node;
  node.lists[L"c"] = &list;
  IXMLDOMNodeList* found = Stale<IXMLDOMNodeList>();
  {
    PATCH_IMPORT(noMemory, SysAllocString, NoStrings());
    EXPECT_HRESULT(E_OUTOFMEMORY, SelectNodes(&node, L"c", &found));
  }
  EXPECT_EQ(nullptr, found);
  ExpectOnlyTrace(log, E_OUTOFMEMORY);
}

TEST(NodeExistsTest, OnlyAMatchCounts) {
  const LogCapture log;
  const auto root = ParseElement("<r><empty/></r>");
  EXPECT_TRUE(NodeExists(root.Get(), L"empty"));
  EXPECT_FALSE(NodeExists(root.Get(), L"absent"));
  EXPECT_EQ("", log.Text());
}

TEST(NodeExistsTest, AFailureIsNoMatch) {
  const LogCapture log;
  FakeNode node;
  node.Answer("selectSingleNode", E_FAIL);
  EXPECT_FALSE(NodeExists(&node, L"c"));
  EXPECT_FALSE(NodeExists(nullptr, L"c"));
  EXPECT_FALSE(NodeExists(&node, nullptr));
  EXPECT_EQ((Codes{E_FAIL, E_INVALIDARG, E_INVALIDARG}), log.ErrorTraces());
}

// The two operations on a document differ in what they look up only.
template <class Found>
HRESULT SelectIn(IXMLDOMDocument2* document, const wchar_t* pattern, Found** found) {
  if constexpr (std::is_same_v<Found, IXMLDOMNode>)
    return SelectDocumentNode(document, pattern, found);
  else
    return SelectDocumentNodes(document, pattern, found);
}

template <class Found>
class SelectInDocumentTest : public testing::Test {
 protected:
  void ExpectTraced(HRESULT code, IXMLDOMDocument2* document, const wchar_t* pattern) {
    const LogCapture log;
    Found* found = Stale<Found>();
    EXPECT_HRESULT(code, SelectIn(document, pattern, &found));
    EXPECT_EQ(nullptr, found);
    ExpectOnlyTrace(log, code);
  }

  FakeNode element;  // which notices a reference that is kept
  FakeDocument document;
};

using FoundTypes = testing::Types<IXMLDOMNode, IXMLDOMNodeList>;
TYPED_TEST_SUITE(SelectInDocumentTest, FoundTypes);

TYPED_TEST(SelectInDocumentTest, MissingArgumentsAreTraced) {
  this->document.documentElement = &this->element;
  this->ExpectTraced(E_INVALIDARG, nullptr, L"c");
  this->ExpectTraced(E_INVALIDARG, &this->document, nullptr);
}

TYPED_TEST(SelectInDocumentTest, AFailureToGetTheDocumentElementIsTraced) {
  this->document.documentElement = &this->element;
  this->document.Answer("get_documentElement", E_ACCESSDENIED);
  this->ExpectTraced(E_ACCESSDENIED, &this->document, L"c");
}

TYPED_TEST(SelectInDocumentTest, ADocumentWithoutAnElementIsTraced) {
  this->ExpectTraced(E_POINTER, &this->document, L"c");
  this->ExpectTraced(E_POINTER, NewXmlDocument().Get(), L"c");
}

TYPED_TEST(SelectInDocumentTest, TheDocumentElementIsGivenBackAfterAFailure) {
  this->document.documentElement = &this->element;
  this->element.Answer("selectSingleNode", E_FAIL);
  this->element.Answer("selectNodes", E_FAIL);
  TypeParam* found = Stale<TypeParam>();
  EXPECT_HRESULT(E_FAIL, SelectIn(&this->document, L"c", &found));
  EXPECT_EQ(nullptr, found);
}

TEST(SelectDocumentNodeTest, ThePatternStartsBelowTheDocumentElement) {
  const LogCapture log;
  const auto document = ParseXml("<r><c>1</c><c>2</c></r>");
  ComPtr<IXMLDOMNode> found;
  EXPECT_HRESULT(S_OK, SelectDocumentNode(document.Get(), L"c", &found));
  EXPECT_EQ(L"<c>1</c>", XmlOf(found.Get()));
  EXPECT_HRESULT(E_POINTER, SelectDocumentNode(document.Get(), L"r", &found));
  EXPECT_FALSE(found);
  EXPECT_HRESULT(S_OK, SelectDocumentNode(document.Get(), L"c", nullptr));
  EXPECT_EQ("", log.Text());
}

TEST(SelectDocumentNodesTest, ThePatternStartsBelowTheDocumentElement) {
  const LogCapture log;
  const auto document = ParseXml("<r><c>1</c><c>2</c></r>");
  ComPtr<IXMLDOMNodeList> found;
  LONG length = -1;
  EXPECT_HRESULT(S_OK, SelectDocumentNodes(document.Get(), L"c", &found));
  EXPECT_HRESULT(S_OK, found->get_length(&length));
  EXPECT_EQ(2, length);
  EXPECT_HRESULT(S_OK, SelectDocumentNodes(document.Get(), L"r", &found));
  EXPECT_HRESULT(S_OK, found->get_length(&length));
  EXPECT_EQ(0, length);
  EXPECT_EQ("", log.Text());
}

TEST(SelectDocumentNodesTest, WithoutAPlaceForTheListNothingIsSelected) {
  const LogCapture log;
  FakeDocument document;
  EXPECT_HRESULT(E_INVALIDARG, SelectDocumentNodes(&document, L"c", nullptr));
  ExpectOnlyTrace(log, E_INVALIDARG);
}

}  // namespace
