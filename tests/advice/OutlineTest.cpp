#include "advice/Outline.h"

#include <gtest/gtest.h>

#include <algorithm>

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

}  // namespace
