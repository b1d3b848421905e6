#include "xml/XMLFileTime.h"

#include <gtest/gtest.h>

#include "support/ImportPatch.h"
#include "xml/LogExpectations.h"
#include "xml/ShowTime.h"

namespace {

constexpr FILETIME Ticks(ULONGLONG ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

ULONGLONG TicksOf(const CXMLFileTime& time) {
  const FILETIME* const t = time.AsFileTime();
  return t ? (static_cast<ULONGLONG>(t->dwHighDateTime) << 32) | t->dwLowDateTime : 0;
}

TEST(XMLFileTimeTest, ANullTextIsEmptyAndNotLogged) {
  const LogCapture log;
  const CXMLFileTime time(static_cast<const char*>(nullptr));
  EXPECT_TRUE(time.IsEmpty());
  EXPECT_EQ("", log.Text());
}

TEST(XMLFileTimeTest, AnEmptyTextIsEmptyAndLoggedTwice) {
  const LogCapture log(false);  // which leaves out traces: these are messages, without a character
  const CXMLFileTime time("");
  EXPECT_EQ("empty", Show(time));
  const auto entries = log.Entries();
  ASSERT_EQ(2u, entries.size());
  EXPECT_EQ("ERROR", entries[0].level);
  EXPECT_EQ(E_FAIL, entries[0].code);
  EXPECT_EQ("ERROR", entries[1].level);
  EXPECT_EQ(E_INVALIDARG, entries[1].code);
  EXPECT_EQ("", entries[0].message + entries[1].message);
}

TEST(XMLFileTimeTest, ATWithoutADateOrATimeIsLoggedForBothAndAsAWhole) {
  const LogCapture log(false);
  const CXMLFileTime time("T");
  EXPECT_EQ("empty", Show(time));
  const auto entries = log.Entries();
  ASSERT_EQ(3u, entries.size());
  EXPECT_EQ(E_FAIL, entries[0].code);
  EXPECT_EQ("", entries[0].message);
  EXPECT_EQ(E_FAIL, entries[1].code);
  EXPECT_EQ("", entries[1].message);
  EXPECT_EQ(E_INVALIDARG, entries[2].code);
  EXPECT_EQ("T", entries[2].message);
}

TEST(XMLFileTimeTest, ATWithoutATimeIsMidnight) {
  const LogCapture log(false);
  const CXMLFileTime time("2002-06-25T");
  EXPECT_EQ(kMidnight, Show(time));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ(E_FAIL, log.Entries()[0].code);
}

TEST(XMLFileTimeTest, ATextOfAMillionCharactersIsReadToItsEnd) {
  const LogCapture log;
  const CXMLFileTime time(("2002-06-25" + std::string(1000000, '-') + "T15:45:00Z").c_str());
  EXPECT_EQ(kLocal, Show(time));
  EXPECT_EQ("", log.Text());
  const CXMLFileTime noTime(("2002-06-25T" + std::string(1000000, '9')).c_str());
  EXPECT_EQ(kMidnight, Show(noTime));
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + std::string(1023, '9')});
}

TEST(XMLFileTimeTest, TheFirstMomentOfTheCountReadsAsEmpty) {
  const LogCapture log;
  const CXMLFileTime time("1601-01-01T00:00:00Z");
  EXPECT_EQ(nullptr, time.AsFileTime());
  EXPECT_EQ(nullptr, time.AsSystemTime());
  EXPECT_EQ("", log.Text());
}

TEST(XMLFileTimeTest, ParsingADateDoesNotFillTheDayOfWeek) {
  const CXMLFileTime time("2002-06-25");
  EXPECT_EQ(0, time.AsSystemTime()->wDayOfWeek);  // it was a Tuesday
}

TEST(XMLFileTimeTest, AZoneFillsTheDayOfWeekOfTheMomentInUTC) {
  EXPECT_EQ(2, CXMLFileTime("2002-06-25T15:45:00Z").AsSystemTime()->wDayOfWeek);
  EXPECT_EQ(3, CXMLFileTime("2002-06-25T23:45:00-08:00").AsSystemTime()->wDayOfWeek);
  EXPECT_EQ(0, CXMLFileTime("2002-06-25T15:45:00").AsSystemTime()->wDayOfWeek);  // without a zone as without a time
}

