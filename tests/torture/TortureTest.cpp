// Every call of the module that can fail does so once, in each of its ways, and then all calls from there on.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>

#include "support/Holdings.h"
#include "torture/Judgement.h"
#include "torture/Sample.h"
#include "torture/Workplace.h"

namespace {

// Of all calls, one in so many fails, besides those that are chosen for their kind.
constexpr std::uint32_t kStride = 64;

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

  std::string Where(std::size_t number, int way, bool andAllAfter) const {
    const FallibleCall& call = usual.calls[number];
    const Situation& situation = usual.situations[number];
    return std::string(Played().name) + ": " + call.function + " (" + call.object + ") in the step '" + situation.step +
           "', '" + situation.subject + "', call " + std::to_string(number) + " of " + std::to_string(usual.calls.size()) +
           ", way " + std::to_string(way) + (andAllAfter ? ", and all after it" : "") + ", seed " + std::to_string(Seed());
  }

  void Fail(std::size_t number, int way, bool andAllAfter) {
    const std::string where = Where(number, way, andAllAfter);
    work.Prepare();
    work.counter.Fail(number, way, andAllAfter);
    const Effects effects = work.Use();
    failures += work.counter.Failures();
    ++trials;
    const Trial trial = {&Played(), &usual, number, andAllAfter, &work.counter, work.Log(), effects};
    EXPECT_EQ("", Judge(trial)) << where << ": " << Describe(effects);
    EXPECT_TRUE(work.CanUnload()) << where;
    work.counter.ForgetHeld();
    EXPECT_EQ("", Difference(usual.effects, UseUndisturbed())) << "the use behind " << where;
    EXPECT_EQ("", work.counter.Held()) << "the use behind " << where;
  }

  Workplace work{Played()};
  Undisturbed usual;
  int failures = 0;
  int trials = 0;
};

TEST_P(TortureTest, EveryCallFails) {
  UseUndisturbed();  // what is kept for the life of the process is there from now on
  work.counter.ForgetHeld();
  usual.effects = UseUndisturbed();
  usual.log = work.Log();
  usual.calls = work.counter.Calls();
  usual.situations = SituationsOf(usual.calls);
  ASSERT_EQ("", Difference(work.Expected(), usual.effects));
  ASSERT_EQ("", work.counter.Held());
  ASSERT_GT(usual.calls.size(), 100u);

  const std::uintptr_t handle = LowestFreeHandle();
  const SIZE_T bytes = HeapBytesInUse();
  for (const std::size_t number : ChooseCalls(usual.calls, GetParam(), kStride)) {
    for (int way = 0; way < usual.calls[number].errors; ++way)
      Fail(number, way, false);
    Fail(number, 0, true);
  }
  EXPECT_LE(LowestFreeHandle(), handle + kToleratedHandles);
  EXPECT_LE(HeapBytesInUse(), bytes + kToleratedBytes);
  std::printf(
      "%s: %d calls failed with seed %lu in %d uses\n", Played().name, failures, static_cast<unsigned long>(Seed()), trials);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, TortureTest, testing::Range(std::size_t{0}, AllScenarios().size()));

}  // namespace
