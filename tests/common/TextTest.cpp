#include "common/Text.h"

#include <gtest/gtest.h>

#include <string>

#include "support/ImportPatch.h"

namespace {

TEST(TextTest, ACopyEqualsItsText) {
  EXPECT_STREQ("abc", CopyText("abc").get());
  EXPECT_STREQ("", CopyText("").get());
  EXPECT_STREQ("ab", CopyText("abc", 2).get());
  EXPECT_EQ(nullptr, CopyText(nullptr));
}

TEST(TextTest, TwoToFourPiecesAreJoined) {
  EXPECT_STREQ("ab", JoinText("a", "b").get());
  EXPECT_STREQ("abc", JoinText("a", "b", "c").get());
  EXPECT_STREQ("abcd", JoinText("a", "b", "c", "d").get());
  EXPECT_STREQ("a", JoinText("a", "").get());
}

TEST(TextTest, NothingIsMadeWhenAPieceIsMissing) {
  EXPECT_EQ(nullptr, JoinText(nullptr, "b"));
  EXPECT_EQ(nullptr, JoinText("a", nullptr));
  EXPECT_EQ(nullptr, JoinText("a", nullptr, "c"));
  EXPECT_EQ(nullptr, JoinText("a", "b", "c", nullptr));
}

TEST(TextTest, WithoutMemoryThereIsNoText) {
  BString made(SysAllocString(L"x"));
  PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  const bool copied = CopyText("a") != nullptr;
  const bool joined = JoinText("a", "b") != nullptr;
  const bool narrowed = NarrowText(L"a") != nullptr;
  const bool allocated = AllocateText(1) != nullptr;
  EXPECT_FALSE(copied || joined || narrowed || allocated);
}

TEST(TextTest, WithoutMemoryThereIsNoAutomationString) {
  const BString made(SysAllocString(L"x"));
  PATCH_IMPORT(noMemory, SysAllocStringLen, FailWith(static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  EXPECT_FALSE(WideText("a"));
  EXPECT_FALSE(JoinBStrings(made, made));
}

TEST(TextTest, AnAllocatedTextIsZeroFilled) {
  const OwnedText text = AllocateText(100);
  EXPECT_EQ(std::string(100, '\0'), std::string(text.get(), 100));
}

TEST(TextTest, TextGoesThroughTheAnsiCodePage) {
  EXPECT_STREQ("abc", NarrowText(L"abc").get());
  EXPECT_STREQ("", NarrowText(L"").get());
  EXPECT_EQ(nullptr, NarrowText(nullptr));
  EXPECT_STREQ(L"abc", WideText("abc").Get());
  EXPECT_EQ(3u, SysStringLen(WideText("abc").Get()));
  EXPECT_STREQ(L"", WideText("").Get());
  EXPECT_FALSE(WideText(nullptr));
}

TEST(TextTest, ATextThatCannotBeConvertedIsNoText) {
  PATCH_IMPORT(noNarrow, WideCharToMultiByte, FailWith(0, ERROR_INVALID_PARAMETER));
  PATCH_IMPORT(noWide, MultiByteToWideChar, FailWith(0, ERROR_INVALID_PARAMETER));
  EXPECT_EQ(nullptr, NarrowText(L"a"));
  EXPECT_FALSE(WideText("a"));
}

TEST(TextTest, AutomationStringsAreJoined) {
  const BString first(SysAllocString(L"file://"));
  const BString second(SysAllocString(L"C:\\a"));
  const BString joined = JoinBStrings(first, second);
  EXPECT_STREQ(L"file://C:\\a", joined.Get());
  EXPECT_EQ(11u, SysStringLen(joined.Get()));
  EXPECT_FALSE(JoinBStrings(first, BString()));
  EXPECT_FALSE(JoinBStrings(BString(), second));
}

TEST(TextTest, AnAutomationStringMovesWithItsOwner) {
  BString first(SysAllocString(L"a"));
  BString second = std::move(first);
  EXPECT_FALSE(first);
  EXPECT_STREQ(L"a", second.Get());
  first = std::move(second);
  EXPECT_STREQ(L"a", first.Get());
  *first.Receive() = SysAllocString(L"b");
  EXPECT_STREQ(L"b", first.Get());
  BSTR detached = first.Detach();
  EXPECT_TRUE(first.IsEmpty());
  SysFreeString(detached);
}

TEST(TextTest, ComparisonsWithoutRegardToCase) {
  EXPECT_TRUE(BeginsWithNoCase("HTTP://h", "http:"));
  EXPECT_TRUE(BeginsWithNoCase("http:", "http:"));
  EXPECT_FALSE(BeginsWithNoCase("htt", "http:"));
  EXPECT_FALSE(BeginsWithNoCase("https", "http:"));
  EXPECT_TRUE(EqualsNoCase(L"TRUE", L"true"));
  EXPECT_FALSE(EqualsNoCase(L"tru", L"true"));
  EXPECT_FALSE(EqualsNoCase(L"true ", L"true"));
  EXPECT_FALSE(EqualsNoCase(nullptr, L"true"));
}

}  // namespace
