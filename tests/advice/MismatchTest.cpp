#include "advice/Mismatch.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "advice/Explanation.h"
#include "advice/Words.h"
#include "support/PermitFile.h"
#include "support/Seed.h"

namespace {

struct URLRow {
  const char* name;
  const wchar_t* entry;
  const wchar_t* candidate;
  const char* reason;  // empty when the entry permits the candidate
};

std::string NameOfAny(const std::optional<Mismatch>& mismatch) {
  return mismatch ? NameOf(*mismatch) : "";
}

class URLMismatchTest : public testing::TestWithParam<URLRow> {};

TEST_P(URLMismatchTest, IsNamed) {
  const CSourceURL entry(GetParam().entry, SourceRole::PermittedEntry, nullptr);
  const CSourceURL candidate(GetParam().candidate, SourceRole::Command, nullptr);
  const auto reason = FindMismatch(entry, candidate);
  EXPECT_EQ(GetParam().reason, NameOfAny(reason));
  EXPECT_EQ(entry.Compare(&candidate) == 0, !reason);
  EXPECT_EQ(!reason, (reason ? MessageOf(*reason, entry, candidate) : "").empty());
}

INSTANTIATE_TEST_SUITE_P(
    , URLMismatchTest,
    testing::Values(
        URLRow{"Below", L"http://a/x/", L"http://a/x/y/z.txt", ""},
        URLRow{"TheSame", L"http://a/x/", L"http://a/x/z.txt", ""},
        URLRow{"ANeighbour", L"http://a/x/", L"http://a/xy/z.txt", ""},
        URLRow{"ALookAlikeHost", L"http://a/", L"http://ab/z.txt", ""},
        URLRow{"TheSchemeInCapitals", L"HTTP://a/x/", L"http://a/x/z.txt", ""},
        URLRow{"AFolderInCapitals", L"C:\\X\\", L"c:\\x\\z.txt", ""},
        URLRow{"OnTheWebNotHere", L"C:\\x\\", L"http://a/x/z.txt", "class-differs"},
        URLRow{"HereNotOnTheWeb", L"http://a/x/", L"C:\\x\\z.txt", "class-differs"},
        URLRow{"Secure", L"http://a/x/", L"https://a/x/z.txt", "scheme-differs"},
        URLRow{"NotSecure", L"https://a/x/", L"http://a/x/z.txt", "scheme-differs"},
        URLRow{"SecureOfAnotherHost", L"http://a/x/", L"https://b/x/z.txt", "scheme-differs"},
        URLRow{"AnotherHost", L"http://a/x/", L"http://b/x/z.txt", "host-differs"},
        URLRow{"AnotherPort", L"http://a/x/", L"http://a:8080/x/z.txt", "host-differs"},
        URLRow{"ALookAlikeHostWithAPath", L"http://a/x/", L"http://ab/x/z.txt", "host-differs"},
        URLRow{"TheHostInCapitals", L"http://A/x/", L"http://a/x/z.txt", "case-differs"},
        URLRow{"ThePathInCapitals", L"http://a/X/", L"http://a/x/z.txt", "case-differs"},
        URLRow{"AnotherPath", L"http://a/x/", L"http://a/y/z.txt", "path-differs"},
        URLRow{"AnotherFolder", L"C:\\x\\", L"C:\\y\\z.txt", "path-differs"},
        URLRow{"OneForwardSlash", L"C:\\x\\y\\", L"C:/x/y/z.txt", "path-differs"},
        URLRow{"Above", L"http://a/x/y/", L"http://a/x/z.txt", "entry-longer"},
        URLRow{"TheHostAlone", L"http://a/x/", L"http://a/z.txt", "entry-longer"},
        URLRow{"AFolderAbove", L"C:\\x\\y\\", L"c:\\X\\z.txt", "entry-longer"}),
    [](const testing::TestParamInfo<URLRow>& row) { return std::string(row.param.name); });

TEST(MismatchTest, OfExtensions) {
  const auto reason = [](const wchar_t* entry, const wchar_t* candidate) {
    return NameOfAny(FindMismatch(CSourceExtension(entry, nullptr), CSourceExtension(candidate, nullptr)));
  };
  EXPECT_EQ("", reason(L"txt", L"TXT"));
  EXPECT_EQ("extension-differs", reason(L"txt", L"tx"));
  EXPECT_EQ("extension-differs", reason(L"txt", L"txtx"));
  EXPECT_EQ("dot-in-entry", reason(L".txt", L"TXT"));
  EXPECT_EQ("extension-differs", reason(L".txt", L"tx"));
  EXPECT_EQ("extension-differs", reason(L"..txt", L"txt"));
  EXPECT_EQ("dot-in-entry", reason(L".", L""));
}

TEST(MismatchTest, OfFolders) {
  const auto reason = [](const wchar_t* entry, const wchar_t* candidate) {
    return NameOfAny(FindMismatch(
        CDestinationFolder(FolderKind::Path, entry, nullptr), CDestinationFolder(FolderKind::Path, candidate, nullptr)));
  };
  EXPECT_EQ("", reason(L"C:\\A", L"c:\\ab"));
  EXPECT_EQ("entry-longer", reason(L"C:\\A\\B", L"c:\\a"));
  EXPECT_EQ("path-differs", reason(L"C:\\A", L"C:\\B"));
}

template <class Item>
std::string MessageOfAny(const Item& entry, const Item& candidate) {
  const std::optional<Mismatch> reason = FindMismatch(entry, candidate);
  return reason ? MessageOf(*reason, entry, candidate) : "";
}

TEST(MismatchTest, MessagesSayWhatTheEntryPermits) {
  const auto ofURLs = [](const wchar_t* entry, const wchar_t* candidate) {
    return MessageOfAny(
        CSourceURL(entry, SourceRole::PermittedEntry, nullptr), CSourceURL(candidate, SourceRole::Command, nullptr));
  };
  EXPECT_EQ("The entry is on this machine, and what is asked for is on the web.", ofURLs(L"C:\\x\\", L"http://a/x/z.txt"));
  EXPECT_EQ("The entry is on the web, and what is asked for is on this machine.", ofURLs(L"http://a/x/", L"C:\\x\\z.txt"));
  EXPECT_EQ("The entry permits http:// and not https://.", ofURLs(L"http://a/x/", L"https://a/x/z.txt"));
  EXPECT_EQ("The entry permits the host 'a'.", ofURLs(L"http://a/x/", L"http://b/x/z.txt"));
  EXPECT_EQ("The entry permits the host 'a'.", ofURLs(L"http://anna:secret@a/x/", L"http://b/x/z.txt"));
  EXPECT_EQ("Only the case of letters differs, and it counts on the web: the entry permits 'http://a/X'.",
            ofURLs(L"http://a/X/", L"http://a/x/z.txt"));
  EXPECT_EQ("The entry is longer: it permits only what begins with 'http://a/x/y'.",
            ofURLs(L"http://a/x/y/", L"http://a/x/z.txt"));
  EXPECT_EQ("The entry permits what begins with 'http://a/x'.", ofURLs(L"http://a/x/", L"http://a/y/z.txt"));
}

TEST(MismatchTest, MessagesSayWhichExtensionAndFolderTheEntryPermits) {
  const auto ofExtensions = [](const wchar_t* entry) {
    return MessageOfAny(CSourceExtension(entry, nullptr), CSourceExtension(L"exe", nullptr));
  };
  EXPECT_EQ("The entry begins with a dot, which no extension has: write it without.", ofExtensions(L".exe"));
  EXPECT_EQ("The entry permits the extension 'txt'.", ofExtensions(L"txt"));
  const auto ofFolders = [](const wchar_t* entry) {
    return MessageOfAny(
        CDestinationFolder(FolderKind::Path, entry, nullptr), CDestinationFolder(FolderKind::Path, L"C:\\A", nullptr));
  };
  EXPECT_EQ("The entry is longer: it permits only what begins with 'C:\\A\\B'.", ofFolders(L"C:\\A\\B"));
  EXPECT_EQ("The entry permits what begins with 'C:\\B'.", ofFolders(L"C:\\B"));
}

// What an administrator most likely meant comes first.
TEST(MismatchTest, WhatDiffersLeastIsNearest) {
  const CSourceURL entry(L"http://a/x/", SourceRole::PermittedEntry, nullptr);
  const auto nearness = [&](Mismatch reason, const wchar_t* candidate) {
    return NearnessOf(reason, entry, CSourceURL(candidate, SourceRole::Command, nullptr));
  };
  const auto rank = [&](Mismatch reason) { return nearness(reason, L"http://b/x/").first; };
  EXPECT_GT(rank(Mismatch::CaseDiffers), rank(Mismatch::EntryLonger));
  EXPECT_GT(rank(Mismatch::EntryLonger), rank(Mismatch::PathDiffers));
  const Nearness sameHost = nearness(Mismatch::SchemeDiffers, L"https://a/y/f");
  EXPECT_GT(rank(Mismatch::PathDiffers), sameHost.first);
  EXPECT_EQ(2u, sameHost.second);
  EXPECT_GT(sameHost.first, rank(Mismatch::HostDiffers));
  EXPECT_GT(rank(Mismatch::HostDiffers), rank(Mismatch::ClassDiffers));
  EXPECT_EQ(rank(Mismatch::CaseDiffers), rank(Mismatch::DotInEntry));
  EXPECT_EQ(rank(Mismatch::HostDiffers), rank(Mismatch::ExtensionDiffers));
  EXPECT_EQ(Nearness(rank(Mismatch::CaseDiffers), 3), nearness(Mismatch::SchemeDiffers, L"https://a/x/f"));
  EXPECT_EQ(Nearness(rank(Mismatch::HostDiffers), 0), nearness(Mismatch::SchemeDiffers, L"https://b/x/f"));
}

// Of what differs alike, the longer common beginning is the nearer.
TEST(MismatchTest, TheBytesThatBothBeginWithAreCounted) {
  const CSourceURL entry(L"http://a/xy/", SourceRole::PermittedEntry, nullptr);
  EXPECT_EQ(
      10u, NearnessOf(Mismatch::PathDiffers, entry, CSourceURL(L"http://a/xz/f", SourceRole::Command, nullptr)).second);
  const CSourceExtension extension(L"txt", nullptr);
  EXPECT_EQ(2u, NearnessOf(Mismatch::ExtensionDiffers, extension, CSourceExtension(L"txe", nullptr)).second);
  const CDestinationFolder folder(FolderKind::Path, L"C:\\abc", nullptr);
  EXPECT_EQ(4u, NearnessOf(Mismatch::PathDiffers, folder, CDestinationFolder(FolderKind::Path, L"C:\\ax", nullptr)).second);
}

// Texts of few letters, so that many begin with each other.
std::wstring RandomURL(Dice& dice) {
  static const std::vector<std::wstring> starts = {
      L"http://", L"https://", L"HTTP://", L"file://", L"C:\\", L"c:\\", L"\\\\", L"http:", L""};
  static const std::vector<std::wstring> parts = {L"a", L"A", L"ab", L"b", L"a.b", L"a:8", L"", L"..", L"\xE4", L"\xC4"};
  static const std::vector<std::wstring> ends = {L"/", L"\\", L"", L":"};
  std::wstring text = dice.Choose(starts);
  for (std::size_t count = dice.Roll(4); count > 0; --count)
    text += dice.Choose(parts) + dice.Choose(ends);
  return text;
}

std::string Lower(std::string text) {
  CharLowerBuffA(text.data(), static_cast<DWORD>(text.size()));
  return text;
}

bool BeginsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

std::string HostOf(const std::string& folder) {
  std::string rest = folder.substr(folder.find(':') + 1);
  if (BeginsWith(rest, "//"))
    rest.erase(0, 2);
  return rest.substr(0, rest.find_first_of("/\\"));
}

// What the name of a mismatch means, said another way.
std::string ExpectedReason(const CSourceURL& entry, const CSourceURL& candidate) {
  const std::string wanted = entry.GetFolder() ? entry.GetFolder() : "";
  const std::string found = candidate.GetFolder() ? candidate.GetFolder() : "";
  if (entry.IsLocal() != candidate.IsLocal())
    return "class-differs";
  if (entry.IsLocal())
    return BeginsWith(Lower(wanted), Lower(found)) ? "entry-longer" : "path-differs";
  if (BeginsWith(Lower(found), Lower(wanted)))
    return "case-differs";
  if (BeginsWith(wanted, found))
    return "entry-longer";
  if (wanted.substr(0, wanted.find(':')) != found.substr(0, found.find(':')))
    return "scheme-differs";
  return HostOf(wanted) == HostOf(found) ? "path-differs" : "host-differs";
}

TEST(MismatchTest, AgreesWithTheModuleForManyPairs) {
  Dice dice;
  int permitted = 0;
  for (int pair = 0; pair < 100000; ++pair) {
    const std::wstring entryText = RandomURL(dice);
    const std::wstring text = RandomURL(dice);
    const CSourceURL entry(entryText.c_str(), SourceRole::PermittedEntry, nullptr);
    const CSourceURL candidate(text.c_str(), SourceRole::Command, nullptr);
    const auto reason = FindMismatch(entry, candidate);
    ASSERT_EQ(entry.Compare(&candidate) == 0, !reason) << Utf8(entryText) << " " << Utf8(text);
    permitted += reason ? 0 : 1;
    ASSERT_EQ(reason ? ExpectedReason(entry, candidate) : "", NameOfAny(reason)) << Utf8(entryText) << " " << Utf8(text);
  }
  EXPECT_GT(permitted, 1000);
  EXPECT_LT(permitted, 99000);
}

}  // namespace