TEST(XMLFileTimeTest, WithoutMemoryTheTextIsTheMessage) {
  const LogCapture log;
  CXMLFileTime time("2002-06-25");
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    time.SetText("2002-06-25T%s");
  }
  EXPECT_EQ("empty", Show(time));
  ExpectOnlyMessages(log, {"ERROR 0x8007000e 2002-06-25T%s"});
}

TEST(XMLFileTimeTest, WithoutMemoryForTheZoneTheTimeOfDayIsLost) {
  const LogCapture log;
  CXMLFileTime time;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailCall(2, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    time.SetText("2002-06-25T15:45:00-08:00");
  }
  EXPECT_EQ(kMidnight, Show(time));
  ExpectOnlyMessages(log, {"ERROR 0x8007000e 15:45:00-08:00"});
}

TEST(XMLFileTimeTest, ARefusedConversionIsLoggedWithTheSystemsCode) {
  const LogCapture log;
  CXMLFileTime time;
  {
    PATCH_IMPORT(refuses, SystemTimeToFileTime, [](auto, const SYSTEMTIME*, FILETIME* out) {
      *out = Ticks(1);
      SetLastError(ERROR_ARITHMETIC_OVERFLOW);
      return FALSE;
    });
    time.SetText("2002-06-25%s");
  }
  EXPECT_EQ("empty", Show(time));
  ExpectOnlyMessages(log, {"ERROR 0x80070216 2002-06-25%s"});
}

TEST(XMLFileTimeTest, ATextReplacesWhatWasThere) {
  CXMLFileTime time("2002-06-25T15:45:00-08:00");
  time.Format();
  time.SetText("2004-02-29");
  EXPECT_EQ("2004-02-29T00:00:00.000", Show(time));
  EXPECT_EQ(0, time.GetZoneOffset());
  EXPECT_EQ(nullptr, time.GetText());
  time.SetText(nullptr);
  EXPECT_EQ("empty", Show(time));
}

TEST(XMLFileTimeTest, ARefusedTextLeavesNothingOfTheOneBefore) {
  const LogCapture log;
  CXMLFileTime time("2002-06-25T15:45:00-08:00");
  time.SetText("nonsense");
  EXPECT_EQ(nullptr, time.AsFileTime());
  EXPECT_EQ(nullptr, time.AsSystemTime());
  EXPECT_EQ(0, time.GetZoneOffset());
}

TEST(XMLFileTimeTest, ClearingLeavesNothing) {
  CXMLFileTime time("2002-06-25T15:45:00-08:00");
  time.Format();
  time.Clear();
  EXPECT_EQ(nullptr, time.AsFileTime());
  EXPECT_EQ(nullptr, time.AsSystemTime());
  EXPECT_EQ(nullptr, time.GetText());
  EXPECT_EQ(0, time.GetZoneOffset());
  time.Clear();
  EXPECT_TRUE(time.IsEmpty());
}

TEST(XMLFileTimeTest, ANewValueIsEmpty) {
  const CXMLFileTime time;
  EXPECT_TRUE(time.IsEmpty());
  EXPECT_EQ(nullptr, time.AsFileTime());
  EXPECT_EQ(nullptr, time.AsSystemTime());
  EXPECT_EQ(nullptr, time.GetText());
}

TEST(XMLFileTimeTest, AFileTimeIsTakenAsItIs) {
  const LogCapture log;
  const FILETIME moment = Ticks(126695223001234567);
  const CXMLFileTime time(&moment);
  EXPECT_EQ(126695223001234567u, TicksOf(time));
  EXPECT_EQ("2002-06-25T23:45:00.123", Show(time));
  EXPECT_EQ(2, time.AsSystemTime()->wDayOfWeek);
  EXPECT_EQ("", log.Text());
}

TEST(XMLFileTimeTest, ANullFileTimeIsEmpty) {
  const LogCapture log;
  CXMLFileTime time("2002-06-25");
  time.SetFileTime(nullptr);
  EXPECT_TRUE(time.IsEmpty());
  EXPECT_TRUE(CXMLFileTime(static_cast<const FILETIME*>(nullptr)).IsEmpty());
  EXPECT_EQ("", log.Text());
}

