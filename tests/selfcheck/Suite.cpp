#include "selfcheck/Suite.h"

#include <algorithm>
#include <exception>
#include <set>

#include "advice/Words.h"
#include "selfcheck/Process.h"
#include "selfcheck/Results.h"

namespace {

constexpr int kStarts = 6;  // a program that does not come to its end is started so often, each time without one case more
constexpr unsigned kListSeconds = 60;
constexpr std::size_t kTailBytes = 8192;

std::string Hex(DWORD code) {
  char text[16];
  wsprintfA(text, "0x%08lX", code);
  return text;
}

std::string Tail(const std::string& text) {
  return text.size() <= kTailBytes ? text : "...\n" + text.substr(text.size() - kTailBytes);
}

class SuiteRun {
 public:
  SuiteRun(const Kit& unpacked, const SuiteSettings& given, SuiteResult& result)
      : kit(unpacked), settings(given), suite(result), program(kit.Program(result.width, result.name)) {}

  void Run() {
    if (!std::filesystem::exists(program)) {
      Fail("(the program)", program.filename().string() + " is not there.");
      return;
    }
    ReadRules();
    for (int start = 1; start <= kStarts; ++start) {
      if (RunOnce())
        return;
    }
    GiveUp("It did not come to its end in " + std::to_string(kStarts) + " starts.");
  }

  void Fail(const std::string& name, const std::string& output) {
    const auto known = wineCases.find(name);
    if (known == wineCases.end())
      suite.failed.push_back({name, output, std::string()});
    else
      suite.expected.push_back({name, output, known->second});
  }

 private:
  bool IsLeftOut(RuleKind kind) const {
    return (kind == RuleKind::NeedsRegistration && !settings.mayRegister) ||
           (kind == RuleKind::NeedsCertificates && !settings.hasCertificates);
  }

  void ReadRules() {
    for (const Rule& rule : kit.rules) {
      if (rule.suite == suite.name && (rule.kind == RuleKind::StatesWine || IsLeftOut(rule.kind)))
        Apply(rule);
    }
  }

  void Apply(const Rule& rule) {
    const std::vector<std::string> names = List(rule.cases);
    if (names.empty())
      Fail("(suites.json)", "No case is named " + rule.cases + ".");
    for (const std::string& name : names) {
      if (rule.kind == RuleKind::StatesWine)
        wineCases[name] = rule.reason;
      else
        suite.leftOut.push_back({name, rule.reason});
    }
    if (rule.kind != RuleKind::StatesWine)
      without += ":" + rule.cases;
  }

  std::vector<std::string> List(const std::string& cases) {
    const std::filesystem::path output = OutputPath(".list");
    RunToFile(program, {L"--gtest_list_tests", L"--gtest_filter=" + WideFromUtf8(cases)}, output, kListSeconds);
    const std::vector<std::string> names = ReadList(ReadText(output));
    std::filesystem::remove(output);
    return names;
  }

  // One start of the program. False when it did not come to its end and is to be started again, without the case that it
  // ended in.
  bool RunOnce() {
    const std::filesystem::path output = OutputPath(".txt"), resultsPath = OutputPath(".json");
    std::filesystem::remove(resultsPath);
    const Ending ending = RunToFile(
        program,
        {L"--gtest_color=no", L"--gtest_filter=*-" + WideFromUtf8(without.substr(without.empty() ? 0 : 1)),
         L"--gtest_output=json:" + resultsPath.wstring()},
        output, settings.limitSeconds);
    suite.seconds += ending.seconds;
    const std::optional<Results> results = ReadResults(resultsPath);
    std::filesystem::remove(resultsPath);
    const std::string text = ReadText(output);
    if (results) {
      Take(*results, ending, text);
      return true;
    }
    if (EndedInACase(ending, text))
      return false;
    GiveUp(HowItEnded(ending) + "\n" + Tail(text));
    return true;
  }

  void Take(const Results& results, const Ending& ending, const std::string& text) {
    suite.passed = static_cast<int>(results.passed.size());
    for (const auto& [name, output] : results.failed)
      Fail(name, output);
    for (const auto& [name, reason] : results.skipped)
      suite.leftOut.push_back({name, reason});
    if (results.passed.empty() && results.failed.empty() && suite.leftOut.empty())
      Fail("(the program)", "It has no case.");
    if (ending.isOverLimit || (ending.code != 0) != !results.failed.empty())
      Fail("(the end of the program)", HowItEnded(ending) + "\n" + Tail(text));
  }

  // False when the program ended elsewhere, or in a case that it was to leave out.
  bool EndedInACase(const Ending& ending, const std::string& text) {
    traces = ReadTraces(text);
    suite.passed = traces.passed;
    if (traces.lastCase.empty() || !endedIn.insert(traces.lastCase).second)
      return false;
    Fail(traces.lastCase, HowItEnded(ending) + "\n" + Tail(traces.lastCaseText));
    without += ":" + traces.lastCase;
    return true;
  }

  // Without results, the last start's output tells which cases passed and failed.
  void GiveUp(const std::string& reason) {
    for (const std::string& name : traces.failed)
      Fail(name, "What it told is in the program's output.");
    Fail("(the program)", reason);
  }

  std::string HowItEnded(const Ending& ending) const {
    if (ending.isOverLimit)
      return "It was ended because it was not done after " + std::to_string(settings.limitSeconds) + " seconds.";
    return "The program ended with code " + Hex(ending.code) + ".";
  }

  std::filesystem::path OutputPath(const char* extension) const {
    return settings.outputFolder / (suite.width + "-" + suite.name + extension);
  }

  const Kit& kit;
  const SuiteSettings& settings;
  SuiteResult& suite;
  const std::filesystem::path program;
  std::string without;  // the patterns of what is not run, each behind a colon
  std::set<std::string> endedIn;
  Traces traces;                                 // of the last start that left no results
  std::map<std::string, std::string> wineCases;  // with the reason
};

}  // namespace

SuiteResult RunSuite(const Kit& kit, const std::string& width, const std::string& name, const SuiteSettings& settings) {
  SuiteResult result;
  result.width = width;
  result.name = name;
  SuiteRun run(kit, settings, result);
  try {
    run.Run();
  } catch (const std::exception& error) {
    run.Fail("(the program)", Utf8FromAnsi(error.what()));
  }
  return result;
}
