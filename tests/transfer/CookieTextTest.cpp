#include "transfer/CookieText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/ImportPatch.h"

namespace {

FILETIME TimeOf(WORD year, WORD month, WORD day, WORD hour = 0, WORD minute = 0, WORD second = 0) {
  const SYSTEMTIME time = {year, month, 0, day, hour, minute, second, 0};
  FILETIME fileTime = {};
  EXPECT_TRUE(SystemTimeToFileTime(&time, &fileTime));
  return fileTime;
}

std::string Text(const char* value, const FILETIME& expiry) {
  const OwnedText text = BuildCookieText(value, expiry);
  return text ? text.get() : "(null)";
}

TEST(CookieTextTest, TheExpiryFollowsTheValue) {
  EXPECT_EQ("a=b; expires = Sat, 01-Jan-2000 00:00:00 GMT", Text("a=b", TimeOf(2000, 1, 1)));
  EXPECT_EQ("a=b; path=/; expires = Fri, 31-Dec-2032 23:59:58 GMT", Text("a=b; path=/", TimeOf(2032, 12, 31, 23, 59, 58)));
}

TEST(CookieTextTest, TheValueMayBeEmpty) {
  EXPECT_EQ("; expires = Sat, 01-Jan-2000 00:00:00 GMT", Text("", TimeOf(2000, 1, 1)));
  EXPECT_EQ("", Text("", FILETIME{}));
}

TEST(CookieTextTest, WithoutAnExpiryThereIsTheValueAlone) {
  EXPECT_EQ("a=b", Text("a=b", FILETIME{}));
}

TEST(CookieTextTest, ATimeOfOneTickIsAnExpiry) {
  EXPECT_EQ("a=b; expires = Mon, 01-Jan-1601 00:00:00 GMT", Text("a=b", FILETIME{1, 0}));
}

TEST(CookieTextTest, AValueIsNoFormatAndMayBeLong) {
  EXPECT_EQ("%s%n=%d; expires = Sat, 01-Jan-2000 00:00:00 GMT", Text("%s%n=%d", TimeOf(2000, 1, 1)));
  const std::string value(100000, 'v');
  EXPECT_EQ(value + "; expires = Sat, 01-Jan-2000 00:00:00 GMT", Text(value.c_str(), TimeOf(2000, 1, 1)));
}

TEST(CookieTextTest, ATimeThatIsNoDateLeavesTheExpiryOut) {
  EXPECT_EQ("a=b", Text("a=b", FILETIME{0xFFFFFFFF, 0xFFFFFFFF}));
}

// The year has five digits, and the text behind it does not fit into the buffer any more.
TEST(CookieTextTest, ADateWithoutRoomForItsTimeStandsAlone) {
  EXPECT_EQ("a=b; expires = Sat, 01-Jan-12000 ", Text("a=b", TimeOf(12000, 1, 1)));
}

TEST(CookieTextTest, DateAndTimeAreFormattedForTheUsersLocale) {
  const FILETIME expiry = TimeOf(2000, 1, 1, 4, 5, 6);
  PATCH_IMPORT(date, GetDateFormatA,
               [](auto, LCID locale, DWORD flags, const SYSTEMTIME* time, const char* picture, char* text, int bytes) {
    EXPECT_EQ(LCID{LOCALE_USER_DEFAULT}, locale);
    EXPECT_EQ(0u, flags);
    EXPECT_EQ(2000, time->wYear);
    EXPECT_STREQ("ddd',' dd-MMM-yyyy ", picture);
    EXPECT_EQ('\0', text[0]);
    EXPECT_EQ(30, bytes);
    std::strcpy(text, "sam, 01-gen-2000 ");
    return 18;
  });
  PATCH_IMPORT(
      time, GetTimeFormatA,
      [](auto original, LCID locale, DWORD flags, const SYSTEMTIME* now, const char* picture, char* text, int bytes) {
    EXPECT_EQ(LCID{LOCALE_USER_DEFAULT}, locale);
    EXPECT_EQ(0u, flags);
    EXPECT_STREQ("HH:mm:ss 'GMT'", picture);
    EXPECT_EQ(30 - 17, bytes);
    return original(locale, flags, now, picture, text, bytes);
      });
  EXPECT_EQ("a=b; expires = sam, 01-gen-2000 04:05:06 GMT", Text("a=b", expiry).substr(0, 100));
}

TEST(CookieTextTest, ADateThatCannotBeFormattedLeavesTheExpiryOut) {
  const FILETIME expiry = TimeOf(2000, 1, 1);
  PATCH_IMPORT(noDate, GetDateFormatA, [](auto, LCID, DWORD, const SYSTEMTIME*, const char*, char* text, int) {
    std::strcpy(text, "half");
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  });
  EXPECT_EQ("a=b", Text("a=b", expiry));
}

TEST(CookieTextTest, ATimeThatCannotBeFormattedLeavesTheDate) {
  const FILETIME expiry = TimeOf(2000, 1, 1);
  PATCH_IMPORT(noTime, GetTimeFormatA, FailWith(0, ERROR_INVALID_PARAMETER));
  EXPECT_EQ("a=b; expires = Sat, 01-Jan-2000 ", Text("a=b", expiry));
}

TEST(CookieTextTest, WithoutMemoryThereIsNoTextAndTheErrorSaysSo) {
  const FILETIME expiry = TimeOf(2000, 1, 1);
  for (const FILETIME& time : {FILETIME{}, expiry}) {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    SetLastError(0);
    const OwnedText text = BuildCookieText("a=b", time);
    const DWORD error = GetLastError();
    EXPECT_EQ(nullptr, text);
    EXPECT_EQ(DWORD{ERROR_OUTOFMEMORY}, error);
  }
}

}  // namespace
