// The zone arithmetic, against a calculation of its own: whole numbers, days counted year by year, and the 2^32 units that
// the two halves lose or gain where a carry or a borrow would have been due.

#include <gtest/gtest.h>

#include <cstdint>

#include "support/ImportPatch.h"
#include "xml/LogExpectations.h"
#include "xml/XMLFileTime.h"

namespace {

constexpr std::int64_t kUnitsPerSecond = 10000000;
constexpr std::int64_t kUnitsPerMillisecond = 10000;
constexpr std::int64_t kHalf = std::int64_t{1} << 32;

bool IsLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysOfMonth(int year, int month) {
  if (month == 2)
    return IsLeapYear(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

struct Local {
  int year, month, day, hour, minute, second;
};

std::int64_t UnitsOf(const Local& local) {
  std::int64_t days = local.day - 1;
  for (int year = 1601; year < local.year; ++year)
    days += IsLeapYear(year) ? 366 : 365;
  for (int month = 1; month < local.month; ++month)
    days += DaysOfMonth(local.year, month);
  return (((days * 24 + local.hour) * 60 + local.minute) * 60 + local.second) * kUnitsPerSecond;
}

// How far the result is from the exact one.
std::int64_t Fault(std::int64_t local, bool east, std::int64_t offset) {
  const std::int64_t localLow = local % kHalf;
  const std::int64_t offsetLow = offset % kHalf;
  if (east)
    return localLow < offsetLow ? kHalf : 0;
  return localLow + offsetLow >= kHalf ? -kHalf : 0;
}

std::int64_t Expected(const Local& local, bool east, std::int64_t offset) {
  const std::int64_t units = UnitsOf(local);
  const std::int64_t result = (east ? units - offset : units + offset) + Fault(units, east, offset);
  return result - result % kUnitsPerMillisecond;  // a broken-down time has no more
}

std::string TextOf(const Local& l, bool east, int hours, int minutes, bool compact) {
  char text[64];
  snprintf(text, sizeof(text), compact ? "%04d%02d%02dT%02d%02d%02d%c%02d%02d" : "%04d-%02d-%02dT%02d:%02d:%02d%c%02d:%02d",
           l.year, l.month, l.day, l.hour, l.minute, l.second, east ? '+' : '-', hours, minutes);
  return text;
}

std::int64_t UnitsOf(const CXMLFileTime& time) {
  const FILETIME* const t = time.AsFileTime();
  return t ? static_cast<std::int64_t>((static_cast<std::uint64_t>(t->dwHighDateTime) << 32) | t->dwLowDateTime) : 0;
}

TEST(XMLFileTimeZoneTest, TheExamplesOfTheCalculationHold) {
  const Local local = {2002, 6, 25, 15, 45, 0};
  EXPECT_EQ(126694935000000000, UnitsOf(local));
  EXPECT_EQ(UnitsOf({2002, 6, 25, 23, 45, 0}), Expected(local, false, 8 * 3600 * kUnitsPerSecond));
  EXPECT_EQ(UnitsOf({2002, 6, 25, 14, 52, 9}) + 496 * kUnitsPerMillisecond, Expected(local, true, 3600 * kUnitsPerSecond));
}

TEST(XMLFileTimeZoneTest, EveryZoneShiftsEveryTimeOfDayAsItAlwaysDid) {
  const LogCapture log;
  int exact = 0;
  int early = 0;
  int late = 0;
  for (int quarter = 0; quarter <= 14 * 4; ++quarter) {
    for (int step = 0; step < 97; ++step) {
      const int seconds = step * 887;
      const Local local = {2002, 6, 25, seconds / 3600, seconds / 60 % 60, seconds % 60};
      const std::int64_t offset = quarter * 900 * kUnitsPerSecond;
      for (const bool east : {false, true}) {
        const std::string text = TextOf(local, east, quarter / 4, quarter % 4 * 15, step % 2 != 0);
        const CXMLFileTime time(text.c_str());
        ASSERT_EQ(Expected(local, east, offset), UnitsOf(time)) << text;
        ASSERT_EQ(offset, time.GetZoneOffset()) << text;
        const std::int64_t fault = Fault(UnitsOf(local), east, offset);
        ++(fault == 0 ? exact : fault < 0 ? early : late);
      }
    }
  }
  EXPECT_EQ("", log.Text());
  EXPECT_LT(1000, exact);  // each of the three cases was met
  EXPECT_LT(1000, early);
  EXPECT_LT(1000, late);
}

TEST(XMLFileTimeZoneTest, TheYearsFromTheFirstToTheLastAreShifted) {
  for (int year = 1602; year <= 9998; year += 3) {
    const int month = year % 12 + 1;
    const Local local = {year, month, DaysOfMonth(year, month), year % 24, year % 60, year % 59};
    for (const bool east : {false, true}) {
      const std::string text = TextOf(local, east, year % 13, year % 60, year % 2 != 0);
      const CXMLFileTime time(text.c_str());
      ASSERT_EQ(Expected(local, east, (year % 13 * 60 + year % 60) * 60 * kUnitsPerSecond), UnitsOf(time)) << text;
    }
  }
}

TEST(XMLFileTimeZoneTest, TheBrokenDownTimeIsTheSameMoment) {
  for (const char* const text : {"2002-06-25T15:45:00+01:00", "2002-06-25T15:45:00-08:00", "2002-06-25T15:45:00-03:30"}) {
    const CXMLFileTime time(text);
    FILETIME again = {};
    ASSERT_TRUE(SystemTimeToFileTime(time.AsSystemTime(), &again));
    EXPECT_EQ(0, CompareFileTime(time.AsFileTime(), &again)) << text;
  }
}

// Zones that are read though they are none that a clock has, for 2002-06-25T15:45:00.
struct Zone {
  const char* name;
  const char* text;
  bool east;
  std::int64_t minutes;
};

void PrintTo(const Zone& zone, std::ostream* stream) {
  *stream << zone.text;
}

class OddZoneTest : public testing::TestWithParam<Zone> {};

TEST_P(OddZoneTest, IsAppliedAsItIsRead) {
  const LogCapture log;
  const Local local = {2002, 6, 25, 15, 45, 0};
  const std::int64_t offset = GetParam().minutes * 60 * kUnitsPerSecond;
  const CXMLFileTime time((std::string("2002-06-25T15:45:00") + GetParam().text).c_str());
  EXPECT_EQ(Expected(local, GetParam().east, offset), UnitsOf(time));
  EXPECT_EQ(offset, time.GetZoneOffset());
  EXPECT_EQ("", log.Text());
}

INSTANTIATE_TEST_SUITE_P(
    Zones, OddZoneTest,
    testing::Values(Zone{"Zulu", "Z", true, 0}, Zone{"ADayAndMore", "-99:00", false, 99 * 60},
                    Zone{"ADayAndMoreEast", "+99:00", true, 99 * 60}, Zone{"MinutesOfThreeDigits", "-08:120", false, 600},
                    Zone{"CompactMinutesOfThreeDigits", "+08120", true, 600},
                    Zone{"AMillionMinutes", "-00:1000000", false, 1000000},
                    Zone{"APlusSignBehindAHyphen", "-08:00+", true, 480}, Zone{"APlusSignInTheMinutes", "-0800+", true, 480},
                    Zone{"ABlankForADigit", "- 8:30", false, 30}, Zone{"HoursOfThreeDigits", "-080:30", false, 480},
                    Zone{"NoMinutes", "-08:mm", false, 480}, Zone{"NoCompactMinutes", "-08mm", false, 480},
                    Zone{"OneDigitBehindTheColon", "-008:3", false, 0}, Zone{"FromTheSecondHyphen", "Z-08:00", false, 480},
                    Zone{"MinutesBeyondALong", "-00:99999999999999999999", false, 2147483647}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(XMLFileTimeZoneTest, AShiftBeforeTheCountLeavesTheTimeAsItIs) {
  for (const char* const zone : {"+01:00", "+00:99999999999999999999"}) {
    const LogCapture log;
    const CXMLFileTime time((std::string("1601-01-01T00:30:00") + zone).c_str());
    EXPECT_EQ(1800 * kUnitsPerSecond, UnitsOf(time)) << zone;
    ExpectOnlyTrace(log, E_INVALIDARG);
  }
}

TEST(XMLFileTimeZoneTest, AShiftThatTheSystemRefusesLeavesTheTimeAsItIs) {
  const LogCapture log;
  CXMLFileTime time;
  {
    PATCH_IMPORT(refuses, FileTimeToSystemTime, FailWith(FALSE, ERROR_ARITHMETIC_OVERFLOW));
    time.SetText("2002-06-25T15:45:00-08:00");
  }
  EXPECT_EQ(UnitsOf({2002, 6, 25, 15, 45, 0}), UnitsOf(time));
  EXPECT_EQ(8 * 3600 * kUnitsPerSecond, time.GetZoneOffset());
  ExpectOnlyTrace(log, static_cast<HRESULT>(0x80070216));
}

TEST(XMLFileTimeZoneTest, AZoneThatIsTooShortIsNotKept) {
  const LogCapture log;
  const CXMLFileTime time("2002-06-25T15:45:00-08");
  EXPECT_EQ(0, time.GetZoneOffset());
  EXPECT_EQ(UnitsOf({2002, 6, 25, 15, 45, 0}), UnitsOf(time));
}

TEST(XMLFileTimeZoneTest, TheZoneOfAnImpossibleTimeIsKept) {
  const LogCapture log;
  const CXMLFileTime time("2002-06-25T25:00:00+01:00");
  EXPECT_TRUE(time.IsEmpty());
  EXPECT_EQ(3600 * kUnitsPerSecond, time.GetZoneOffset());
  ExpectOnlyMessages(log, {"ERROR 0x80070057 2002-06-25T25:00:00+01:00"});
}

}  // namespace