TEST(XMLFileTimeTest, AFileTimeOutOfRangeIsTraced) {
  const LogCapture log;
  const FILETIME moment = Ticks(0x8000000000000000u);
  const CXMLFileTime time(&moment);
  EXPECT_EQ(0x8000000000000000u, TicksOf(time));
  EXPECT_EQ("0000-00-00T00:00:00.000", Show(time));
  ExpectOnlyTrace(log, E_INVALIDARG);
}

TEST(XMLFileTimeTest, EitherHalfOfTheFileTimeMakesItNotEmpty) {
  const FILETIME low = Ticks(1);
  const FILETIME high = Ticks(0x100000000u);
  EXPECT_FALSE(CXMLFileTime(&low).IsEmpty());
  EXPECT_FALSE(CXMLFileTime(&high).IsEmpty());
}

TEST(XMLFileTimeTest, TimesAreCompared) {
  const FILETIME moment = Ticks(126695223000000000);
  const FILETIME before = Ticks(126695222999999999);
  const FILETIME after = Ticks(126695223000000001);
  const FILETIME never = {};
  const CXMLFileTime time(&moment);
  EXPECT_EQ(0, time.CompareTo(&moment));
  EXPECT_EQ(1, time.CompareTo(&before));
  EXPECT_EQ(-1, time.CompareTo(&after));
  EXPECT_EQ(1, time.CompareTo(&never));
  EXPECT_EQ(1, time.CompareTo(nullptr));
}

TEST(XMLFileTimeTest, AnEmptyTimeComparesAsLaterThanAny) {
  const FILETIME moment = Ticks(126695223000000000);
  const FILETIME never = {};
  const FILETIME last = Ticks(0x7FFFFFFFFFFFFFFFu);
  const CXMLFileTime time;
  EXPECT_EQ(1, time.CompareTo(&moment));
  EXPECT_EQ(1, time.CompareTo(&never));
  EXPECT_EQ(1, time.CompareTo(&last));
  EXPECT_EQ(1, time.CompareTo(nullptr));
}

TEST(XMLFileTimeTest, ATimeIsWrittenInUTC) {
  CXMLFileTime time("2002-06-25T15:45:00-08:00");
  EXPECT_EQ(nullptr, time.GetText());
  time.Format();
  EXPECT_STREQ("2002-06-25T23:45:00+00:00", time.GetText());
  time.Format();
  EXPECT_STREQ("2002-06-25T23:45:00+00:00", time.GetText());
}

TEST(XMLFileTimeTest, AWrittenTimeReadsAsItself) {
  CXMLFileTime time("2002-06-25T15:45:30+01:00");
  time.Format();
  const CXMLFileTime again(time.GetText());
  EXPECT_EQ(TicksOf(time) / 10000000, TicksOf(again) / 10000000);
  EXPECT_EQ(0, again.GetZoneOffset());
}

TEST(XMLFileTimeTest, AnEmptyTimeIsNotWritten) {
  CXMLFileTime time;
  time.Format();
  EXPECT_EQ(nullptr, time.GetText());
}

TEST(XMLFileTimeTest, SmallNumbersAreWrittenWithZerosAndLongYearsInFull) {
  const FILETIME early = Ticks(10000000);
  CXMLFileTime time(&early);
  time.Format();
  EXPECT_STREQ("1601-01-01T00:00:01+00:00", time.GetText());
  const FILETIME last = Ticks(0x7FFFFFFFFFFFFFFFu);
  time.SetFileTime(&last);
  time.Format();
  EXPECT_STREQ("30828-09-14T02:48:05+00:00", time.GetText());
}

TEST(XMLFileTimeTest, WithoutMemoryThereIsNoWrittenTime) {
  CXMLFileTime time("2002-06-25");
  time.Format();
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    time.Format();
  }
  EXPECT_EQ(nullptr, time.GetText());
  EXPECT_EQ(kMidnight, Show(time));
}

}  // namespace
