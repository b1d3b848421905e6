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

// Why a link or a call is refused; empty when it is not.
template <class Action>
std::string RefusalBy(Action action) {
  try {
    action();
    return {};
  } catch (const LinkRefused& refused) {
    return refused.what();
  }
}

TEST(WrongLinkCallTest, IsRefused) {
  const auto refusal = [](const std::wstring& commandLine) { return RefusalBy([&] { ReadLinkCall(commandLine); }); };
  for (const std::wstring& commandLine :
       {std::wstring(), kProgram, kProgram + L" ", kProgram + L" \"\"", kProgram + L" /quiet \"\"",
        std::wstring(L"\"C:\\never closed"), std::wstring(L"norvikopen")})
    EXPECT_EQ("The program was called without a link.", refusal(commandLine));
  for (const wchar_t* const arguments : {L" a b", L" \"a\" b", L" a \"b\"", L" /quiet a b"})
    EXPECT_EQ("The program takes one link, and was called with more.", refusal(kProgram + arguments));
}

// One call's link, and whether a manifest's URL stands in it.
struct LinkRow {
  const char* name;
  std::wstring link;
  const char* refusal;
};

constexpr char kTaken[] = "";
constexpr char kNoLink[] = "The link does not begin with 'norvik:'.";
constexpr char kTooLong[] = "The URL in the link has more than 2,000 characters.";
constexpr char kCharacter[] =
    "The URL in the link has a character that no URL has: a space, a quote, a backslash, or one that is not ASCII.";
constexpr char kDots[] = "The URL in the link has '.' or '..' in the place of a folder's name.";
constexpr char kNotOnTheWeb[] =
    "A link can start a manifest on the web only: behind 'norvik:' stands a URL that begins with http:// or https://.";

class LinkTest : public testing::TestWithParam<LinkRow> {};

TEST_P(LinkTest, IsTakenAsItStandsOrRefused) {
  const std::wstring& link = GetParam().link;
  std::wstring taken;
  EXPECT_EQ(GetParam().refusal, RefusalBy([&] { taken = ManifestOfLink(link); }));
  EXPECT_EQ(*GetParam().refusal ? L"" : link.substr(7), taken);
}

std::wstring OfLength(std::size_t characters) {
  const std::wstring start = L"http://h/";
  return L"norvik:" + start + std::wstring(characters - start.size(), L'x');
}

INSTANTIATE_TEST_SUITE_P(
    , LinkTest,
    testing::Values(
        LinkRow{"Http", L"norvik:http://h/a.xml", kTaken}, LinkRow{"Https", L"norvik:https://h/a.xml?b=c&d#e", kTaken},
        LinkRow{"Capitals", L"NORVIK:HTTP://HOST/A", kTaken},
        LinkRow{"Escapes", L"norvik:http://h/%41%00%22/%2e%2e%2e", kTaken},
        LinkRow{"LonePercent", L"norvik:http://h/100%", kTaken}, LinkRow{"Dots", L"norvik:http://h/.a/..b/...//c.", kTaken},
        LinkRow{"DotsInTheQuery", L"norvik:http://h/a?b=..&c=.", kTaken},
        LinkRow{"FolderAboveInTheQuery", L"norvik:http://h/a?b=/../c", kDots},
        LinkRow{"FolderAbove", L"norvik:http://h/a/../b", kDots}, LinkRow{"SameFolder", L"norvik:http://h/a/./b", kDots},
        LinkRow{"FolderAboveAtTheEnd", L"norvik:http://h/a/..", kDots},
        LinkRow{"EscapedFolderAbove", L"norvik:http://h/a/%2e%2E/b", kDots},
        LinkRow{"HalfEscapedFolderAbove", L"norvik:http://h/a/.%2e?x", kDots},
        LinkRow{"EscapedSameFolder", L"norvik:http://h/a/%2e#x", kDots},
        LinkRow{"Marks", L"norvik:http://h/!$&'()*+,;=:@[]^`{|}~<>_-", kTaken},
        LinkRow{"User", L"norvik:http://anna:secret@h/", kTaken}, LinkRow{"Port", L"norvik:http://h:8080/", kTaken},
        LinkRow{"TheLongest", OfLength(2000), kTaken}, LinkRow{"TooLong", OfLength(2001), kTooLong},
        LinkRow{"Huge", OfLength(32000), kTooLong}, LinkRow{"Empty", L"", kNoLink},
        LinkRow{"SchemeAlone", L"norvik:", kNotOnTheWeb}, LinkRow{"NoScheme", L"http://h/a.xml", kNoLink},
        LinkRow{"AnotherScheme", L"norvik2:http://h/", kNoLink},
        LinkRow{"SecondScheme", L"norvik:norvik:http://h/", kNotOnTheWeb},
        LinkRow{"SlashesInFront", L"norvik://http://h/", kNotOnTheWeb},
        LinkRow{"HostAlone", L"norvik://h/a.xml", kNotOnTheWeb}, LinkRow{"NoHost", L"norvik:http://", kNotOnTheWeb},
        LinkRow{"OneSlash", L"norvik:http:/h/", kNotOnTheWeb}, LinkRow{"NoSlashes", L"norvik:http:h", kNotOnTheWeb},
        LinkRow{"File", L"norvik:file:///C:/a.xml", kNotOnTheWeb}, LinkRow{"Path", L"norvik:C:/a.xml", kNotOnTheWeb},
        LinkRow{"UNC", L"norvik:\\\\server\\share\\a.xml", kCharacter},
        LinkRow{"UNCWithSlashes", L"norvik://server/share", kNotOnTheWeb},
        LinkRow{"BareName", L"norvik:a.xml", kNotOnTheWeb}, LinkRow{"Ftp", L"norvik:ftp://h/a.xml", kNotOnTheWeb},
        LinkRow{"JavaScript", L"norvik:javascript:alert(1)", kNotOnTheWeb}, LinkRow{"Option", L"--run", kNoLink},
        LinkRow{"Quiet", L"/quiet", kNoLink}, LinkRow{"OptionInside", L"norvik:--permit", kNotOnTheWeb},
        LinkRow{"BlankInFront", L" norvik:http://h/", kNoLink},
        LinkRow{"BlankBehindTheScheme", L"norvik: http://h/", kCharacter},
        LinkRow{"Space", L"norvik:http://h/a b", kCharacter}, LinkRow{"Tab", L"norvik:http://h/a\tb", kCharacter},
        LinkRow{"LineFeed", L"norvik:http://h/a\nb", kCharacter},
        LinkRow{"Zero", std::wstring(L"norvik:http://h/a\0b", 18), kCharacter},
        LinkRow{"Delete", L"norvik:http://h/\x7F", kCharacter}, LinkRow{"Quote", L"norvik:http://h/\"", kCharacter},
        LinkRow{"Backslash", L"norvik:http://h\\a", kCharacter}, LinkRow{"Umlaut", L"norvik:http://h/\xE4", kCharacter},
        LinkRow{"WideDigit", L"norvik:http://h/\xFF11", kCharacter},
        LinkRow{"HalfACharacter", L"norvik:http://h/\xD800", kCharacter},
        LinkRow{"KelvinSign", L"norvi\x212A:http://h/", kNoLink}),
    [](const testing::TestParamInfo<LinkRow>& row) { return std::string(row.param.name); });

}  // namespace
