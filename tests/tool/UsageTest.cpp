// Command lines that are wrong, and the help.

#include <sstream>

#include "advice/Words.h"
#include "support/PermitFile.h"
#include "support/RegistryAside.h"
#include "tool/FakeStreams.h"
#include "tool/Tool.h"
#include "tool/ToolFixture.h"

namespace {

using UsageTest = ToolTest;

struct WrongRow {
  const char* name;
  std::vector<std::wstring> arguments;
  const char* told;
  bool isSyntax = true;  // who types what the program does not know is shown the way to its help
};

class WrongUsageTest : public ToolTest, public testing::WithParamInterface<WrongRow> {};

TEST_P(WrongUsageTest, IsToldOnStandardErrorAlone) {
  const ProgramResult result = Run(GetParam().arguments);
  EXPECT_EQ(2u, result.code);
  EXPECT_EQ("", result.output);
  std::vector<std::string> told = {std::string("norvik: ") + GetParam().told};
  if (GetParam().isSyntax)
    told.emplace_back("Run 'norvik --help' for the commands and their options.");
  EXPECT_EQ(told, LinesOf(result.errors));
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
                 "explain needs a question: --manifest, --source, --extension or --folder.",
                 false},
        WrongRow{"AQuestionWithoutText", {L"explain", L"--source"}, "--source: 1 required URL missing"},
        WrongRow{"AFolderOfNoKind",
                 {L"explain", L"--folder", L"Nowhere=x"},
                 "'Nowhere' is no kind of folder; 'Personal', 'Temp' and 'Path=C:\\Apps' are examples.",
                 false},
        WrongRow{"AFolderWithoutAKind",
                 {L"explain", L"--folder", L"=x"},
                 "'' is no kind of folder; 'Personal', 'Temp' and 'Path=C:\\Apps' are examples.",
                 false},
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
                 "--out names no folder.",
                 false},
        WrongRow{"AnOriginWithoutText",
                 {L"browser", L"kit", L"--out", L"kit", L"--origin"},
                 "--origin: 1 required ORIGIN missing"},
        WrongRow{"HalfACharacter",
                 {L"check", L"a\xD800.xml"},
                 "An argument is not valid text: it has half of a character.",
                 false}),
    [](const testing::TestParamInfo<WrongRow>& row) { return std::string(row.param.name); });

struct UnansweredRow {
  const char* name;
  std::vector<std::wstring> arguments;
  std::string part;  // of the sentence
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
    EXPECT_NE(std::string::npos, result.errors.find(GetParam().part)) << result.errors;
  }
}

