#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wrl/client.h>

#include "support/FakeXml.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/XmlDocuments.h"
#include "xml/LogExpectations.h"
#include "xml/XMLUtilities.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr char kDocumentType[] =
    "<!DOCTYPE r [<!ELEMENT r (o)><!ELEMENT o EMPTY>"
    "<!ATTLIST o browser CDATA \"false\" note CDATA #IMPLIED size CDATA #FIXED \"9\">]>";

// The element `o` of a document that was loaded as manifests are; the file may go once it is loaded.
ComPtr<IXMLDOMNode> LoadedElement(const std::string& content) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.xml"), content);
  const auto document = NewXmlDocument();
  EXPECT_HRESULT(S_OK, LoadXMLDocument(folder.File("a.xml").c_str(), document.Get(), 1));
  ComPtr<IXMLDOMNode> element;
  EXPECT_HRESULT(S_OK, SelectDocumentNode(document.Get(), L"o", &element));
  return element;
}

class AttributeTextTest : public testing::Test {
 protected:
  AttributeTextTest() : text(SysAllocString(L"stale")) {}

  void Expect(const wchar_t* expected, IXMLDOMNode* of, const wchar_t* name = L"browser") {
    EXPECT_HRESULT(S_OK, GetAttributeText(of, name, text));
    EXPECT_STREQ(expected, text.Get());
    EXPECT_EQ("", log.Text());
  }

  void ExpectRefused(HRESULT code, IXMLDOMNode* of, const wchar_t* name = L"browser") {
    EXPECT_HRESULT(code, GetAttributeText(of, name, text));
    EXPECT_FALSE(text);
  }

  void ExpectTraced(HRESULT code) {
    ExpectRefused(code, &node);
    ExpectOnlyTrace(log, code);
  }

  // Refused without a line: only an unvalidated document gets there.
  void ExpectAbsent() {
    ExpectRefused(E_FAIL, &node);
    EXPECT_EQ("", log.Text());
  }

  // The attribute itself, in the map.
  void GiveAttribute(const wchar_t* value) {
    attribute.text = value;
    attributes.named[L"browser"] = &attribute;
    node.attributes = &attributes;
  }

  // No attribute in the map, but one that the element knows.
  void GiveDefault(const wchar_t* value) {
    node.attributes = &attributes;
    node.attributeText = value;
  }

  FakeNode attribute;
  FakeAttributes attributes;
  FakeNode node;
  BString text;
  LogCapture log;
};

TEST_F(AttributeTextTest, AnAttributeHasItsText) {
  Expect(L"true", ParseElement("<o browser='true'/>").Get());
  Expect(L" a & b ", ParseElement("<o browser=' a &amp; b '/>").Get());
}

TEST_F(AttributeTextTest, AnAttributeMayBeEmpty) {
  Expect(L"", ParseElement("<o browser=''/>").Get());
}

TEST_F(AttributeTextTest, AnAttributeThatIsLeftOutHasItsDefault) {
  const auto element = LoadedElement(std::string(kDocumentType) + "<r><o/></r>");
  Expect(L"false", element.Get());
  Expect(L"9", element.Get(), L"size");
}

TEST_F(AttributeTextTest, AnAttributeThatIsGivenReplacesItsDefault) {
  const auto element = LoadedElement(std::string(kDocumentType) + "<r><o browser='TRUE'/></r>");
  Expect(L"TRUE", element.Get());
}

TEST_F(AttributeTextTest, AnAttributeWithoutDefaultIsAbsent) {
  const auto element = LoadedElement(std::string(kDocumentType) + "<r><o/></r>");
  ExpectRefused(E_FAIL, element.Get(), L"note");
  ExpectRefused(E_FAIL, element.Get(), L"unknown");
  ExpectRefused(E_FAIL, element.Get(), L"Browser");
  EXPECT_EQ("", log.Text());
}

TEST_F(AttributeTextTest, WithoutADocumentTypeTheAttributeIsAbsent) {
  ExpectRefused(E_FAIL, LoadedElement("<r><o/></r>").Get());
  EXPECT_EQ("", log.Text());
}

