#include "support/Turns.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

constexpr int kSharedCases = 32;

class SharedCasesTest : public testing::TestWithParam<int> {};

const bool kIsShared = ShareCases("SharedCasesTest", "IsRunWhereTheFilterDoesNotLeaveItOut");

std::string NameOfCase(int number) {
  return "Numbers/SharedCasesTest.IsRunWhereTheFilterDoesNotLeaveItOut/" + std::to_string(number);
}

TEST_P(SharedCasesTest, IsRunWhereTheFilterDoesNotLeaveItOut) {
  EXPECT_EQ(std::string::npos, (WithoutCasesOfTheOtherWidth("*") + ":").find(NameOfCase(GetParam()) + ":"));
}

INSTANTIATE_TEST_SUITE_P(Numbers, SharedCasesTest, testing::Range(0, kSharedCases));

// With what scripts/test says of the widths put aside, and back at the end.
class TurnsTest : public testing::Test {
 protected:
  TurnsTest() : wasShared(std::getenv("NORVIK_TURNS") != nullptr) {}
  ~TurnsTest() override { Share(wasShared); }

  static void Share(bool isShared) { _putenv(isShared ? "NORVIK_TURNS=1" : "NORVIK_TURNS="); }

  const bool wasShared;
};

TEST_F(TurnsTest, AWidthThatIsTestedAloneDoesEverything) {
  Share(false);
  EXPECT_EQ(10, WholeInOneWidth(10, 1, Half::AHugePlan));
  EXPECT_EQ(10, WholeInOneWidth(10, 1, Half::AllElse));
  EXPECT_EQ("a:b-c", WithoutCasesOfTheOtherWidth("a:b-c"));
}

TEST_F(TurnsTest, AWidthHasOneHalf) {
  Share(true);
  EXPECT_EQ(11, WholeInOneWidth(10, 1, Half::AHugePlan) + WholeInOneWidth(10, 1, Half::AllElse));
}

TEST_F(TurnsTest, TheCasesOfTheOtherWidthAreLeftOut) {
  Share(true);
  const std::string filter = WithoutCasesOfTheOtherWidth("*") + ":";
  EXPECT_EQ(0u, filter.find("*-"));
  EXPECT_EQ(0u, WithoutCasesOfTheOtherWidth("*-c").find("*-c:"));
  int leftOut = 0;
  for (int number = 0; number < kSharedCases; ++number) {
    if (filter.find(NameOfCase(number) + ":") != std::string::npos)
      ++leftOut;
  }
  EXPECT_GT(leftOut, 0);
  EXPECT_LT(leftOut, kSharedCases);
  EXPECT_EQ(std::string::npos, filter.find("TurnsTest"));
}

}  // namespace
