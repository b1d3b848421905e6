#include "advice/TimeReading.h"

#include <gtest/gtest.h>

namespace {

using Verdict = TimeReading::Verdict;

struct TimeCase {
  const char* text;
  Verdict verdict;
  const char* taken;
  const char* meant;
};

class TimeReadingTest : public testing::TestWithParam<TimeCase> {};

TEST_P(TimeReadingTest, TellsWhatTheModuleTakes) {
  const TimeReading reading = ReadTime(GetParam().text);
  EXPECT_EQ(GetParam().verdict, reading.verdict) << GetParam().text;
  EXPECT_EQ(GetParam().taken, reading.taken) << GetParam().text;
  EXPECT_EQ(GetParam().meant, reading.meant) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    AsTheySay, TimeReadingTest,
    testing::Values(
        TimeCase{"2026-06-25", Verdict::AsItSays, "2026-06-25T00:00:00+00:00", "2026-06-25T00:00:00+00:00"},
        TimeCase{"20260625", Verdict::AsItSays, "2026-06-25T00:00:00+00:00", "2026-06-25T00:00:00+00:00"},
        TimeCase{"2026-06-25T15:45:00Z", Verdict::AsItSays, "2026-06-25T15:45:00+00:00", "2026-06-25T15:45:00+00:00"},
        TimeCase{"20260625T154500Z", Verdict::AsItSays, "2026-06-25T15:45:00+00:00", "2026-06-25T15:45:00+00:00"},
        TimeCase{"2026-06-25T15:45:00.75Z", Verdict::AsItSays, "2026-06-25T15:45:00+00:00", "2026-06-25T15:45:00+00:00"},
        TimeCase{"2026-06-25T15:45:00-00:00", Verdict::AsItSays, "2026-06-25T15:45:00+00:00", "2026-06-25T15:45:00+00:00"}));

INSTANTIATE_TEST_SUITE_P(
    Refused, TimeReadingTest,
    testing::Values(TimeCase{"", Verdict::Refused, "", ""}, TimeCase{"yesterday", Verdict::Refused, "", ""},
                    TimeCase{"2026-13-25", Verdict::Refused, "", ""}, TimeCase{"2026-02-30", Verdict::Refused, "", ""},
                    TimeCase{"2026-06-25T15:45:00", Verdict::Refused, "2026-06-25T00:00:00+00:00", ""},
                    TimeCase{"2026-06-25T15:45Z", Verdict::Refused, "2026-06-25T00:00:00+00:00", ""},
                    TimeCase{"2026-06-25T15:45:00-8", Verdict::Refused, "2026-06-25T15:45:00+00:00", ""},
                    TimeCase{"2026-06-25T25:45:00Z", Verdict::Refused, "", ""},
                    TimeCase{"\xE4\xB8\x80", Verdict::Refused, "", ""}));

INSTANTIATE_TEST_SUITE_P(Shifted, TimeReadingTest,
                         testing::Values(TimeCase{"2026-06-25 15:45:00", Verdict::Shifted, "2026-06-25T00:00:00+00:00", ""},
                                         TimeCase{"2026-06-25-08:00", Verdict::Shifted, "2026-06-25T00:00:00+00:00", ""},
                                         TimeCase{"2026-6-025", Verdict::Shifted, "2026-06-25T00:00:00+00:00", ""}));

// Of zones other than UTC some come out right and some do not; which ones depends on the moment.
TEST(TimeReadingTest, ATimeWithAZoneIsShiftedExactlyWhenItIsNotTheMomentThatItSays) {
  int shifted = 0;
  for (int hour = 0; hour < 24; ++hour) {
    for (const char* const zone : {"-08:00", "+01:00", "+0530"}) {
      char text[64];
      std::snprintf(text, sizeof(text), "2026-06-25T%02d:45:00%s", hour, zone);
      const TimeReading reading = ReadTime(text);
      ASSERT_NE(Verdict::Refused, reading.verdict) << text;
      EXPECT_EQ(reading.verdict == Verdict::Shifted, reading.taken != reading.meant) << text;
      shifted += reading.verdict == Verdict::Shifted ? 1 : 0;
    }
  }
  EXPECT_GT(shifted, 0);
  EXPECT_LT(shifted, 72);
  EXPECT_EQ("2026-06-25T23:45:00+00:00", ReadTime("2026-06-25T15:45:00-08:00").meant);
  EXPECT_EQ("2026-06-25T14:45:00+00:00", ReadTime("2026-06-25T15:45:00+01:00").meant);
  EXPECT_EQ("2026-06-25T10:15:00+00:00", ReadTime("20260625T154500+0530").meant);
}

}  // namespace
