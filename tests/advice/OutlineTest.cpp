#include "advice/Outline.h"

#include <gtest/gtest.h>
#include <shlwapi.h>

#include <algorithm>
#include <functional>
#include <new>

#include "advice/Document.h"
#include "advice/Words.h"
#include "support/FakeReader.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/WebServer.h"

namespace {

TEST(OutlineTest, KnowsElementsTextsAndLines) {
  const Outline outline = OutlineOf(
      "<?xml version=\"1.0\"?>\r\n<!DOCTYPE A SYSTEM \"a.dtd\">\r\n<A version=\"1.0\">\n  <B> one </B>\n  "
      "<B><C/>two</B>\n</A>\n");
  EXPECT_TRUE(outline.isWellFormed);
  EXPECT_EQ("A", outline.root.name);
  EXPECT_EQ(3, outline.root.line);
  ASSERT_EQ(1u, outline.root.attributes.size());
  EXPECT_EQ("version", outline.root.attributes[0].first);
  EXPECT_EQ("1.0", outline.root.attributes[0].second);
  ASSERT_EQ(2u, outline.root.children.size());
  EXPECT_EQ(4, outline.root.children[0].line);
  EXPECT_EQ(" one ", outline.root.children[0].text);
  EXPECT_EQ("one", outline.root.children[0].TrimmedText());
  EXPECT_EQ(5, outline.root.children[1].line);
  EXPECT_EQ("two", outline.root.children[1].text);
  EXPECT_NE(nullptr, outline.root.children[1].Child("C"));
  EXPECT_EQ(nullptr, outline.root.children[1].Child("D"));
}

TEST(OutlineTest, TextIsUtf8) {
  const Outline outline = OutlineOf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><A>\xE4&#x20AC;</A>");
  EXPECT_TRUE(outline.isWellFormed);
  EXPECT_EQ("\xC3\xA4\xE2\x82\xAC", outline.root.text);
}

TEST(OutlineTest, TellsWhereADocumentIsBroken) {
  const Outline outline = OutlineOf("<A>\n\n<B x=></B>\n</A>\n");
  EXPECT_FALSE(outline.isWellFormed);
  EXPECT_GE(outline.errorLine, 1);  // some readers tell where they were last well
  EXPECT_LE(outline.errorLine, 3);
  EXPECT_NE("", outline.errorReason);
  EXPECT_EQ("A", outline.root.name);
}

TEST(OutlineTest, AnEmptyDocumentIsNone) {
  for (const char* const bytes : {"", " ", "no markup", "<?xml version=\"1.0\"?>"}) {
    const Outline outline = OutlineOf(bytes);
    EXPECT_FALSE(outline.isWellFormed) << bytes;
    EXPECT_EQ("", outline.root.name) << bytes;
  }
}

TEST(OutlineTest, DeepElementsCostNoStack) {
  std::string bytes;
  for (int i = 0; i < 200; ++i)
    bytes += "<A>";
  bytes += "x";
  for (int i = 0; i < 200; ++i)
    bytes += "</A>";
  const Outline outline = OutlineOf(bytes);
  EXPECT_TRUE(outline.isWellFormed);
  int depth = 0;
  for (const Element* element = &outline.root; element; element = element->Child("A"))
    ++depth;
  EXPECT_EQ(8, depth);
}

// An entity of a thousand million characters, unless nobody makes it.
std::string Laughter() {
  std::string declarations = "<!ENTITY e0 'laughter'>";
  for (int i = 1; i < 10; ++i) {
    declarations += "<!ENTITY e" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j)
      declarations += "&e" + std::to_string(i - 1) + ";";
    declarations += "'>";
  }
  return declarations;
}

// The module puts its own document type into a document, in which there are no entities.
TEST(OutlineTest, TheDocumentsOwnTypeIsNotRead) {
  WebServer server;
  server.Answer("/a.dtd", Response().Body("<!ENTITY e 'CANARY'><!ATTLIST A b CDATA 'CANARY'>"));
  const std::string url = server.Url("/a.dtd");
  for (const std::string& type :
       {"SYSTEM \"" + url + "\"", "[<!ENTITY e SYSTEM '" + url + "'>]", "[<!ENTITY % p SYSTEM '" + url + "'> %p;]",
        std::string("[<!ENTITY e 'CANARY'>]"), "[" + Laughter() + "]"}) {
    for (const std::string& text : {std::string(), std::string("&e;"), std::string("&e9;")}) {
      const Outline outline = OutlineOf("<?xml version=\"1.0\"?><!DOCTYPE A " + type + "><A>" + text + "</A>");
      EXPECT_EQ(text.empty(), outline.isWellFormed) << type << text;
      EXPECT_EQ("A", outline.root.name) << type << text;
      EXPECT_EQ("", outline.root.text) << type << text;
      EXPECT_TRUE(outline.root.attributes.empty()) << type << text;
    }
  }
  EXPECT_TRUE(server.Asked().empty());
}

