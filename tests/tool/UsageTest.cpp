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
  const char* told;
};

class WrongUsageTest : public ToolTest, public testing::WithParamInterface<WrongRow> {};

TEST_P(WrongUsageTest, IsToldOnStandardErrorAlone) {
  const ProgramResult result = Run(GetParam().arguments);
  EXPECT_EQ(2u, result.code);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(0u, result.errors.find(std::string("norvik: ") + GetParam().told + "\n")) << result.errors;
  EXPECT_GE(2u, LinesOf(result.errors).size()) << result.errors;
}

INSTANTIATE_TEST_SUITE_P(
    , WrongUsageTest,
    testing::Values(
        WrongRow{"Nothing", {}, "A subcommand is required"},
        WrongRow{"AnUnknownCommand", {L"bogus"}, "A subcommand is required"},
        WrongRow{"AnUnknownOption", {L"check", L"--bogus"}, "The following argument was not expected: --bogus"},
        WrongRow{"AnEmptyCommand", {L""}, "A subcommand is required"},
        WrongRow{"PlanOfNothing", {L"plan"}, "URL is required"}, WrongRow{"RunOfNothing", {L"run"}, "URL is required"},
        WrongRow{"PlanOfTwo", {L"plan", L"a", L"b"}, "The following argument was not expected: b"},
        WrongRow{"ExplainWithoutAQuestion",
                 {L"explain"},
                 "explain needs a question: --manifest, --source, --extension or --folder."},
        WrongRow{"AQuestionWithoutText", {L"explain", L"--source"}, "--source: 1 required URL missing"},
        WrongRow{"AFolderOfNoKind",
                 {L"explain", L"--folder", L"Nowhere=x"},
                 "'Nowhere' is no kind of folder; 'Personal', 'Temp' and 'Path=C:\\Apps' are examples."},
        WrongRow{"AFolderWithoutAKind",
                 {L"explain", L"--folder", L"=x"},
                 "'' is no kind of folder; 'Personal', 'Temp' and 'Path=C:\\Apps' are examples."},
        WrongRow{
            "TwoCommands", {L"plan", L"a.xml", L"run", L"b.xml"}, "The following arguments were not expected: b.xml run"},
        WrongRow{"RunWithAPermissionFile",
                 {L"run", L"a.xml", L"--permit", L"b.xml"},
                 "The following arguments were not expected: b.xml --permit"},
        WrongRow{"BrowserWithoutACommand", {L"browser"}, "A subcommand is required"},
        WrongRow{"BrowserOfAnUnknownCommand", {L"browser", L"bogus"}, "A subcommand is required"},
        WrongRow{"BrowserOnWithAnArgument", {L"browser", L"on", L"a"}, "The following argument was not expected: a"},
        WrongRow{"AKitWithoutAnOrigin", {L"browser", L"kit", L"--out", L"kit"}, "--origin is required"},
        WrongRow{"AKitWithoutAFolder", {L"browser", L"kit", L"--origin", L"https://a"}, "--out is required"},
        WrongRow{"AKitForAnEmptyFolder",
                 {L"browser", L"kit", L"--origin", L"https://a", L"--out", L""},
                 "--out names no folder."},
        WrongRow{"AnOriginWithoutText",
                 {L"browser", L"kit", L"--out", L"kit", L"--origin"},
                 "--origin: 1 required ORIGIN missing"},
        WrongRow{
            "HalfACharacter", {L"check", L"a\xD800.xml"}, "An argument is not valid text: it has half of a character."}),
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
