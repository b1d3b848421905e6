// Calendar times from 1601 to 30827, and their texts.

#include "common/Windows.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr ULONGLONG kUnitsPerMillisecond = 10000;
constexpr ULONGLONG kMillisecondsPerDay = 86400000;
constexpr unsigned kFirstYear = 1601;
constexpr unsigned kLastYear = 30827;
constexpr unsigned kDaysPer400Years = 146097;

constexpr const char* kDayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool IsLeapYear(unsigned year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

unsigned DaysOfMonth(unsigned year, unsigned month) {
  constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

unsigned DaysOfYear(unsigned year) {
  return IsLeapYear(year) ? 366 : 365;
}

bool IsValid(const SYSTEMTIME& time) {
  return time.wYear >= kFirstYear && time.wYear <= kLastYear && time.wMonth >= 1 && time.wMonth <= 12 && time.wDay >= 1 &&
         time.wDay <= DaysOfMonth(time.wYear, time.wMonth) && time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 &&
         time.wMilliseconds < 1000;
}

// Days since the first of January 1601.
unsigned DayNumber(const SYSTEMTIME& time) {
  const unsigned years = time.wYear - kFirstYear;
  unsigned days = years * 365 + years / 4 - years / 100 + years / 400;
  for (unsigned month = 1; month < time.wMonth; ++month)
    days += DaysOfMonth(time.wYear, month);
  return days + time.wDay - 1u;
}

void SetDate(SYSTEMTIME& time, unsigned day) {
  time.wDayOfWeek = static_cast<WORD>((day + 1) % 7);  // 1601 began with a Monday
  unsigned year = kFirstYear + day / kDaysPer400Years * 400;
  day %= kDaysPer400Years;
  for (; day >= DaysOfYear(year); ++year)
    day -= DaysOfYear(year);
  unsigned month = 1;
  for (; day >= DaysOfMonth(year, month); ++month)
    day -= DaysOfMonth(year, month);
  time.wYear = static_cast<WORD>(year);
  time.wMonth = static_cast<WORD>(month);
  time.wDay = static_cast<WORD>(day + 1);
}

std::string Number(unsigned number, std::size_t digits) {
  const std::string text = std::to_string(number);
  return std::string(text.size() < digits ? digits - text.size() : 0, '0') + text;
}

// One element of a picture: a letter, `count` times.
std::string Element(const SYSTEMTIME& time, char letter, std::size_t count) {
  switch (letter) {
    case 'd':
      return count == 3 ? kDayNames[(DayNumber(time) + 1) % 7] : Number(time.wDay, count);
    case 'M':
      return count == 3 ? kMonthNames[time.wMonth - 1] : Number(time.wMonth, count);
    case 'y':
      return Number(time.wYear, count);
    case 'H':
      return Number(time.wHour, count);
    case 'm':
      return Number(time.wMinute, count);
    case 's':
      return Number(time.wSecond, count);
    default:
      return std::string(count, letter);
  }
}

int Format(const SYSTEMTIME* time, const std::string& picture, char* text, int bytes) {
  if (!IsValid(*time)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  std::string formatted;
  for (std::size_t i = 0; i < picture.size();) {
    if (picture[i] == '\'') {
      const std::size_t end = picture.find('\'', i + 1);
      formatted += picture.substr(i + 1, end - i - 1);
      i = end + 1;
    } else {
      const std::size_t end = std::min(picture.find_first_not_of(picture[i], i), picture.size());
      formatted += Element(*time, picture[i], end - i);
      i = end;
    }
  }
  if (formatted.size() + 1 > static_cast<std::size_t>(bytes)) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  std::memcpy(text, formatted.c_str(), formatted.size() + 1);
  return static_cast<int>(formatted.size() + 1);
}

}  // namespace

BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime) {
  if (!IsValid(*time)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  ULONGLONG milliseconds = DayNumber(*time) * kMillisecondsPerDay;
  milliseconds += ((time->wHour * 60u + time->wMinute) * 60u + time->wSecond) * 1000u + time->wMilliseconds;
  const ULONGLONG units = milliseconds * kUnitsPerMillisecond;
  fileTime->dwLowDateTime = static_cast<DWORD>(units);
  fileTime->dwHighDateTime = static_cast<DWORD>(units >> 32);
  return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* time) {
  if (fileTime->dwHighDateTime >= 0x80000000u) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  const ULONGLONG units = (ULONGLONG{fileTime->dwHighDateTime} << 32) | fileTime->dwLowDateTime;
  const ULONGLONG milliseconds = units / kUnitsPerMillisecond;
  const auto ofDay = static_cast<unsigned>(milliseconds % kMillisecondsPerDay);
  SetDate(*time, static_cast<unsigned>(milliseconds / kMillisecondsPerDay));
  time->wHour = static_cast<WORD>(ofDay / 3600000);
  time->wMinute = static_cast<WORD>(ofDay / 60000 % 60);
  time->wSecond = static_cast<WORD>(ofDay / 1000 % 60);
  time->wMilliseconds = static_cast<WORD>(ofDay % 1000);
  return TRUE;
}

LONG CompareFileTime(const FILETIME* time, const FILETIME* other) {
  if (time->dwHighDateTime != other->dwHighDateTime)
    return time->dwHighDateTime < other->dwHighDateTime ? -1 : 1;
  if (time->dwLowDateTime != other->dwLowDateTime)
    return time->dwLowDateTime < other->dwLowDateTime ? -1 : 1;
  return 0;
}

void GetLocalTime(SYSTEMTIME* time) {
  *time = {2002, 6, 2, 25, 15, 45, 0, 0};
}

int GetDateFormatA(DWORD, DWORD, const SYSTEMTIME* time, const char* picture, char* text, int bytes) {
  return Format(time, picture, text, bytes);
}

int GetTimeFormatA(DWORD, DWORD, const SYSTEMTIME* time, const char* picture, char* text, int bytes) {
  return Format(time, picture, text, bytes);
}