TEST(OutlineTest, TheDocumentTypeEndsWhereItEnds) {
  for (const char* const type : {"A", "A SYSTEM '>'", "A PUBLIC \"]>\" '['", "A []", "A [<!-- ]> ' -->]", "A [<?x ]> ' ?>]",
                                 "A [<!ENTITY e ']>'>\n]", "\nA\n"}) {
    const std::string bytes = "<?xml version=\"1.0\"?>\n<!-- <!DOCTYPE -->\n<!DOCTYPE " + std::string(type) + ">\n<A/>";
    const Outline outline = OutlineOf(bytes);
    EXPECT_TRUE(outline.isWellFormed) << type << outline.errorReason;
    EXPECT_EQ(1 + std::count(bytes.begin(), bytes.end(), '\n'), outline.root.line) << type;
  }
}

TEST(OutlineTest, ADocumentTypeThatIsNoneStays) {
  EXPECT_EQ("<!DOCTYPE A>", OutlineOf("<A><![CDATA[<!DOCTYPE A>]]></A>").root.text);
  EXPECT_FALSE(OutlineOf("<A><!DOCTYPE A></A>").isWellFormed);
  EXPECT_FALSE(OutlineOf("<!DOCTYPE A><!DOCTYPE A><A/>").isWellFormed);
  for (const char* const bytes :
       {"<!DOCTYPE", "<!DOCTYPE A", "<!DOCTYPE A [", "<!DOCTYPE A [<!-- ", "<!DOCTYPE A '", "<!--", "<?xml"})
    EXPECT_FALSE(OutlineOf(bytes).isWellFormed) << bytes;
}

TEST(OutlineTest, ADocumentOfWideCharactersIsNotRead) {
  for (const std::string& bytes : {std::string("\xFF\xFE<\0A\0/\0>\0", 10), std::string("\xFE\xFF\0<\0A\0/\0>", 10),
                                   std::string("<\0A\0/\0>\0", 8), std::string("\0<\0A\0/\0>", 8)}) {
    const Outline outline = OutlineOf(bytes);
    EXPECT_FALSE(outline.isWellFormed);
    EXPECT_NE(std::string::npos, outline.errorReason.find("UTF-16")) << outline.errorReason;
  }
  EXPECT_TRUE(OutlineOf("\xEF\xBB\xBF<!DOCTYPE A><A/>").isWellFormed);
}

// Tells the handlers what the test wants them to hear, in place of reading.
class FakeReader final : public FakeReaderMethods {
 public:
  using Parse = std::function<HRESULT(ISAXContentHandler&, ISAXErrorHandler&)>;

  explicit FakeReader(Parse parseInstead) : parseAs(std::move(parseInstead)) {}

  HRESULT WINAPI putContentHandler(ISAXContentHandler* contentHandler) override {
    content = contentHandler;
    return S_OK;
  }
  HRESULT WINAPI putErrorHandler(ISAXErrorHandler* errorHandler) override {
    errors = errorHandler;
    return S_OK;
  }
  HRESULT WINAPI parse(VARIANT) override { return parseAs(*content, *errors); }

 private:
  Parse parseAs;
  ISAXContentHandler* content = nullptr;
  ISAXErrorHandler* errors = nullptr;
};

Outline OutlineBy(FakeReader::Parse parse) {
  FakeReader reader(std::move(parse));
  PATCH_IMPORT(readers, CoCreateInstance, [&](auto, auto, auto, auto, auto, void** object) -> HRESULT {
    *object = static_cast<ISAXXMLReader*>(&reader);
    return S_OK;
  });
  return OutlineOf("<A/>");
}

Outline OutlineWithComplaints(const std::function<void(ISAXErrorHandler&, ISAXLocator&)>& complain) {
  return OutlineBy([&complain](ISAXContentHandler&, ISAXErrorHandler& errors) -> HRESULT {
    FakeLocator locator(3, 7);
    complain(errors, locator);
    return E_FAIL;
  });
}

