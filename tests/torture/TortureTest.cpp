// Every call of the module that can fail does so once, in each of its ways, and then all calls from there on.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include "support/Holdings.h"
#include "torture/Judgement.h"
#include "torture/Workplace.h"

namespace {

// Of all calls, every sixteenth and the first of each kind fail, unless NORVIK_TORTURE is "all" (scripts/torture).
constexpr std::size_t kStride = 16;

bool AreAllTried() {
  const char* const wish = std::getenv("NORVIK_TORTURE");
  return wish && std::string(wish) == "all";
}

std::vector<std::size_t> ChooseCalls(const std::vector<FallibleCall>& calls, std::size_t offset) {
  std::vector<std::size_t> chosen;
  std::set<std::string> kinds;
  for (std::size_t number = 0; number < calls.size(); ++number) {
    const bool isNew = kinds.insert(std::string(calls[number].function) + "/" + calls[number].object).second;
    if (isNew || number % kStride == offset % kStride || AreAllTried())
      chosen.push_back(number);
  }
  return chosen;
}

// What the system's own caches may come and go by.
constexpr SIZE_T kToleratedBytes = 64 * 1024;
constexpr std::uintptr_t kToleratedHandles = 16;

class TortureTest : public testing::TestWithParam<std::size_t> {
 protected:
  const Scenario& Played() const { return AllScenarios()[GetParam()]; }

  Effects UseUndisturbed() {
    work.Prepare();
    work.counter.LetAll();
    return work.Use();
  }

  void Fail(std::size_t number, int way, bool andAllAfter) {
    work.Prepare();
    work.counter.Fail(number, way, andAllAfter);
    const Effects effects = work.Use();
    failures += work.counter.Failures();
    ++trials;
    const Trial trial = {&Played(), work.counter.Calls().at(number), andAllAfter, &work.counter, work.Log(), usual, effects};
    const std::string where =
        std::string(trial.call.function) + " (" + trial.call.object + "), call " + std::to_string(number) + ", way " +
        std::to_string(way) + (andAllAfter ? ", and all after it" : "");
    EXPECT_EQ("", Judge(trial)) << where << ": " << Describe(effects);
    EXPECT_TRUE(work.CanUnload()) << where;
    work.counter.ForgetHeld();
    EXPECT_EQ(Describe(usual), Describe(UseUndisturbed())) << "the use behind " << where;
    EXPECT_EQ("", work.counter.Held()) << "the use behind " << where;
  }

  Workplace work{Played()};
  Effects usual;
  int failures = 0;
  int trials = 0;
};

TEST_P(TortureTest, EveryCallFails) {
  UseUndisturbed();  // what is kept for the life of the process is there from now on
  work.counter.ForgetHeld();
  usual = UseUndisturbed();
  const std::vector<FallibleCall> calls = work.counter.Calls();
  ASSERT_EQ(Describe(work.Expected()), Describe(usual));
  ASSERT_EQ("", work.counter.Held());
  ASSERT_GT(calls.size(), 100u);

  const std::uintptr_t handle = LowestFreeHandle();
  const SIZE_T bytes = HeapBytesInUse();
  for (const std::size_t number : ChooseCalls(calls, GetParam())) {
    for (int way = 0; way < calls[number].errors; ++way)
      Fail(number, way, false);
    Fail(number, 0, true);
  }
  EXPECT_LE(LowestFreeHandle(), handle + kToleratedHandles);
  EXPECT_LE(HeapBytesInUse(), bytes + kToleratedBytes);
  std::printf("%s: %d calls failed in %d uses\n", Played().name, failures, trials);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, TortureTest, testing::Range(std::size_t{0}, AllScenarios().size()));

}  // namespace
