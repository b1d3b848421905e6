#include "permissions/SourceExtension.h"

#include <gtest/gtest.h>

#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/Sign.h"
#include "transfer/SourceURL.h"

namespace {

// What a single trace of this class looks like.
void ExpectTrace(const LogCapture& log, HRESULT code) {
  const auto entries = log.Entries();
  ASSERT_EQ(1u, entries.size()) << log.Text();
  EXPECT_EQ("ERROR", entries[0].level);
  EXPECT_EQ("SourceExtension", entries[0].file);
  EXPECT_HRESULT(code, entries[0].code);
  EXPECT_EQ("", entries[0].message);
}

template <class Text>
std::string Shown(const Text* text) {
  HRESULT hr = E_UNEXPECTED;
  const CSourceExtension extension(text, &hr);
  EXPECT_HRESULT(S_OK, hr);
  LogCapture log;
  extension.Dump();
  return log.Text();
}

TEST(SourceExtensionTest, KeepsItsTextExactlyAsGiven) {
  EXPECT_EQ(" .ExE.%s ", Shown(" .ExE.%s "));
  EXPECT_EQ(" .ExE.%s ", Shown(L" .ExE.%s "));
}

TEST(SourceExtensionTest, KeepsAnEmptyText) {
  EXPECT_EQ("", Shown(""));
  EXPECT_EQ("", Shown(L""));
}

TEST(SourceExtensionTest, KeepsALongText) {
  const std::string text(50000, 'x');
  EXPECT_EQ(text, Shown(text.c_str()));
  EXPECT_EQ(text, Shown(std::wstring(50000, L'x').c_str()));
}

TEST(SourceExtensionTest, WideTextComesInTheAnsiCodePage) {
  EXPECT_EQ("caf\xe9?", Shown(L"caf\x00e9\x4e00"));
}

TEST(SourceExtensionTest, NullIsAnInvalidArgument) {
  HRESULT hr = S_OK;
  {
    LogCapture log;
    const CSourceExtension extension(static_cast<const char*>(nullptr), &hr);
    EXPECT_HRESULT(E_INVALIDARG, hr);
    ExpectTrace(log, E_INVALIDARG);
  }
  hr = S_OK;
  LogCapture log;
  const CSourceExtension extension(static_cast<const wchar_t*>(nullptr), &hr);
  EXPECT_HRESULT(E_INVALIDARG, hr);
  ExpectTrace(log, E_INVALIDARG);
}

TEST(SourceExtensionTest, WithoutTextItShowsNothing) {
  const CSourceExtension extension(static_cast<const char*>(nullptr), nullptr);
  LogCapture log;
  extension.Dump();
  EXPECT_EQ("", log.Text());
}

TEST(SourceExtensionTest, FailuresLeaveNoLineWithoutDebugLogging) {
  LogCapture log(false);
  const CSourceExtension extension(static_cast<const char*>(nullptr), nullptr);
  EXPECT_EQ("", log.Text());
}

TEST(SourceExtensionTest, ACopyWithoutMemoryIsTraced) {
  HRESULT hr = S_OK;
  LogCapture log;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    const CSourceExtension extension("exe", &hr);
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  ExpectTrace(log, E_OUTOFMEMORY);
}

TEST(SourceExtensionTest, AConversionWithoutMemoryIsTraced) {
  HRESULT hr = S_OK;
  LogCapture log;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    const CSourceExtension extension(L"exe", &hr);
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  ExpectTrace(log, E_OUTOFMEMORY);
}

TEST(SourceExtensionTest, AConversionThatFailsIsTraced) {
  HRESULT hr = S_OK;
  LogCapture log;
  {
    PATCH_IMPORT(noConversion, WideCharToMultiByte, FailWith(0, ERROR_NO_UNICODE_TRANSLATION));
    const CSourceExtension extension(L"exe", &hr);
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  ExpectTrace(log, E_OUTOFMEMORY);
}

TEST(SourceExtensionTest, NobodyHasToAskForTheCode) {
  const CSourceExtension narrow("exe", nullptr);
  const CSourceExtension wide(L"EXE", nullptr);
  EXPECT_EQ(0, narrow.Compare(&wide));
}

TEST(SourceExtensionTest, IsOfItsOwnKindOnly) {
  const CSourceExtension extension("exe", nullptr);
  EXPECT_TRUE(extension.IsKindOf("CSourceExtension"));
  EXPECT_FALSE(extension.IsKindOf("csourceextension"));
  EXPECT_FALSE(extension.IsKindOf("CSourceExtension2"));
  EXPECT_FALSE(extension.IsKindOf("CSourceURL"));
  EXPECT_FALSE(extension.IsKindOf("CListItem"));
  EXPECT_FALSE(extension.IsKindOf(""));
  EXPECT_FALSE(extension.IsKindOf(nullptr));
}

TEST(SourceExtensionTest, AnItemOfAnotherClassCountsAsAbsent) {
  const CSourceURL url(L"exe", SourceRole::Command, nullptr);
  const CSourceExtension present("exe", nullptr);
  const CSourceExtension absent(static_cast<const char*>(nullptr), nullptr);
  EXPECT_EQ(1, present.Compare(&url));
  EXPECT_EQ(0, absent.Compare(&url));
}

TEST(SourceExtensionTest, NoItemCountsAsAbsent) {
  const CSourceExtension present("exe", nullptr);
  const CSourceExtension absent(static_cast<const char*>(nullptr), nullptr);
  EXPECT_EQ(1, present.Compare(nullptr));
  EXPECT_EQ(0, absent.Compare(nullptr));
}

struct CompareRow {
  const char* name;
  const char* entry;  // null: absent
  const char* other;
  int result;  // a sign, and where one text is absent the value itself
};

class SourceExtensionCompareTest : public testing::TestWithParam<CompareRow> {};

TEST_P(SourceExtensionCompareTest, TellsWhetherTheWholeTextsAreEqual) {
  const CompareRow& row = GetParam();
  const CSourceExtension entry(row.entry, nullptr);
  const CSourceExtension other(row.other, nullptr);
  const int result = entry.Compare(&other);
  EXPECT_EQ(row.result, row.entry && row.other ? SignOf(result) : result);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SourceExtensionCompareTest,
    testing::Values(
        CompareRow{"PresentAndAbsent", "exe", nullptr, 1},                                                 //
        CompareRow{"AbsentAndAbsent", nullptr, nullptr, 0},                                                //
        CompareRow{"AbsentAndPresent", nullptr, "exe", -1},                                                //
        CompareRow{"EmptyAndAbsent", "", nullptr, 1},                                                      //
        CompareRow{"AbsentAndEmpty", nullptr, "", -1},                                                     //
        CompareRow{"Equal", "exe", "exe", 0},                                                              //
        CompareRow{"UpperCase", "exe", "EXE", 0},                                                          //
        CompareRow{"MixedCase", "eXe", "Exe", 0},                                                          //
        CompareRow{"CaseOfTheCodePage", "\xe9t\xe9", "\xc9T\xc9", 0}, CompareRow{"BothEmpty", "", "", 0},  //
        CompareRow{"EmptyBeforeAnything", "", "exe", -1},                                                  //
        CompareRow{"AnythingAfterEmpty", "exe", "", 1},                                                    //
        CompareRow{"OnlyABeginning", "ex", "exe", -1},                                                     //
        CompareRow{"OnlyBegunWith", "exe", "ex", 1},                                                       //
        CompareRow{"LongerOther", "exe", "exe1", -1},                                                      //
        CompareRow{"Before", "dll", "exe", -1},                                                            //
        CompareRow{"After", "xml", "EXE", 1},                                                              //
        CompareRow{"ADotCounts", ".exe", "exe", -1},                                                       //
        CompareRow{"ABlankBehindCounts", "exe ", "exe", 1},                                                //
        CompareRow{"ABlankBeforeCounts", " exe", "exe", -1},                                               //
        CompareRow{"NoWildcards", "*", "exe", -1}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
