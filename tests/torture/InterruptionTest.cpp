// The process ends while a manifest runs, at a call that changes something outside of it: the next run of the same manifest
// has to come to its usual end. Calls between two of these leave the same state behind.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "torture/Sample.h"
#include "torture/Workplace.h"

namespace {

// Of the calls of a scenario, one in so many is the last one of a process, besides those that are chosen for their kind.
constexpr std::uint32_t kStride = 6;

bool ChangesTheSystem(const FallibleCall& call) {
  static const std::vector<std::string> functions = {
      "CreateFileA", "WriteFile",        "CloseHandle", "SetFileTime",          "SetFileAttributesA",
      "MoveFileA",   "CreateDirectoryA", "DeleteFileA", "CreateUrlCacheEntryA", "CommitUrlCacheEntryA",
  };
  return call.object != "log" && std::find(functions.begin(), functions.end(), call.function) != functions.end();
}

// The exit code of a process that goes through the scenario until it makes that call.
DWORD RunInterrupted(const Workplace& work, std::size_t number) {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  std::string folder = program;
  folder.erase(folder.find_last_of('\\'));
  const Places& places = work.Known();
  std::string command = "\"" + folder + "\\interrupted_host.exe\" \"" + work.ModulePath() + "\" \"" + work.ManifestUrl() +
                        "\" \"" + places.destinationFolder + "\" \"" + places.sourceFolder + "\" " + std::to_string(number);
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
    ADD_FAILURE() << "cannot run " << command << ", error " << GetLastError();
    return 2;
  }
  DWORD code = 2;
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.hProcess, 60000));
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

class InterruptionTest : public testing::TestWithParam<std::size_t> {};

TEST_P(InterruptionTest, TheNextRunComesToItsUsualEnd) {
  const Scenario& played = AllScenarios()[GetParam()];
  Workplace work(played);
  work.counter.LetAll();
  work.Prepare();
  work.Use();  // the log's folder is there from now on: a run that has to make it makes more calls
  work.Prepare();
  work.counter.LetAll();
  const Effects usual = work.Use();
  ASSERT_EQ("", Difference(work.Expected(), usual));
  const std::vector<FallibleCall> calls = work.counter.Calls();

  int interruptions = 0;
  for (const std::size_t number : ChooseCalls(calls, GetParam(), kStride)) {
    if (!ChangesTheSystem(calls[number]) && number + 1 != calls.size())
      continue;
    const std::string where =
        std::string(calls[number].function) + " (" + calls[number].object + "), call " + std::to_string(number) + " of " +
        std::to_string(calls.size()) + ", seed " + std::to_string(Seed());
    work.Prepare();
    ASSERT_EQ(0u, RunInterrupted(work, number)) << where;
    ++interruptions;
    work.counter.LetAll();
    const Effects effects = work.Use();
    EXPECT_EQ(usual.results, effects.results) << where;
    // What a killed rename left behind may be there as well, but every file of the usual end is there, and whole.
    for (const auto& [name, content] : usual.left) {
      const auto found = effects.left.find(name);
      ASSERT_NE(effects.left.end(), found) << where << ": no " << name;
      EXPECT_EQ(content, found->second) << where << ": " << name;
    }
  }
  std::printf("%s: interrupted %d times\n", played.name, interruptions);
}

// Those that a script starts, and that come to an end of their own.
std::vector<std::size_t> InterruptedScenarios() {
  std::vector<std::size_t> numbers;
  for (std::size_t number = 0; number < AllScenarios().size(); ++number) {
    const Scenario& scenario = AllScenarios()[number];
    if (scenario.use == Use::Execute && SUCCEEDED(scenario.results.back()))
      numbers.push_back(number);
  }
  return numbers;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, InterruptionTest, testing::ValuesIn(InterruptedScenarios()));

}  // namespace
