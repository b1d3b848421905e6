#include "advice/Link.h"

#include <gtest/gtest.h>

namespace {

struct CallRow {
  const char* name;
  std::wstring commandLine;
  std::wstring link;
  bool isQuiet = false;
};

class LinkCallTest : public testing::TestWithParam<CallRow> {};

TEST_P(LinkCallTest, HasOneLink) {
  const LinkCall call = ReadLinkCall(GetParam().commandLine);
  EXPECT_EQ(GetParam().link, call.link);
  EXPECT_EQ(GetParam().isQuiet, call.isQuiet);
}

const std::wstring kProgram = L"\"C:\\Program Files\\Norvik\\norvikopen.exe\"";
const std::wstring kLink = L"norvik:http://h/a";

INSTANTIATE_TEST_SUITE_P(
    , LinkCallTest,
    testing::Values(
        CallRow{"AsTheSystemCallsIt", kProgram + L" \"" + kLink + L"\"", kLink},
        CallRow{"WithoutQuotes", kProgram + L" " + kLink, kLink},
        CallRow{"AProgramWithoutQuotes", L"norvikopen " + kLink, kLink},
        CallRow{"NoBlankBehindTheProgram", kProgram + L"\"" + kLink + L"\"", kLink},
        CallRow{"Blanks", kProgram + L" \t " + kLink + L" \t", kLink},
        CallRow{"Quiet", kProgram + L" /quiet \"" + kLink + L"\"", kLink, true},
        CallRow{"QuietWithoutQuotes", kProgram + L" /quiet\t" + kLink, kLink, true},
        CallRow{"QuietIsALink", kProgram + L" \"/quiet\"", L"/quiet"},
        CallRow{"QuietInsideTheQuotes", kProgram + L" \"/quiet " + kLink + L"\"", L"/quiet " + kLink},
        CallRow{"QuietAlone", kProgram + L" /quiet", L"/quiet"},
        CallRow{"AnotherOption", kProgram + L" /quietly", L"/quietly"},
        CallRow{"QuotesInside", kProgram + L" \"norvik:http://h/\" --run \"x\"", L"norvik:http://h/\" --run \"x"},
        CallRow{"ABackslashAtTheEnd", kProgram + L" \"norvik:http://h/\\\"", L"norvik:http://h/\\"},
        CallRow{"BackslashesAndAQuote", kProgram + L" \"a\\\\\" b\"", L"a\\\\\" b"},
        CallRow{"AQuoteAlone", kProgram + L" \"", L"\""}),
    [](const testing::TestParamInfo<CallRow>& row) { return std::string(row.param.name); });

TEST(WrongLinkCallTest, IsRefused) {
  for (const std::wstring& commandLine :
       {std::wstring(), kProgram, kProgram + L" ", kProgram + L" \"\"", kProgram + L" /quiet \"\"", kProgram + L" a b",
        kProgram + L" \"a\" b", kProgram + L" a \"b\"", std::wstring(L"\"C:\\never closed"), std::wstring(L"norvikopen"),
        kProgram + L" /quiet a b"})
    EXPECT_THROW(ReadLinkCall(commandLine), LinkRefused);
}

// One call's link, and whether a manifest's URL stands in it.
struct LinkRow {
  const char* name;
  std::wstring link;
  bool isTaken;
};

class LinkTest : public testing::TestWithParam<LinkRow> {};

TEST_P(LinkTest, IsTakenAsItStandsOrRefused) {
  const std::wstring& link = GetParam().link;
  if (GetParam().isTaken)
    EXPECT_EQ(link.substr(7), ManifestOfLink(link));
  else
    EXPECT_THROW(ManifestOfLink(link), LinkRefused);
}

std::wstring OfLength(std::size_t characters) {
  const std::wstring start = L"http://h/";
  return L"norvik:" + start + std::wstring(characters - start.size(), L'x');
}

INSTANTIATE_TEST_SUITE_P(
    , LinkTest,
    testing::Values(
        LinkRow{"Http", L"norvik:http://h/a.xml", true}, LinkRow{"Https", L"norvik:https://h/a.xml?b=c&d#e", true},
        LinkRow{"Capitals", L"NORVIK:HTTP://HOST/A", true}, LinkRow{"Escapes", L"norvik:http://h/%41%00%22/%2e%2e%2e", true},
        LinkRow{"LonePercent", L"norvik:http://h/100%", true}, LinkRow{"Dots", L"norvik:http://h/.a/..b/...//c.", true},
        LinkRow{"DotsInTheQuery", L"norvik:http://h/a?b=..&c=.", true},
        LinkRow{"FolderAboveInTheQuery", L"norvik:http://h/a?b=/../c", false},
        LinkRow{"FolderAbove", L"norvik:http://h/a/../b", false}, LinkRow{"SameFolder", L"norvik:http://h/a/./b", false},
        LinkRow{"FolderAboveAtTheEnd", L"norvik:http://h/a/..", false},
        LinkRow{"EscapedFolderAbove", L"norvik:http://h/a/%2e%2E/b", false},
        LinkRow{"HalfEscapedFolderAbove", L"norvik:http://h/a/.%2e?x", false},
        LinkRow{"EscapedSameFolder", L"norvik:http://h/a/%2e#x", false},
        LinkRow{"Marks", L"norvik:http://h/!$&'()*+,;=:@[]^`{|}~<>_-", true},
        LinkRow{"User", L"norvik:http://anna:secret@h/", true}, LinkRow{"Port", L"norvik:http://h:8080/", true},
        LinkRow{"TheLongest", OfLength(2000), true}, LinkRow{"TooLong", OfLength(2001), false},
        LinkRow{"Huge", OfLength(32000), false}, LinkRow{"Empty", L"", false}, LinkRow{"SchemeAlone", L"norvik:", false},
        LinkRow{"NoScheme", L"http://h/a.xml", false}, LinkRow{"AnotherScheme", L"norvik2:http://h/", false},
        LinkRow{"SecondScheme", L"norvik:norvik:http://h/", false}, LinkRow{"SlashesInFront", L"norvik://http://h/", false},
        LinkRow{"HostAlone", L"norvik://h/a.xml", false}, LinkRow{"NoHost", L"norvik:http://", false},
        LinkRow{"OneSlash", L"norvik:http:/h/", false}, LinkRow{"NoSlashes", L"norvik:http:h", false},
        LinkRow{"File", L"norvik:file:///C:/a.xml", false}, LinkRow{"Path", L"norvik:C:/a.xml", false},
        LinkRow{"UNC", L"norvik:\\\\server\\share\\a.xml", false},
        LinkRow{"UNCWithSlashes", L"norvik://server/share", false}, LinkRow{"BareName", L"norvik:a.xml", false},
        LinkRow{"Ftp", L"norvik:ftp://h/a.xml", false}, LinkRow{"JavaScript", L"norvik:javascript:alert(1)", false},
        LinkRow{"Option", L"--run", false}, LinkRow{"Quiet", L"/quiet", false},
        LinkRow{"OptionInside", L"norvik:--permit", false}, LinkRow{"BlankInFront", L" norvik:http://h/", false},
        LinkRow{"BlankBehindTheScheme", L"norvik: http://h/", false}, LinkRow{"Space", L"norvik:http://h/a b", false},
        LinkRow{"Tab", L"norvik:http://h/a\tb", false}, LinkRow{"LineFeed", L"norvik:http://h/a\nb", false},
        LinkRow{"Zero", std::wstring(L"norvik:http://h/a\0b", 18), false}, LinkRow{"Delete", L"norvik:http://h/\x7F", false},
        LinkRow{"Quote", L"norvik:http://h/\"", false}, LinkRow{"Backslash", L"norvik:http://h\\a", false},
        LinkRow{"Umlaut", L"norvik:http://h/\xE4", false}, LinkRow{"WideDigit", L"norvik:http://h/\xFF11", false},
        LinkRow{"HalfACharacter", L"norvik:http://h/\xD800", false}, LinkRow{"KelvinSign", L"norvi\x212A:http://h/", false}),
    [](const testing::TestParamInfo<LinkRow>& row) { return std::string(row.param.name); });

TEST(LinkRefusedTest, IsOneSentence) {
  for (const wchar_t* const link : {L"x", L"norvik:", L"norvik:file:x", L"norvik:http://h/ "}) {
    try {
      ManifestOfLink(link);
      ADD_FAILURE() << "is taken";
    } catch (const LinkRefused& refused) {
      const std::string sentence = refused.what();
      EXPECT_EQ('.', sentence.back());
      EXPECT_EQ(std::string::npos, sentence.find('\n'));
    }
  }
}

}  // namespace
