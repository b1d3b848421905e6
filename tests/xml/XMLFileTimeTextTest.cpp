// The texts that a time is read from: what they give, and what is logged about them.

#include <gtest/gtest.h>

#include "xml/LogExpectations.h"
#include "xml/ShowTime.h"
#include "xml/XMLFileTime.h"

namespace {

constexpr char kInvalid[] = "ERROR 0x80070057 ";

struct Row {
  const char* name;
  const char* text;
  const char* expected;
  std::vector<std::string> messages = {};
};

void PrintTo(const Row& row, std::ostream* stream) {
  *stream << row.text;
}

class ParsedTimeTest : public testing::TestWithParam<Row> {};

TEST_P(ParsedTimeTest, GivesItsMoment) {
  const LogCapture log;
  const CXMLFileTime time(GetParam().text);
  EXPECT_EQ(GetParam().expected, Show(time));
  EXPECT_EQ(GetParam().expected, ShowFileTime(time));
  EXPECT_EQ(GetParam().expected == std::string("empty"), time.IsEmpty());
  ExpectOnlyMessages(log, GetParam().messages);
}

std::string RowName(const testing::TestParamInfo<Row>& row) {
  return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Accepted, ParsedTimeTest,
    testing::Values(
        Row{"ZuluTime", "2002-06-25T15:45:00Z", kLocal}, Row{"NoOffset", "2002-06-25T15:45:00+00:00", kLocal},
        Row{"NoOffsetWithAHyphen", "2002-06-25T15:45:00-00:00", kLocal},
        Row{"WestOfUTC", "2002-06-25T15:45:00-08:00", "2002-06-25T23:45:00.000"},
        Row{"EastOfUTC", "2002-06-25T15:45:00+01:00", "2002-06-25T14:52:09.496"},
        Row{"Compact", "20020625T154500-0800", "2002-06-25T23:45:00.000"}, Row{"CompactZulu", "20020625T154500Z", kLocal},
        Row{"LongDateWithCompactTime", "2002-06-25T154500-08:00", "2002-06-25T23:45:00.000"},
        Row{"CompactDateWithLongTime", "20020625T15:45:00-0800", "2002-06-25T23:45:00.000"},
        Row{"AHyphenBeforeTheTime", "2002-06-25-T15:45:00-08:00", "2002-06-25T23:45:00.000"},
        Row{"DateOnly", "2002-06-25", kMidnight}, Row{"CompactDateOnly", "20020625", kMidnight},
        Row{"AFraction", "2002-06-25T15:45:00.750-08:00", "2002-06-25T23:45:00.000"},
        Row{"ACompactFraction", "20020625T154500,75Z", kLocal},
        Row{"LowerCaseTIsNoSeparator", "2002-06-25t15:45:00Z", kMidnight},
        Row{"AnythingBehindTheDay", "2002-06-25garbage", kMidnight},
        Row{"AnythingBehindTheCompactDay", "20020625garbage", kMidnight},
        Row{"AnySeparatorsOfTheDate", "2002/06.25-", kMidnight},
        Row{"AnySeparatorsOfTheTime", "2002-06-25T15x45:00Z", kLocal},
        Row{"SecondsOfManyDigits", "2002-06-25T15:45:000000000000000000000000000030Z", "2002-06-25T15:45:30.000"},
        Row{"NoSeconds", "2002-06-25T15:45:xxZ", kLocal}, Row{"TwoTs", "2002-06-25TT15:45:00Z", kMidnight},
        Row{"ATBehindTheZone", "2002-06-25T15:45:00ZT", kLocal},
        Row{"TheFirstHyphenBeginsTheZone", "2002-06-25T15:45:00Z-08:00", "2002-06-25T23:45:00.000"},
        Row{"TheHyphenGoesBeforeThePlusSign", "2002-06-25T15:45:00+-08:00", "2002-06-25T23:45:00.000"},
        Row{"APlusSignGoesBeforeTheZ", "2002-06-25T15:45:00Z+01:00", "2002-06-25T14:52:09.496"},
        Row{"AnythingBehindTheZ", "2002-06-25T15:45:00Zulu", kLocal},
        Row{"HoursOfTheZoneThatAreNone", "2002-06-25T15:45:00-xx:00", kLocal},
        Row{"MinutesOfTheZoneThatAreNone", "2002-06-25T15:45:00-08:xx", "2002-06-25T23:45:00.000"},
        Row{"AnythingBehindTheZone", "2002-06-25T15:45:00-08:00 (PST)", "2002-06-25T23:45:00.000"},
        Row{"TheSecondDayOfTheCount", "1601-01-02", "1601-01-02T00:00:00.000"},
        Row{"TheFirstSecond", "1601-01-01T00:00:01Z", "1601-01-01T00:00:01.000"},
        Row{"TheLastYear", "9999-12-31T23:59:59Z", "9999-12-31T23:59:59.000"},
        Row{"ALeapDay", "2004-02-29", "2004-02-29T00:00:00.000"},
        Row{"ALeapDayOfACentury", "20000229", "2000-02-29T00:00:00.000"},
        Row{"IntoTheNextYear", "2001-12-31T23:00:00-08:00", "2002-01-01T07:00:00.000"}),
    RowName);

INSTANTIATE_TEST_SUITE_P(
    OnlyTheDate, ParsedTimeTest,
    testing::Values(Row{"NoZone", "2002-06-25T15:45:00", kMidnight, {"ERROR 0x80004005 15:45:00"}},
                    Row{"ALowerCaseZ", "2002-06-25T15:45:00z", kMidnight, {"ERROR 0x80004005 15:45:00z"}},
                    Row{"NoSeconds", "2002-06-25T15:45Z", kMidnight, {"ERROR 0x80004005 15:45"}},
                    Row{"NoCompactSeconds", "20020625T1545-0800", kMidnight, {"ERROR 0x80004005 1545"}},
                    Row{"OneDigitOfSeconds", "2002-06-25T15:45:0Z", kMidnight, {"ERROR 0x80004005 15:45:0"}},
                    Row{"OneDigitOfCompactSeconds", "2002-06-25T15450Z", kMidnight, {"ERROR 0x80004005 15450"}},
                    Row{"HyphensInTheTime", "2002-06-25T15-45-00Z", kMidnight, {"ERROR 0x80004005 15"}},
                    Row{"AFormatForATime", "2002-06-25T%s%n", kMidnight, {"ERROR 0x80004005 %s%n"}}),
    RowName);

INSTANTIATE_TEST_SUITE_P(
    WithoutTheZone, ParsedTimeTest,
    testing::Values(Row{"AHyphenAlone", "2002-06-25T15:45:00-", kLocal, {"ERROR 0x80004005 -"}},
                    Row{"HoursOnly", "2002-06-25T15:45:00-08", kLocal, {"ERROR 0x80004005 -08"}},
                    Row{"OneDigitOfHours", "2002-06-25T15:45:00+1:00", kLocal, {"ERROR 0x80004005 +1:00"}},
                    Row{"OneDigitOfMinutes", "2002-06-25T15:45:00-080", kLocal, {"ERROR 0x80004005 -080"}},
                    Row{"AHyphenBehindTheZone", "2002-06-25T15:45:00+01:00-", kLocal, {"ERROR 0x80004005 -"}},
                    Row{"AFormatForAZone", "2002-06-25T15:45:00-%s%", kLocal, {"ERROR 0x80004005 -%s%"}}),
    RowName);

Row Malformed(const char* name, const char* text) {
  return {name, text, "empty", {std::string("ERROR 0x80004005 ") + text, kInvalid + std::string(text)}};
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, ParsedTimeTest,
    testing::Values(Malformed("ShortParts", "2002-6-5"), Malformed("OneCharacterMissing", "2002-06-2"),
                    Malformed("OneCompactDigitMissing", "2002062"), Malformed("ACompactDateWithAHyphen", "2002062-5"),
                    Malformed("AFormat", "%s%n%d"), Malformed("OneBlank", " "), Malformed("AHyphen", "-")),
    RowName);

Row Impossible(const char* name, const char* text) {
  return {name, text, "empty", {kInvalid + std::string(text)}};
}

INSTANTIATE_TEST_SUITE_P(
    Impossible, ParsedTimeTest,
    testing::Values(
        Impossible("BeforeTheCount", "1600-12-31"), Impossible("TheYearZero", "0000-01-01"),
        Impossible("NoYear", "year-06-25"), Impossible("AYearBehindABlank", " 2002-06-25"),
        Impossible("AYearOfFiveDigits", "12002-06-25"), Impossible("MonthZero", "2002-00-25"),
        Impossible("MonthThirteen", "2002-13-25"), Impossible("DayZero", "2002-06-00"),
        Impossible("ADayTooMany", "2002-06-31"), Impossible("ADayTooManyInFebruary", "2002-02-30"),
        Impossible("ASignedDay", "2002-06--5"), Impossible("SlashesOnly", "2002/06/25"),
        Impossible("ACompactDateReadAsALongOne", "20020625-1"), Impossible("HourTwentyFour", "2002-06-25T24:00:00Z"),
        Impossible("MinuteSixty", "2002-06-25T15:60:00Z"), Impossible("ALeapSecond", "2002-06-30T23:59:60Z"),
        Impossible("SecondsBeyondAWord", "2002-06-25T15:45:65536Z"),
        Impossible("SecondsBeyondALong", "2002-06-25T15:45:4294967296Z"),
        Impossible("SecondsBeyondAll", "2002-06-25T15:45:99999999999999999999999999999999Z"),
        Impossible("HourTwentyFourInAZone", "2002-06-25T24:00:00-08:00"),
        Impossible("AnHourBeforeTheCount", "1600-12-31T23:00:00-08:00")),
    RowName);

}  // namespace
