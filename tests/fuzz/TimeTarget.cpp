// Times as texts, against a reading of the text that keeps to positions and whole numbers.

#include "common/Windows.h"

#include <climits>
#include <cstring>

#include "Target.h"
#include "xml/XMLFileTime.h"

namespace {

constexpr ULONGLONG kUnitsPerMillisecond = 10000;
constexpr ULONGLONG kUnitsPerMinute = 60000 * kUnitsPerMillisecond;

struct Moment {
  ULONGLONG units = 0;
  ULONGLONG zone = 0;
};

ULONGLONG Number(const std::string& text, std::size_t start, std::size_t count) {
  const std::string field = text.substr(start, count);
  const std::string digits = field.substr(0, field.find_first_not_of("0123456789"));
  ULONGLONG number = 0;
  for (const char digit : digits) {
    number = number * 10 + static_cast<ULONGLONG>(digit - '0');
    if (number > INT_MAX)
      return INT_MAX;
  }
  return number;
}

bool IsLeapYear(ULONGLONG year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// The 100-nanosecond units from 1601 to a date and a time of day; false when they are none.
bool Units(const ULONGLONG (&date)[3], const ULONGLONG (&clock)[3], ULONGLONG& units) {
  const ULONGLONG days[] = {31, IsLeapYear(date[0]) ? 29u : 28u, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (date[0] < 1601 || date[1] < 1 || date[1] > 12 || date[2] < 1 || date[2] > days[date[1] - 1])
    return false;
  if (clock[0] > 23 || clock[1] > 59 || clock[2] > 59)
    return false;
  const ULONGLONG years = date[0] - 1;
  ULONGLONG day = years * 365 + years / 4 - years / 100 + years / 400 - 584388 + date[2] - 1;
  for (ULONGLONG month = 1; month < date[1]; ++month)
    day += days[month - 1];
  units = (((day * 24 + clock[0]) * 60 + clock[1]) * 60 + clock[2]) * 1000 * kUnitsPerMillisecond;
  return true;
}

// Half by half, each sum without what it carries.
ULONGLONG Shifted(ULONGLONG units, ULONGLONG offset, bool isEast) {
  constexpr ULONGLONG kHalf = ULONGLONG{1} << 32;
  const ULONGLONG low = offset % kHalf;
  const ULONGLONG high = offset / kHalf;
  const ULONGLONG newLow = (units % kHalf + (isEast ? kHalf - low : low)) % kHalf;
  const ULONGLONG newHigh = (units / kHalf + (isEast ? kHalf - high : high)) % kHalf;
  return newHigh * kHalf + newLow;
}

Moment Read(const std::string& text) {
  const std::size_t separator = text.find('T');
  const std::string dateText = text.substr(0, separator);
  ULONGLONG date[3] = {};
  ULONGLONG clock[3] = {};
  const bool isLong = dateText.find('-') != std::string::npos;
  if (dateText.size() >= (isLong ? 10u : 8u)) {
    date[0] = Number(dateText, 0, 4);
    date[1] = Number(dateText, isLong ? 5 : 4, 2);
    date[2] = Number(dateText, isLong ? 8 : 6, 2);
  }
  Moment moment;
  std::string zone;
  if (separator != std::string::npos) {
    const std::string timeText = text.substr(separator + 1);
    std::size_t zonePosition = timeText.find('-');
    if (zonePosition == std::string::npos)
      zonePosition = timeText.find('+');
    if (zonePosition == std::string::npos)
      zonePosition = timeText.find('Z');
    const std::string clockText = timeText.substr(0, zonePosition);
    const bool hasColon = clockText.find(':') != std::string::npos;
    if (zonePosition != std::string::npos && clockText.size() >= (hasColon ? 8u : 6u)) {
      clock[0] = Number(clockText, 0, 2);
      clock[1] = Number(clockText, hasColon ? 3 : 2, 2);
      clock[2] = Number(clockText, hasColon ? 6 : 4, std::string::npos);
      zone = timeText[zonePosition] == 'Z' ? "+00:00" : timeText.substr(zonePosition);
    }
  }
  const bool isTime = Units(date, clock, moment.units);
  const bool hasColon = zone.find(':') != std::string::npos;
  if (zone.size() < (hasColon ? 6u : 5u))
    return moment;
  moment.zone = (Number(zone, 1, 2) * 60 + Number(zone, hasColon ? 4 : 3, std::string::npos)) * kUnitsPerMinute;
  if (!isTime)
    return moment;
  const ULONGLONG shifted = Shifted(moment.units, moment.zone, zone.find('+') != std::string::npos);
  if (shifted >> 63 == 0)
    moment.units = shifted - shifted % kUnitsPerMillisecond;
  return moment;
}

ULONGLONG UnitsOf(const FILETIME* time) {
  return time ? ULONGLONG{time->dwHighDateTime} << 32 | time->dwLowDateTime : 0;
}

void CheckFormat(CXMLFileTime& time) {
  HOLDS(!time.GetText());
  time.Format();
  if (time.IsEmpty()) {
    HOLDS(!time.GetText() && !time.AsSystemTime());
    return;
  }
  HOLDS(time.GetText() && std::strlen(time.GetText()) <= 26);
  SYSTEMTIME second = *time.AsSystemTime();
  second.wMilliseconds = 0;
  FILETIME whole = {};
  if (second.wYear > 9999 || !SystemTimeToFileTime(&second, &whole))
    return;
  const CXMLFileTime again(time.GetText());
  HOLDS(UnitsOf(again.AsFileTime()) == UnitsOf(&whole));
}

}  // namespace

void FuzzTime(Input& input) {
  const FILETIME given = {static_cast<DWORD>(input.TakeNumber(4)), static_cast<DWORD>(input.TakeNumber(4))};
  const std::string text = UpToZero(input.TakeRuns());
  const Moment expected = Read(text);

  CXMLFileTime time(text.c_str());
  HOLDS(UnitsOf(time.AsFileTime()) == expected.units);
  HOLDS(static_cast<ULONGLONG>(time.GetZoneOffset()) == expected.zone);
  if (!time.IsEmpty()) {
    FILETIME again = {};
    HOLDS(SystemTimeToFileTime(time.AsSystemTime(), &again));
    HOLDS(UnitsOf(&again) == expected.units);
  }
  const int order = expected.units == 0 ? 1 : expected.units < UnitsOf(&given) ? -1 : expected.units > UnitsOf(&given);
  HOLDS(time.CompareTo(&given) == order);
  CheckFormat(time);

  CXMLFileTime other(&given);
  HOLDS(UnitsOf(other.AsFileTime()) == UnitsOf(&given));
  HOLDS(other.GetZoneOffset() == 0);
  CheckFormat(other);
}
