// norvik_bench SCENARIO ARGUMENT...: one round of a scenario (Scenarios.h). scripts/bench starts it, once for each round.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <string_view>

#include "Scenarios.h"

namespace {

struct Scenario {
  std::string_view name;
  std::size_t arguments;  // at least
  void (*measure)(const Arguments&);
};

constexpr Scenario kScenarios[] = {
    {"downloads", 4, MeasureDownloads}, {"copies", 3, MeasureLocalCopies}, {"controls", 2, MeasureControls},
    {"runs", 2, MeasureRuns},           {"chains", 1, MeasureChains},      {"memory", 2, MeasureMemory},
    {"handles", 1, MeasureHandles},     {"advice", 1, MeasureAdvice},
};

const Scenario* Find(std::string_view name, std::size_t arguments) {
  for (const Scenario& scenario : kScenarios) {
    if (scenario.name == name && arguments >= scenario.arguments)
      return &scenario;
  }
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments(argv + (argc > 1 ? 2 : 1), argv + argc);
  const Scenario* const scenario = argc > 1 ? Find(argv[1], arguments.size()) : nullptr;
  Require(scenario, "no such scenario, or arguments are missing");
  Require(SUCCEEDED(CoInitialize(nullptr)), "COM is not to be had");
  scenario->measure(arguments);
  CoUninitialize();
  // What the tests' helpers could not do they report to GoogleTest.
  return testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed() ? 1 : 0;
}
