// Command lines that are wrong, and the help.

#include <sstream>

#include "advice/Words.h"
#include "support/RegistryAside.h"
#include "tool/ToolFixture.h"

namespace {

using UsageTest = ToolTest;

struct WrongRow {
  const char* name;
  std::vector<std::wstring> arguments;
};

class WrongUsageTest : public ToolTest, public testing::WithParamInterface<WrongRow> {};

TEST_P(WrongUsageTest, IsToldOnStandardErrorAlone) {
  const ProgramResult result = Run(GetParam().arguments);
  EXPECT_EQ(2u, result.code);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(0u, result.errors.find("norvik: ")) << result.errors;
  EXPECT_GE(2u, LinesOf(result.errors).size()) << result.errors;
}

INSTANTIATE_TEST_SUITE_P(
    , WrongUsageTest,
    testing::Values(
        WrongRow{"Nothing", {}}, WrongRow{"AnUnknownCommand", {L"bogus"}},
        WrongRow{"AnUnknownOption", {L"check", L"--bogus"}}, WrongRow{"AnEmptyCommand", {L""}},
        WrongRow{"PlanOfNothing", {L"plan"}}, WrongRow{"RunOfNothing", {L"run"}},
        WrongRow{"PlanOfTwo", {L"plan", L"a", L"b"}}, WrongRow{"ExplainWithoutAQuestion", {L"explain"}},
        WrongRow{"AQuestionWithoutText", {L"explain", L"--source"}},
        WrongRow{"AFolderOfNoKind", {L"explain", L"--folder", L"Nowhere=x"}},
        WrongRow{"AFolderWithoutAKind", {L"explain", L"--folder", L"=x"}},
        WrongRow{"TwoCommands", {L"plan", L"a.xml", L"run", L"b.xml"}},
        WrongRow{"RunWithAPermissionFile", {L"run", L"a.xml", L"--permit", L"b.xml"}},
        WrongRow{"BrowserWithoutACommand", {L"browser"}}, WrongRow{"BrowserOfAnUnknownCommand", {L"browser", L"bogus"}},
        WrongRow{"BrowserOnWithAnArgument", {L"browser", L"on", L"a"}},
        WrongRow{"AKitWithoutAnOrigin", {L"browser", L"kit", L"--out", L"kit"}},
        WrongRow{"AKitWithoutAFolder", {L"browser", L"kit", L"--origin", L"https://a"}},
        WrongRow{"AKitForAnEmptyFolder", {L"browser", L"kit", L"--origin", L"https://a", L"--out", L""}},
        WrongRow{"AnOriginWithoutText", {L"browser", L"kit", L"--out", L"kit", L"--origin"}},
        WrongRow{"HalfACharacter", {L"check", L"a\xD800.xml"}}),
    [](const testing::TestParamInfo<WrongRow>& row) { return std::string(row.param.name); });

struct UnansweredRow {
  const char* name;
  std::vector<std::wstring> arguments;
};

class UnansweredTest : public ToolTest, public testing::WithParamInterface<UnansweredRow> {};

TEST_P(UnansweredTest, IsOneSentenceOnStandardError) {
  for (int json = 0; json < 2; ++json) {
    std::vector<std::wstring> arguments = GetParam().arguments;
    if (json)
      arguments.emplace_back(L"--json");
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(3u, result.code) << result.output;
    EXPECT_EQ("", result.output);
    EXPECT_EQ(0u, result.errors.find("norvik: ")) << result.errors;
    EXPECT_EQ(1u, LinesOf(result.errors).size()) << result.errors;
  }
}

INSTANTIATE_TEST_SUITE_P(
    , UnansweredTest,
    testing::Values(
        UnansweredRow{"CheckOfAMissingFile", {L"check", L"none.xml"}}, UnansweredRow{"CheckOfAFolder", {L"check", L"."}},
        UnansweredRow{"CheckOfADevice", {L"check", L"nul"}}, UnansweredRow{"CheckOfAnEmptyName", {L"check", L""}},
        UnansweredRow{"CheckOfNobodysServer", {L"check", L"http://127.0.0.1:1/m.xml"}},
        UnansweredRow{"PlanOfAMissingFile", {L"plan", L"none.xml"}}, UnansweredRow{"PlanOfAnEmptyName", {L"plan", L""}},
        UnansweredRow{"AMissingPermissionFile", {L"plan", L"manifest.xml", L"--permit", L"none.xml"}},
        UnansweredRow{"AnInvalidPermissionFile", {L"explain", L"--permit", L"manifest.xml", L"--extension", L"a"}},
        UnansweredRow{"ATooLongFolder", {L"explain", L"--folder", L"Temp=" + std::wstring(300, L'x')}}),
    [](const testing::TestParamInfo<UnansweredRow>& row) { return std::string(row.param.name); });

// The arguments of an example, of which only texts in quotes have blanks.
std::vector<std::wstring> ArgumentsOf(const std::string& example) {
  std::vector<std::wstring> arguments;
  std::istringstream words(example);
  for (std::string word; words >> word;)
    arguments.push_back(WideFromUtf8(word));
  return arguments;
}

struct HelpExample {
  std::string command;
  unsigned long code;  // of its example
};

TEST_F(UsageTest, TheExampleInEachHelpRuns) {
  const LinkEntriesAside aside = {};
  WriteWholeFile(folder.File("norvikopen.exe"), "");
  const HelpExample examples[] = {
      {"check", 0},   {"explain", 0},        {"plan", 0},       {"run", 0},         {"doctor", 1},
      {"browser", 1}, {"browser status", 1}, {"browser on", 0}, {"browser off", 0}, {"browser kit", 0}};
  for (const auto& [command, code] : examples) {
    const ProgramResult help = Run(ArgumentsOf(command + " --help"));
    EXPECT_EQ(0u, help.code) << command;
    EXPECT_EQ("", help.errors);
    const std::size_t start = help.output.find("Example:\n  norvik ");
    ASSERT_NE(std::string::npos, start) << help.output;
    const std::string line = help.output.substr(start + 18, help.output.find_first_of("\r\n", start + 18) - start - 18);
    EXPECT_EQ(0u, line.find(command)) << line;
    const ProgramResult result = Run(ArgumentsOf(line));
    EXPECT_EQ(code, result.code) << line << "\n" << result.output << result.errors;
    EXPECT_EQ("", result.errors);
  }
}

TEST_F(UsageTest, TheHelpNamesEveryCommand) {
  const ProgramResult help = Run({L"--help"});
  EXPECT_EQ(0u, help.code);
  for (const char* const command : {"check", "explain", "plan", "run", "doctor", "browser"})
    EXPECT_NE(std::string::npos, help.output.find(std::string("\n  ") + command + " ")) << help.output;
}

TEST_F(UsageTest, TheVersionIsTheModules) {
  const ProgramResult version = Run({L"--version"});
  EXPECT_EQ(0u, version.code);
  EXPECT_EQ(std::vector<std::string>{"norvik 1.0.0"}, LinesOf(version.output));
}

}  // namespace
