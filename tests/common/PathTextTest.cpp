#include "common/PathText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/ImportPatch.h"
#include "support/Sign.h"

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

TEST(PathTextTest, OtherTextsOfTheSameLengthAreStripped) {
  EXPECT_EQ("C:\\abc", Stripped("C:\\abc\\"));
  EXPECT_EQ("file:/a", Stripped("file:/a"));
  EXPECT_EQ("ftp://", Stripped("ftp:///"));
  EXPECT_EQ("http://a", Stripped("http://a/"));
}

TEST(PathTextTest, OnlyTheGivenLengthIsLookedAt) {
  EXPECT_EQ(0u, LengthWithoutTrailingSeparator("/a", 0));
  EXPECT_EQ(1u, LengthWithoutTrailingSeparator("a/b", 2));
  EXPECT_EQ(3u, LengthWithoutTrailingSeparator("a/b/", 3));
  EXPECT_EQ(7u, LengthWithoutTrailingSeparator("http://host/", 7));
}

TEST(PathTextTest, ThreeCharactersSeparate) {
  for (int character = -128; character < 128; ++character) {
    const char c = static_cast<char>(character);
    EXPECT_EQ(c == '\\' || c == '/' || c == ':', IsSeparator(c)) << character;
  }
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

TEST(PathTextTest, TheLastDotIsFound) {
  EXPECT_STREQ(".txt", LastDot("a.b.txt"));
  EXPECT_STREQ(".", LastDot("a."));
  EXPECT_STREQ(".b\\c", LastDot("a.b\\c"));
  const char* const text = "abc";
  EXPECT_EQ(text + 3, LastDot(text));
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

struct CompareRow {
  const char* name;
  const char* text;
  const char* other;
  std::size_t length;
  int sign;
};

class CompareNoCaseTest : public testing::TestWithParam<CompareRow> {
 protected:
  static void ExpectSigns() {
    const CompareRow& row = GetParam();
    EXPECT_EQ(row.sign, SignOf(CompareNoCase(row.text, row.other, row.length)));
    EXPECT_EQ(-row.sign, SignOf(CompareNoCase(row.other, row.text, row.length)));
  }
};

TEST_P(CompareNoCaseTest, HasThisSignAndTheOppositeTheOtherWayRound) {
  ExpectSigns();
}

std::string RowName(const testing::TestParamInfo<CompareRow>& row) {
  return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    , CompareNoCaseTest,
    testing::Values(
        CompareRow{"Equal", "abc", "abc", 3, 0}, CompareRow{"FirstAndLastLetter", "azAZ", "AZaz", 4, 0},
        CompareRow{"Nothing", "a", "b", 0, 0}, CompareRow{"BehindTheLength", "abc", "abd", 2, 0},
        CompareRow{"LastOfTheLength", "abc", "abd", 3, -1}, CompareRow{"FirstByte", "xaa", "aaa", 3, 1},
        CompareRow{"TheFirstDifferenceCounts", "abz", "acA", 3, -1}, CompareRow{"BeforeTheLetters", "@", "`", 1, -1},
        CompareRow{"BehindTheLetters", "[", "{", 1, -1}, CompareRow{"LettersCountAsCapitals", "a", "_", 1, -1},
        CompareRow{"TheTerminator", "ab", "abc", 3, -1}, CompareRow{"LettersOfTheCodePage", "caf\xe9", "CAF\xc9", 4, 0},
        CompareRow{"OtherLettersOfTheCodePage", "\xe9", "\xe8", 1, 1}, CompareRow{"BytesHaveNoSign", "z", "\xe9", 1, -1},
        CompareRow{"MultiplicationIsNoCapitalOfDivision", "\xd7", "\xf7", 1, -1}),
    RowName);

// A code page in which the bytes from 0x81 to 0xFE begin characters of two bytes.
class DoubleByteCompareTest : public CompareNoCaseTest {
 private:
  ImportedFunction<struct LeadBytes, decltype(&::IsDBCSLeadByte)> leadBytes{
      "IsDBCSLeadByte", [](auto, BYTE byte) -> BOOL { return byte >= 0x81 && byte <= 0xFE; }};
};

TEST_P(DoubleByteCompareTest, HasThisSignAndTheOppositeTheOtherWayRound) {
  ExpectSigns();
}

INSTANTIATE_TEST_SUITE_P(, DoubleByteCompareTest,
                         testing::Values(CompareRow{"EqualCharacters", "\xc4\x41z", "\xc4\x41Z", 3, 0},
                                         CompareRow{"SecondBytesHaveNoCase", "\xc4\x41", "\xc4\x61", 2, -1},
                                         CompareRow{"SecondBytesHaveNoSign", "\xc4\x41", "\xc4\x81", 2, -1},
                                         CompareRow{"TheSecondByteIsBehindTheLength", "\xc4\x41", "\xc4\x61", 1, 0},
                                         CompareRow{"ASecondByteBeginsNothing", "\xc4\xc4z", "\xc4\xc4Z", 3, 0},
                                         CompareRow{"OneByteCharactersHaveCase", "a\xc4\x41", "A\xc4\x41", 3, 0}),
                         RowName);

// 0xE4 is the small letter of 0xC4 where both stand for themselves; which of the two is the smaller is of no account here.
TEST(CompareNoCaseByteTest, AByteThatBeginsACharacterHasNoCase) {
  for (const int lead : {0xC4, 0xE4}) {
    PATCH_IMPORT(oneLead, IsDBCSLeadByte, [lead](auto, BYTE byte) -> BOOL { return byte == lead; });
    EXPECT_NE(0, CompareNoCase("\xc4\x41", "\xe4\x41", 2)) << lead;
    EXPECT_NE(0, CompareNoCase("\xe4\x41", "\xc4\x41", 2)) << lead;
  }
}

TEST(CompareNoCaseByteTest, OnlyBytesBeyondAsciiAreAskedOfTheCodePage) {
  std::vector<std::uintptr_t> asked;
  PATCH_IMPORT(record, CharUpperA, [&](auto original, char* character) {
    asked.push_back(reinterpret_cast<std::uintptr_t>(character));
    return original(character);
  });
  EXPECT_NE(0, CompareNoCase("\x7f", "\x80", 1));
  EXPECT_NE(0, CompareNoCase("a", "b", 1));
  ASSERT_FALSE(asked.empty());
  for (const std::uintptr_t character : asked)
    EXPECT_EQ(0x80u, character);
}

}  // namespace
