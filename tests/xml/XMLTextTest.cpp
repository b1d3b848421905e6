#include <gtest/gtest.h>

#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/XmlDocuments.h"
#include "xml/LogExpectations.h"
#include "xml/XMLUtilities.h"

namespace {

// The two operations differ in the text that they hand out only.
HRESULT GetText(IXMLDOMNode* node, const wchar_t* pattern, OwnedText& text) {
  return GetNodeText(node, pattern, text);
}
HRESULT GetText(IXMLDOMNode* node, const wchar_t* pattern, BString& text) {
  return GetNodeTextW(node, pattern, text);
}

void Set(OwnedText& text, const char* value) {
  text = CopyText(value);
}
void Set(BString& text, const char* value) {
  text = WideText(value);
}

std::string Read(const OwnedText& text) {
  return text ? text.get() : "(none)";
}
std::string Read(const BString& text) {
  return Read(NarrowText(text.Get()));
}

template <class Text>
class NodeTextTest : public testing::Test {
 protected:
  NodeTextTest() { Set(text, "stale"); }

  void Expect(HRESULT code, const std::string& expected, IXMLDOMNode* node, const wchar_t* pattern) {
    Set(text, "stale");
    EXPECT_HRESULT(code, GetText(node, pattern, text));
    EXPECT_EQ(expected, Read(text));
  }

