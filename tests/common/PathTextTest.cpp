#include "common/PathText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/ImportPatch.h"

namespace {

std::string Stripped(const char* text) {
  return std::string(text, LengthWithoutTrailingSeparator(text, std::strlen(text)));
}

TEST(PathTextTest, OneTrailingSeparatorIsStripped) {
  EXPECT_EQ("C:\\Temp", Stripped("C:\\Temp\\"));
  EXPECT_EQ("http://h/d", Stripped("http://h/d/"));
  EXPECT_EQ("C:\\Temp\\", Stripped("C:\\Temp\\\\"));
  EXPECT_EQ("C:\\Temp", Stripped("C:\\Temp"));
  EXPECT_EQ("C:", Stripped("C:"));
}

TEST(PathTextTest, EmptyTextAndTheTwoBareSchemesStayWhole) {
  EXPECT_EQ("", Stripped(""));
  EXPECT_EQ("http://", Stripped("http://"));
  EXPECT_EQ("FILE://", Stripped("FILE://"));
}

TEST(PathTextTest, ABareHttpsIsNotAmongThem) {
  EXPECT_EQ("https:/", Stripped("https://"));
}

TEST(PathTextTest, TheTextBehindTheLastSeparatorIsTheName) {
  EXPECT_STREQ("b.txt", BehindLastSeparator("C:\\a\\b.txt"));
  EXPECT_STREQ("b.txt", BehindLastSeparator("C:b.txt"));
  EXPECT_STREQ("", BehindLastSeparator("http://h/"));
  EXPECT_EQ(nullptr, BehindLastSeparator("b.txt"));
}

TEST(PathTextTest, TheTextBehindTheLastDotIsTheExtension) {
  EXPECT_STREQ("txt", BehindLastDot("a.b.txt"));
  EXPECT_STREQ("", BehindLastDot("a."));
  EXPECT_STREQ("", BehindLastDot("a"));
  EXPECT_STREQ("b\\c", BehindLastDot("a.b\\c"));
}

// In code page 932 the byte 0x5C is also the second byte of characters such as 0x83 0x5C.
TEST(PathTextTest, TheSecondByteOfACharacterIsNoSeparator) {
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte >= 0x81 && byte <= 0x9F; });
  EXPECT_STREQ("\x83\x5C.x", BehindLastSeparator("C:\\\x83\x5C.x"));
  EXPECT_EQ("C:\\\x83\x5C", Stripped("C:\\\x83\x5C"));
  EXPECT_EQ("C:\\\x83\x5C", Stripped("C:\\\x83\x5C\\"));
  EXPECT_STREQ("x", BehindLastDot("\x83.x.x"));
}

TEST(PathTextTest, ALeadByteAtTheEndDoesNotSkipTheTerminator) {
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte == 0x83; });
  EXPECT_EQ(nullptr, BehindLastSeparator("a\x83"));
  EXPECT_EQ("a\x83", Stripped("a\x83"));
}

}  // namespace
