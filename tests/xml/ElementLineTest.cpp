#include "xml/ElementLine.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Files.h"
#include "support/ImportPatch.h"
#include "support/XmlDocuments.h"

namespace {

// What stands on the lines 1, 2, ... of the file.
class ElementLineTest : public testing::Test {
 protected:
  int Find(const wchar_t* name, int index) {
    const std::wstring wide(path.begin(), path.end());
    return FindElementLine(wide.c_str(), name, index);
  }

  const TemporaryFolder folder;
  const std::string path = folder.File("a b.xml");
  const bool isWritten = [this] {
    WriteWholeFile(
        path,
        "<?xml version=\"1.0\"?>\r\n"
        "<!DOCTYPE r [\n<!ELEMENT r ANY>\n<!ELEMENT d ANY>\n<!ELEMENT dd ANY>\n]>\r\n"
        "<r><d/>\r\n"
        "<dd/> <!-- <d/> --> d\r\n"
        "<dd><d/></dd><d/>\r\n"
        "\r\n"
        "<d\r\n>\r\n</d><D/></r>\r\n");
    return true;
  }();
};

TEST_F(ElementLineTest, IsTheLineOfTheStartTag) {
  EXPECT_EQ(7, Find(L"r", 0));
  EXPECT_EQ(7, Find(L"d", 0));
  EXPECT_EQ(8, Find(L"dd", 0));
}

TEST_F(ElementLineTest, ElementsCountInDocumentOrderWhereverTheyStand) {
  EXPECT_EQ(9, Find(L"d", 1));
  EXPECT_EQ(9, Find(L"d", 2));
  EXPECT_LE(11, Find(L"d", 3));  // a tag of two lines
  EXPECT_GE(12, Find(L"d", 3));
  EXPECT_EQ(9, Find(L"dd", 1));
}

TEST_F(ElementLineTest, AnElementThatIsNotThereHasNone) {
  EXPECT_EQ(0, Find(L"d", 4));
  EXPECT_EQ(0, Find(L"ddd", 0));
  EXPECT_EQ(0, Find(L"", 0));
}

TEST_F(ElementLineTest, AFileThatIsNotThereHasNone) {
  EXPECT_EQ(0, FindElementLine(L"C:\\no such folder\\a.xml", L"d", 0));
}

TEST_F(ElementLineTest, WhatComesBeforeABrokenPlaceIsFound) {
  WriteWholeFile(path, "<r>\r\n<d/>\r\n<e>\r\n</r>\r\n");
  EXPECT_EQ(2, Find(L"d", 0));
  EXPECT_EQ(0, Find(L"d", 1));
}

TEST_F(ElementLineTest, WithoutAReaderThereIsNone) {
  PATCH_IMPORT(noReader, CoCreateInstance, [](auto, auto...) { return REGDB_E_CLASSNOTREG; });
  EXPECT_EQ(0, Find(L"d", 0));
}

}  // namespace