INSTANTIATE_TEST_SUITE_P(
    , UnansweredTest,
    testing::Values(
        UnansweredRow{"CheckOfAMissingFile", {L"check", L"none.xml"}, "none.xml' cannot be read: "},
        UnansweredRow{"CheckOfAFolder", {L"check", L"."}, "' cannot be read: "},
        UnansweredRow{"CheckOfADevice", {L"check", L"nul"}, "nul' cannot be read: "},
        UnansweredRow{"CheckOfAnEmptyName", {L"check", L""}, "norvik: '' cannot be read: "},
        UnansweredRow{"CheckOfNobodysServer",
                      {L"check", L"http://127.0.0.1:1/m.xml"},
                      "'http://127.0.0.1:1/m.xml' cannot be fetched: "},
        UnansweredRow{"PlanOfAMissingFile", {L"plan", L"none.xml"}, "The manifest could not be read: "},
        UnansweredRow{"PlanOfAnEmptyName", {L"plan", L""}, "An empty name is no place."},
        UnansweredRow{
            "AMissingPermissionFile", {L"plan", L"manifest.xml", L"--permit", L"none.xml"}, "none.xml' cannot be read: "},
        UnansweredRow{"AnInvalidPermissionFile",
                      {L"explain", L"--permit", L"manifest.xml", L"--extension", L"a"},
                      "norvik: The permission file cannot be used: "},
        UnansweredRow{"AnInvalidPermissionFileOfAPlan",
                      {L"plan", L"manifest.xml", L"--permit", L"manifest.xml"},
                      "norvik: The permission file cannot be used: "},
        UnansweredRow{"ATooLongFolder",
                      {L"explain", L"--folder", L"Temp=" + std::wstring(300, L'x')},
                      "norvik: 'Temp=" + std::string(300, 'x') + "' is longer than the module can use."}),
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

// Every run of blanks is one: how wide the columns are is the library's affair.
std::string WithSingleBlanks(const std::string& text) {
  std::istringstream words(text);
  std::string joined;
  for (std::string word; words >> word;)
    joined += (joined.empty() ? "" : " ") + word;
  return joined;
}

struct HelpRow {
  const char* command;
  std::vector<std::string> lines;
};

class HelpTest : public FakeStreamsTest {
 protected:
  // Within this program: a start for each command would take its time.
  std::string HelpOf(const std::string& command) {
    const PermitFile keepsTheModulesPath;
    output.isConsole = error.isConsole = false;
    output.bytes.clear();
    Do([&] { EXPECT_EQ(0, RunTool(ArgumentsOf(command + " --help"))); });
    EXPECT_EQ("", error.bytes);
    return output.bytes;
  }
};

TEST_F(HelpTest, OfEachCommandTellsWhatItTakes) {
  const std::string json = " --json One JSON document on standard output ";
  const std::string permit = " --permit FILE A permission file other than permit.xml beside the program ";
  const std::string manifest = " URL TEXT REQUIRED The manifest's URL or file ";
  const HelpRow rows[] = {
      {"",
       {"Shows what the Norvik module does with a manifest, and why. Usage: norvik [OPTIONS] SUBCOMMAND ",
        " --version Display program version information and exit ",
        " check Tells whether permission files and manifests are valid and sound "
        "explain Tells whether something is permitted, and by which entry "
        "plan Tells what a run would do, without doing it "
        "run Runs a manifest as a page would "
        "doctor Tells whether this machine is ready "
        "browser Whether links in browsers start manifests"}},
      {"check",
       {"Tells whether permission files and manifests are valid and sound Usage: norvik check [OPTIONS] [FILE...] ",
        " FILE FILE|URL ... Permission files and manifests; else permit.xml beside the program ", json, permit}},
      {"explain",
       {"Tells whether something is permitted, and by which entry Usage: norvik explain [OPTIONS] ", json, permit,
        " --manifest URL A manifest's URL or file ", " --source URL A command's source ",
        " --extension EXT A file's extension, without a dot ",
        " --folder KIND[=TEXT] A destination, as its element's name and text "}},
      {"plan", {"Tells what a run would do, without doing it Usage: norvik plan [OPTIONS] URL ", manifest, json, permit}},
      {"run", {"Runs a manifest as a page would Usage: norvik run [OPTIONS] URL ", manifest, json}},
      {"doctor",
       {"Tells whether this machine is ready Usage: norvik doctor [OPTIONS] ", json,
        " --url URL A URL whose server is asked once "}},
      {"browser",
       {"Whether links in browsers start manifests Usage: norvik browser [OPTIONS] SUBCOMMAND ",
        " on Lets links start manifests, for all users off Lets links start nothing status Tells which it is "
        "kit Writes browser policies: links of these sites start without a question "}},
      {"browser on", {"Lets links start manifests, for all users Usage: norvik browser on [OPTIONS] ", json}},
      {"browser off", {"Lets links start nothing Usage: norvik browser off [OPTIONS] ", json}},
      {"browser status", {"Tells which it is Usage: norvik browser status [OPTIONS] ", json}},
      {"browser kit",
       {"Writes browser policies: links of these sites start without a question Usage: norvik browser kit [OPTIONS] ", json,
        " --origin ORIGIN REQUIRED A site, as in https://portal.example.com ",
        " --out FOLDER REQUIRED The folder, which is made if need be ", " --replace Replaces files that are there "}}};
  for (const HelpRow& row : rows) {
    const std::string text = WithSingleBlanks(HelpOf(row.command));
    EXPECT_EQ(0u, text.find(row.lines[0])) << text;
    for (const std::string& line : row.lines)
      EXPECT_NE(std::string::npos, text.find(line)) << "'" << line << "' is not in: " << text;
  }
}

TEST_F(UsageTest, TheVersionIsTheModules) {
  const ProgramResult version = Run({L"--version"});
  EXPECT_EQ(0u, version.code);
  EXPECT_EQ(std::vector<std::string>{"norvik 1.0.0"}, LinesOf(version.output));
}

}  // namespace