TEST_F(AttributeTextTest, ANodeThatIsNoElementHasNoAttributes) {
  ExpectRefused(E_FAIL, ParseXml("<o browser='true'/>").Get());
  EXPECT_EQ("", log.Text());
}

TEST_F(AttributeTextTest, MissingArgumentsAreTraced) {
  ExpectRefused(E_INVALIDARG, nullptr);
  ExpectRefused(E_INVALIDARG, &node, nullptr);
  EXPECT_EQ((Codes{E_INVALIDARG, E_INVALIDARG}), log.ErrorTraces());
  EXPECT_EQ(Lines(), log.Messages());
}

TEST_F(AttributeTextTest, AFailureToGetTheAttributesIsTraced) {
  GiveAttribute(L"true");
  node.Answer("get_attributes", E_ACCESSDENIED);
  ExpectTraced(E_ACCESSDENIED);
}

TEST_F(AttributeTextTest, ANodeWithoutAttributesIsRefused) {
  ExpectAbsent();
}

TEST_F(AttributeTextTest, AFailureToFindTheAttributeIsTraced) {
  GiveAttribute(L"true");
  attributes.Answer("getNamedItem", E_ACCESSDENIED);
  ExpectTraced(E_ACCESSDENIED);
}

TEST_F(AttributeTextTest, AFailureToReadTheAttributeIsTraced) {
  GiveAttribute(L"true");
  attribute.Answer("get_text", E_UNEXPECTED);
  ExpectTraced(E_UNEXPECTED);
}

TEST_F(AttributeTextTest, AnAttributeWithoutTextIsRefused) {
  GiveAttribute(nullptr);
  attribute.Answer("get_text", S_OK);
  ExpectAbsent();
}

TEST_F(AttributeTextTest, TheElementIsNotAskedForAnAttributeThatIsListed) {
  GiveAttribute(L"listed");
  GiveDefault(L"default");
  Expect(L"listed", &node);
}

TEST_F(AttributeTextTest, TheElementIsAskedForAnAttributeThatIsNotListed) {
  GiveDefault(L"default");
  Expect(L"default", &node);
}

TEST_F(AttributeTextTest, AnElementThatKnowsNoSuchAttributeIsRefused) {
  GiveDefault(nullptr);
  ExpectAbsent();
}

TEST_F(AttributeTextTest, AnElementThatFailsToTellIsRefused) {
  GiveDefault(L"default");
  node.Answer("getAttribute", E_ACCESSDENIED);
  ExpectAbsent();
}

TEST_F(AttributeTextTest, AnElementThatTellsHalfHeartedlyIsRefused) {
  GiveDefault(L"default");
  node.Answer("getAttribute", S_FALSE);
  ExpectAbsent();
}

TEST_F(AttributeTextTest, ADefaultThatIsNoTextIsRefused) {
  GiveDefault(L"default");
  node.attributeType = VT_I4;
  ExpectAbsent();
}

TEST_F(AttributeTextTest, ADefaultThatIsANullTextIsRefused) {
  GiveDefault(nullptr);
  node.Answer("getAttribute", S_OK);
  ExpectAbsent();
}

TEST_F(AttributeTextTest, OnlyAnElementHasDefaults) {
  GiveDefault(L"default");
  node.isElement = false;
  ExpectAbsent();
}

TEST_F(AttributeTextTest, WithoutMemoryForTheNameThereIsNoText) {
  GiveAttribute(L"true");
  PATCH_IMPORT(noMemory, SysAllocString, FailWith(static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  ExpectTraced(E_OUTOFMEMORY);
}

TEST_F(AttributeTextTest, WithoutMemoryForTheNameOfADefaultThereIsNoText) {
  GiveDefault(L"default");
  PATCH_IMPORT(noMemory, SysAllocString, FailCall(2, static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  ExpectTraced(E_OUTOFMEMORY);
}

}  // namespace