  Text text;
};

using TextTypes = testing::Types<OwnedText, BString>;
TYPED_TEST_SUITE(NodeTextTest, TextTypes);

TYPED_TEST(NodeTextTest, AnElementWithTextIsPresent) {
  const LogCapture log;
  const auto root = ParseElement("<r><a>http://server/a%20b?x=%s</a><a>second</a><b><c>below</c></b></r>");
  this->Expect(S_OK, "http://server/a%20b?x=%s", root.Get(), L"a");
  this->Expect(S_OK, "below", root.Get(), L"b/c");
  this->Expect(S_OK, "below", root.Get(), L"b");
  EXPECT_EQ("", log.Text());
}

TYPED_TEST(NodeTextTest, AnEmptyElementIsPresentWithoutText) {
  const LogCapture log;
  const auto root = ParseElement("<r><a/><b></b><c>  \r\n </c><d><e/></d></r>");
  for (const wchar_t* const pattern : {L"a", L"b", L"c", L"d"})
    this->Expect(S_FALSE, "", root.Get(), pattern);
  EXPECT_EQ("", log.Text());
}

TYPED_TEST(NodeTextTest, AnAbsentElementIsNotLogged) {
  const LogCapture log;
  this->Expect(E_POINTER, "(none)", ParseElement("<r><a/></r>").Get(), L"b");
  EXPECT_EQ("", log.Text());
}

TYPED_TEST(NodeTextTest, WhiteSpaceAroundATextIsDropped) {
  this->Expect(S_OK, "C:\\Apps", ParseElement("<r><a>\r\n\t C:\\Apps \n</a></r>").Get(), L"a");
}

TYPED_TEST(NodeTextTest, MarkupInATextIsResolved) {
  const auto root = ParseElement("<r><a>http://s/?a=1&amp;b=2</a><b><![CDATA[<x>&amp;]]></b><c>1<!-- no -->2</c></r>");
  this->Expect(S_OK, "http://s/?a=1&b=2", root.Get(), L"a");
  this->Expect(S_OK, "<x>&amp;", root.Get(), L"b");
  this->Expect(S_OK, "12", root.Get(), L"c");
}

TYPED_TEST(NodeTextTest, ATextOfAMillionCharactersIsComplete) {
  const std::string longText(1000000, 'x');
  this->Expect(S_OK, longText, ParseElement("<r><a>" + longText + "</a></r>").Get(), L"a");
}

TYPED_TEST(NodeTextTest, MissingArgumentsAreTraced) {
  const LogCapture log;
  FakeNode node;
  this->Expect(E_INVALIDARG, "(none)", nullptr, L"a");
  this->Expect(E_INVALIDARG, "(none)", &node, nullptr);
  EXPECT_EQ((Codes{E_INVALIDARG, E_INVALIDARG}), log.ErrorTraces());
  EXPECT_EQ(Lines(), log.Messages());
}

TYPED_TEST(NodeTextTest, AFailedSelectionIsPassedOn) {
  const LogCapture log;
  FakeNode node;
  node.Answer("selectSingleNode", E_ACCESSDENIED);
  this->Expect(E_ACCESSDENIED, "(none)", &node, L"a");
  ExpectOnlyTrace(log, E_ACCESSDENIED);
}

TYPED_TEST(NodeTextTest, ATextThatCannotBeReadIsTraced) {
  const LogCapture log;
  FakeNode child(L"text");  // which notices a reference that is kept
  FakeNode node;
  node.children[L"a"] = &child;
  child.Answer("get_text", E_UNEXPECTED);
  this->Expect(E_UNEXPECTED, "(none)", &node, L"a");
  ExpectOnlyTrace(log, E_UNEXPECTED);
}

TYPED_TEST(NodeTextTest, ATextThatIsMissingCountsAsEmpty) {
  const LogCapture log;
  FakeNode child;
  FakeNode node;
  node.children[L"a"] = &child;
  this->Expect(S_FALSE, "", &node, L"a");
  child.Answer("get_text", S_OK);
  this->Expect(S_FALSE, "", &node, L"a");
  EXPECT_EQ("", log.Text());
}

TYPED_TEST(NodeTextTest, TheParsersCodeDoesNotDecideWhetherThereIsText) {
  FakeNode child(L"text");
  FakeNode node;
  node.children[L"a"] = &child;
  child.Answer("get_text", S_FALSE);
  node.Answer("selectSingleNode", S_FALSE);
  this->Expect(S_OK, "text", &node, L"a");
}

TYPED_TEST(NodeTextTest, WithoutMemoryForAnEmptyTextThereIsNone) {
  const LogCapture log;
  FakeNode child;
  FakeNode node;
  node.children[L"a"] = &child;
  PATCH_IMPORT(noEmptyText, SysAllocString, FailCall(2, static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  this->Expect(E_OUTOFMEMORY, "(none)", &node, L"a");
  ExpectOnlyTrace(log, E_OUTOFMEMORY);
}

TYPED_TEST(NodeTextTest, WithoutMemoryForThePatternThereIsNoText) {
  const LogCapture log;
  FakeNode child(L"text");
  FakeNode node;
  node.children[L"a"] = &child;
  PATCH_IMPORT(noPattern, SysAllocString, FailWith(static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  this->Expect(E_OUTOFMEMORY, "(none)", &node, L"a");
  ExpectOnlyTrace(log, E_OUTOFMEMORY);
}

TEST(GetNodeTextTest, WithoutMemoryForTheNarrowTextThereIsNone) {
  const LogCapture log;
  FakeNode child(L"text");
  FakeNode node;
  node.children[L"a"] = &child;
  OwnedText text = CopyText("stale");
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_HRESULT(E_OUTOFMEMORY, GetNodeText(&node, L"a", text));
  }
  EXPECT_EQ(nullptr, text);
  ExpectOnlyTrace(log, E_OUTOFMEMORY);
}

TEST(GetNodeTextTest, ATextThatCannotBeConvertedIsReportedAsMissingMemory) {
  const LogCapture log;
  FakeNode child(L"text");
  FakeNode node;
  node.children[L"a"] = &child;
  OwnedText text = CopyText("stale");
  {
    PATCH_IMPORT(noConversion, WideCharToMultiByte, FailWith(0, ERROR_NO_UNICODE_TRANSLATION));
    EXPECT_HRESULT(E_OUTOFMEMORY, GetNodeText(&node, L"a", text));
  }
  EXPECT_EQ(nullptr, text);
  ExpectOnlyTrace(log, E_OUTOFMEMORY);
}

TEST(GetNodeTextTest, TheTextIsConvertedToTheAnsiCodePage) {
  FakeNode child(L"Zo\u00eb");
  FakeNode node;
  node.children[L"a"] = &child;
  PATCH_IMPORT(conversion, WideCharToMultiByte, [](auto original, UINT codePage, auto... rest) {
    EXPECT_EQ(UINT{CP_ACP}, codePage);
    return original(1252, rest...);
  });
  OwnedText text;
  EXPECT_HRESULT(S_OK, GetNodeText(&node, L"a", text));
  EXPECT_STREQ("Zo\xeb", text.get());
}

TEST(GetNodeTextTest, TheWideTextKeepsEveryCharacter) {
  FakeNode child(L"\u4e2d\U0001F600");
  FakeNode node;
  node.children[L"a"] = &child;
  BString text;
  EXPECT_HRESULT(S_OK, GetNodeTextW(&node, L"a", text));
  EXPECT_STREQ(L"\u4e2d\U0001F600", text.Get());
}

}  // namespace
