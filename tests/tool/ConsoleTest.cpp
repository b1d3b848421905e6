#include "tool/Console.h"

#include <gtest/gtest.h>

namespace {

TEST(ConsoleTest, ParagraphsAreIndentedAndFitIntoAHundredColumns) {
  EXPECT_EQ("  a b\n", Paragraph(2, " a\r\n\tb "));
  EXPECT_EQ("", Paragraph(2, " \n"));
  EXPECT_EQ(std::string(50, 'x') + " " + std::string(49, 'y') + "\nz\n",
            Paragraph(0, std::string(50, 'x') + " " + std::string(49, 'y') + " z"));
  EXPECT_EQ("a\n" + std::string(150, 'x') + "\nb\n", Paragraph(0, "a " + std::string(150, 'x') + " b"));
}

TEST(ConsoleTest, AColumnIsACharacterAndNotAByte) {
  std::string word;
  for (int i = 0; i < 49; ++i)
    word += "\xC3\xA4";
  EXPECT_EQ(word + " " + word + "\n", Paragraph(0, word + " " + word));
}

}  // namespace