TEST(OutlineTest, TheFirstErrorIsToldWithItsPlace) {
  const Outline outline = OutlineWithComplaints([](ISAXErrorHandler& errors, ISAXLocator& locator) {
    EXPECT_HRESULT(S_OK, errors.ignorableWarning(nullptr, L"nothing to mend", S_OK));
    EXPECT_HRESULT(S_OK, errors.error(&locator, L"End tag missing. \r\n", E_FAIL));
    EXPECT_HRESULT(S_OK, errors.fatalError(nullptr, L"another", E_FAIL));
  });
  EXPECT_FALSE(outline.isWellFormed);
  EXPECT_EQ("End tag missing.", outline.errorReason);
  EXPECT_EQ(3, outline.errorLine);
  EXPECT_EQ(7, outline.errorColumn);
}

TEST(OutlineTest, AnErrorMayHaveNeitherPlaceNorText) {
  const Outline outline = OutlineWithComplaints([](ISAXErrorHandler& errors, ISAXLocator& locator) {
    EXPECT_HRESULT(S_OK, errors.fatalError(nullptr, nullptr, E_FAIL));
    EXPECT_HRESULT(S_OK, errors.fatalError(&locator, L"another", E_FAIL));
  });
  EXPECT_FALSE(outline.isWellFormed);
  EXPECT_EQ("", outline.errorReason);
  EXPECT_EQ(0, outline.errorLine);
}

// Some readers ask the handler for its interface before they take it.
TEST(OutlineTest, TheHandlerOfErrorsHasItsInterfaceAndNoOther) {
  constexpr IID kErrorHandler = {0xA60511C4, 0xCCF5, 0x479E, {0x98, 0xA3, 0xDC, 0x8D, 0xC5, 0x45, 0xB7, 0xD0}};
  bool wasAsked = false;
  OutlineWithComplaints([&](ISAXErrorHandler& errors, ISAXLocator&) {
    void* found = nullptr;
    for (const IID& known : {IID_IUnknown, kErrorHandler}) {
      EXPECT_HRESULT(S_OK, errors.QueryInterface(known, &found));
      EXPECT_EQ(&errors, found);
    }
    EXPECT_HRESULT(E_NOINTERFACE, errors.QueryInterface(IID_IDispatch, &found));
    EXPECT_EQ(nullptr, found);
    EXPECT_HRESULT(E_POINTER, errors.QueryInterface(IID_IUnknown, nullptr));
    wasAsked = true;
  });
  EXPECT_TRUE(wasAsked);
}

// The reader need not give what it has no text for, nor a place.
TEST(OutlineTest, WhatTheReaderLeavesOutIsEmpty) {
  const Outline outline = OutlineBy([](ISAXContentHandler& content, ISAXErrorHandler&) -> HRESULT {
    EXPECT_HRESULT(S_OK, content.characters(L"before", 6));
    EXPECT_HRESULT(S_OK, content.startElement(nullptr, 0, nullptr, 0, L"AB", 1, nullptr));
    EXPECT_HRESULT(S_OK, content.characters(nullptr, 3));
    EXPECT_HRESULT(S_OK, content.characters(L"x", -1));
    EXPECT_HRESULT(S_OK, content.startElement(nullptr, 0, nullptr, 0, nullptr, 1, nullptr));
    EXPECT_HRESULT(S_OK, content.endElement(nullptr, 0, nullptr, 0, nullptr, 0));
    EXPECT_HRESULT(S_OK, content.endElement(nullptr, 0, nullptr, 0, L"AB", 1));
    EXPECT_HRESULT(S_OK, content.endElement(nullptr, 0, nullptr, 0, L"AB", 1));
    return S_OK;
  });
  EXPECT_TRUE(outline.isWellFormed);
  EXPECT_EQ("A", outline.root.name);
  EXPECT_EQ(0, outline.root.line);
  EXPECT_EQ("", outline.root.text);
  ASSERT_EQ(1u, outline.root.children.size());
  EXPECT_EQ("", outline.root.children[0].name);
}

TEST(OutlineTest, WithoutAReaderNothingIsKnown) {
  for (const HRESULT hr : {E_ACCESSDENIED, static_cast<HRESULT>(0xE0001234)}) {
    PATCH_IMPORT(noReader, CoCreateInstance, [=](auto, auto...) -> HRESULT { return hr; });
    try {
      OutlineOf("<A/>");
      ADD_FAILURE() << "it was read";
    } catch (const Unanswered& reason) {
      EXPECT_EQ("The XML parser of this system cannot be had: " + ReasonText(hr), reason.what());
    }
  }
}

TEST(OutlineTest, WithoutMemoryNothingIsKnown) {
  PATCH_IMPORT(noStream, SHCreateMemStream, [](auto, auto...) -> IStream* { return nullptr; });
  EXPECT_THROW(OutlineOf("<A/>"), std::bad_alloc);
}

}  // namespace
