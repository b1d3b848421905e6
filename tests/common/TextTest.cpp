#include "common/Text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/GuardedHeap.h"
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

// The length is asked for first, and the text second.
TEST(TextTest, ATextThatIsCutWhileItIsConvertedIsNoText) {
  for (const int call : {1, 2}) {
    PATCH_IMPORT(noNarrow, WideCharToMultiByte, FailCall(call, 0, ERROR_INSUFFICIENT_BUFFER));
    PATCH_IMPORT(noWide, MultiByteToWideChar, FailCall(call, 0, ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(nullptr, NarrowText(L"a")) << call;
    EXPECT_FALSE(WideText("a")) << call;
  }
}

TEST(TextTest, NoRoomIsAskedForATextThatCannotBeConverted) {
  PATCH_IMPORT(noWide, MultiByteToWideChar, FailWith(0, ERROR_NO_UNICODE_TRANSLATION));
  PATCH_IMPORT(strings, SysAllocStringLen, [](auto, const OLECHAR*, UINT length) -> BSTR {
    ADD_FAILURE() << length;
    return nullptr;
  });
  EXPECT_FALSE(WideText("a"));
}

TEST(TextTest, ATextIsConvertedWholeAndAsItIs) {
  PATCH_IMPORT(narrow, WideCharToMultiByte,
               [](auto original, UINT codePage, DWORD flags, const wchar_t* text, int length, char* buffer, int bytes,
                  const char* replacement, BOOL* isReplaced) {
    EXPECT_EQ(UINT{CP_ACP}, codePage);
    EXPECT_EQ(0u, flags);
    EXPECT_EQ(nullptr, replacement);
    EXPECT_EQ(nullptr, isReplaced);
    return original(932, flags, text, length, buffer, bytes, replacement, isReplaced);
  });
  PATCH_IMPORT(wide, MultiByteToWideChar,
               [](auto original, UINT codePage, DWORD flags, const char* text, int length, wchar_t* buffer, int characters) {
    EXPECT_EQ(UINT{CP_ACP}, codePage);
    EXPECT_EQ(0u, flags);
    return original(932, flags, text, length, buffer, characters);
  });
  GuardedHeap heap;
  EXPECT_STREQ("\x83\x5C\x83\x5C", NarrowText(L"\u30BD\u30BD").get());
  EXPECT_EQ(1, heap.Checked());
  const BString text = WideText("\x83\x5C\x83\x5C");
  EXPECT_STREQ(L"\u30BD\u30BD", text.Get());
  EXPECT_EQ(2u, SysStringLen(text.Get()));
}

TEST(TextTest, NothingIsWrittenBehindAText) {
  GuardedHeap heap;
  EXPECT_TRUE(CopyText("abc"));
  EXPECT_TRUE(CopyText("abc", 2));
  EXPECT_TRUE(JoinText("a", "bc", "def", "ghij"));
  EXPECT_TRUE(NarrowText(L"abc"));
  EXPECT_EQ(4, heap.Checked());
}

TEST(TextTest, ACopyOfSomeBytesHoldsZeroBytesToo) {
  const OwnedText copy = CopyText("a\0b\0c", 4);
  EXPECT_EQ(std::string("a\0b\0\0", 5), std::string(copy.get(), 5));
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
  BSTR detached = first.Detach();
  EXPECT_TRUE(first.IsEmpty());
  SysFreeString(detached);
}

// The strings that are given back to the system while `use` runs.
template <class Use>
std::vector<BSTR> FreedBy(Use use) {
  std::vector<BSTR> freed;
  PATCH_IMPORT(record, SysFreeString, [&](auto original, BSTR text) {
    if (text)
      freed.push_back(text);
    original(text);
  });
  use();
  return freed;
}

TEST(TextTest, AnAutomationStringIsGivenBackWithItsOwner) {
  const BSTR text = SysAllocString(L"a");
  EXPECT_EQ(std::vector<BSTR>{text}, FreedBy([&] { const BString owner(text); }));
}

TEST(TextTest, AnAutomationStringIsGivenBackWhenAnotherTakesItsPlace) {
  const BSTR text = SysAllocString(L"a");
  const BSTR other = SysAllocString(L"b");
  BString owner(text);
  EXPECT_EQ(std::vector<BSTR>{text}, FreedBy([&] { owner = BString(other); }));
  EXPECT_EQ(other, owner.Get());
  BString& same = owner;
  EXPECT_EQ(std::vector<BSTR>{}, FreedBy([&] { owner = std::move(same); }));
  EXPECT_EQ(other, owner.Get());
}

TEST(TextTest, AnAutomationStringIsGivenBackBeforeACalleePutsAnother) {
  const BSTR text = SysAllocString(L"a");
  BString owner(text);
  BSTR* place = nullptr;
  EXPECT_EQ(std::vector<BSTR>{text}, FreedBy([&] { place = owner.Receive(); }));
  EXPECT_FALSE(owner);
  *place = SysAllocString(L"b");
  EXPECT_STREQ(L"b", owner.Get());
}

TEST(TextTest, ADetachedAutomationStringIsNotGivenBack) {
  BSTR detached = nullptr;
  EXPECT_EQ(std::vector<BSTR>{}, FreedBy([&] { detached = BString(SysAllocString(L"a")).Detach(); }));
  EXPECT_STREQ(L"a", detached);
  SysFreeString(detached);
}

TEST(TextTest, AnAutomationStringIsEmptyWithoutCharacters) {
  EXPECT_TRUE(BString().IsEmpty());
  EXPECT_TRUE(BString(SysAllocString(L"")).IsEmpty());
  EXPECT_FALSE(BString(SysAllocString(L"a")).IsEmpty());
  EXPECT_TRUE(static_cast<bool>(BString(SysAllocString(L""))));
}

TEST(TextTest, OnlyAsciiLettersHaveCase) {
  EXPECT_TRUE(BeginsWithNoCase("AZaz", "azAZ"));
  EXPECT_TRUE(EqualsNoCase(L"AZaz", L"azAZ"));
  for (const wchar_t* const pair : {L"@`", L"[{", L"\xC4\xE4"}) {
    const wchar_t first[] = {pair[0], 0};
    const wchar_t second[] = {pair[1], 0};
    EXPECT_FALSE(EqualsNoCase(first, second)) << pair[0];
    EXPECT_FALSE(EqualsNoCase(second, first)) << pair[0];
  }
  EXPECT_FALSE(BeginsWithNoCase("@", "`"));
  EXPECT_FALSE(BeginsWithNoCase("{", "["));
}

TEST(TextTest, ComparisonsWithoutRegardToCase) {
  EXPECT_TRUE(BeginsWithNoCase("HTTP://h", "http:"));
  EXPECT_TRUE(BeginsWithNoCase("http:", "http:"));
  EXPECT_FALSE(BeginsWithNoCase("htt", "http:"));
  EXPECT_FALSE(BeginsWithNoCase("https", "http:"));
  EXPECT_TRUE(EqualsNoCase(L"TRUE", L"true"));
  EXPECT_FALSE(EqualsNoCase(L"tru", L"true"));
  EXPECT_FALSE(EqualsNoCase(L"true ", L"true"));
  EXPECT_FALSE(EqualsNoCase(L"true", L"true "));
  EXPECT_TRUE(EqualsNoCase(L"", L""));
  EXPECT_FALSE(EqualsNoCase(L"", L"true"));
  EXPECT_FALSE(EqualsNoCase(nullptr, L"true"));
  EXPECT_FALSE(EqualsNoCase(L"true", nullptr));
  EXPECT_FALSE(EqualsNoCase(nullptr, nullptr));
}

}  // namespace
