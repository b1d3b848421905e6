#include "advice/Outline.h"

#include <gtest/gtest.h>

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

}  // namespace
