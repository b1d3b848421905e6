#include "xml/XMLFileTime.h"

#include <shlwapi.h>

#include <climits>
#include <cstring>

#include "common/SystemError.h"
#include "log/LogFile.h"

namespace {

constexpr SourceFile kSourceFile = {"XMLFileTime"};

constexpr LONGLONG kMillisecondsPerHour = 3600000;
constexpr LONGLONG kMillisecondsPerMinute = 60000;
constexpr LONGLONG kUnitsPerMillisecond = 10000;  // a unit is 100 nanoseconds

constexpr char kLongestText[] = "2002-06-25-T15:45:00-08:00";

// The decimal number at `digits`, up to `maximum` characters or the first one that is no digit.
int Number(const char* digits, std::size_t maximum) {
  LONGLONG number = 0;
  for (std::size_t i = 0; i < maximum && digits[i] >= '0' && digits[i] <= '9'; ++i) {
    number = number * 10 + (digits[i] - '0');
    if (number > INT_MAX)
      return INT_MAX;
  }
  return static_cast<int>(number);
}

int NumberToEnd(const char* digits) {
  return Number(digits, std::strlen(digits));
}

// A field of a broken-down time. What it cannot hold becomes a value that no conversion accepts.
WORD Field(int number) {
  return static_cast<WORD>(number > 0xFFFF ? 0xFFFF : number);
}

// Adds an offset to a file time half by half, without a carry between the halves; `negate` turns the sign of each half by
// itself first. The result is 2^32 units off whenever there would have been a carry. That is meant, and kept.
void AddHalves(FILETIME& time, LONGLONG offset, bool negate) {
  DWORD low = static_cast<DWORD>(offset);
  DWORD high = static_cast<DWORD>(offset >> 32);
  if (negate) {
    low = 0 - low;
    high = 0 - high;
  }
  time.dwLowDateTime += low;
  time.dwHighDateTime += high;
}

// Where the zone begins: at the first hyphen, else the first plus sign, else the first Z.
char* FindZone(char* time) {
  for (const char designator : {'-', '+', 'Z'}) {
    if (char* const found = std::strchr(time, designator))
      return found;
  }
  return nullptr;
}

}  // namespace

void CXMLFileTime::Clear() {
  fileTime = {};
  systemTime = {};
  text.reset();
  zoneOffset = 0;
}

void CXMLFileTime::SetText(const char* newText) {
  Clear();
  const OwnedText copy = CopyText(newText);
  if (!copy) {
    if (newText)
      LogError(HERE, E_OUTOFMEMORY, "%s", newText);
    return;
  }
  char* const separator = std::strchr(copy.get(), 'T');
  if (separator)
    *separator = '\0';
  ParseDate(copy.get());
  if (separator)
    ParseTime(separator + 1);
  if (!SystemTimeToFileTime(&systemTime, &fileTime)) {
    fileTime = {};
    LogError(HERE, ResultFromLastError(), "%s", newText);
  }
}

void CXMLFileTime::SetFileTime(const FILETIME* time) {
  Clear();
  if (!time)
    return;
  fileTime = *time;
  if (!FileTimeToSystemTime(&fileTime, &systemTime))
    LogErrorTrace(HERE, ResultFromLastError());
}

void CXMLFileTime::ParseDate(const char* date) {
  const bool hasHyphen = std::strchr(date, '-') != nullptr;
  if (std::strlen(date) < (hasHyphen ? 10u : 8u)) {
    LogError(HERE, E_FAIL, "%s", date);
    return;
  }
  systemTime.wYear = Field(Number(date, 4));
  systemTime.wMonth = Field(Number(date + (hasHyphen ? 5 : 4), 2));
  systemTime.wDay = Field(Number(date + (hasHyphen ? 8 : 6), 2));
}

void CXMLFileTime::ParseTime(char* time) {
  char* const zone = FindZone(time);
  if (!zone) {
    LogError(HERE, E_FAIL, "%s", time);
    return;
  }
  const OwnedText zoneText = CopyText(zone);
  if (!zoneText) {
    LogError(HERE, E_OUTOFMEMORY, "%s", time);
    return;
  }
  *zone = '\0';
  const bool hasColon = std::strchr(time, ':') != nullptr;
  if (std::strlen(time) < (hasColon ? 8u : 6u)) {
    LogError(HERE, E_FAIL, "%s", time);
    return;
  }
  systemTime.wHour = Field(Number(time, 2));
  systemTime.wMinute = Field(Number(time + (hasColon ? 3 : 2), 2));
  systemTime.wSecond = Field(NumberToEnd(time + (hasColon ? 6 : 4)));
  ApplyZone(zoneText.get());
}

void CXMLFileTime::ApplyZone(const char* zone) {
  if (zone[0] == 'Z')
    zone = "+00:00";
  const bool hasColon = std::strchr(zone, ':') != nullptr;
  if (std::strlen(zone) < (hasColon ? 6u : 5u)) {
    LogError(HERE, E_FAIL, "%s", zone);
    return;
  }
  const LONGLONG hours = Number(zone + 1, 2);
  const LONGLONG minutes = NumberToEnd(zone + (hasColon ? 4 : 3));
  zoneOffset = (hours * kMillisecondsPerHour + minutes * kMillisecondsPerMinute) * kUnitsPerMillisecond;

  // A date or a time of day that is none stays as it is; the conversion that every text ends with reports it.
  FILETIME shifted;
  if (!SystemTimeToFileTime(&systemTime, &shifted))
    return;
  AddHalves(shifted, zoneOffset, std::strchr(zone, '+') != nullptr);
  SYSTEMTIME broken;
  if (FileTimeToSystemTime(&shifted, &broken))
    systemTime = broken;
  else
    LogErrorTrace(HERE, ResultFromLastError());
}

LONG CXMLFileTime::CompareTo(const FILETIME* other) const {
  return IsEmpty() || !other ? 1 : CompareFileTime(&fileTime, other);
}

void CXMLFileTime::Format() {
  if (IsEmpty())
    return;
  char buffer[sizeof(kLongestText)];
  wnsprintfA(buffer, sizeof(buffer), "%04d-%02d-%02dT%02d:%02d:%02d%s", systemTime.wYear, systemTime.wMonth, systemTime.wDay,
             systemTime.wHour, systemTime.wMinute, systemTime.wSecond, "+00:00");
  text = CopyText(buffer);
}
