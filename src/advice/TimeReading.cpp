#include "advice/TimeReading.h"

#include "common/Windows.h"

#include <cstddef>

#include "advice/KeptLog.h"
#include "advice/Words.h"
#include "xml/XMLFileTime.h"

namespace {

constexpr std::size_t kDigits = 14;  // of a date and a time of day

// A text taken apart: everything before its zone, and the sign of the zone ('+' without one).
struct WrittenTime {
  std::string local;
  char sign = '+';
};

WrittenTime Split(const std::string& text) {
  const std::size_t timeOfDay = text.find('T');
  const std::size_t zone = timeOfDay == std::string::npos ? timeOfDay : text.find_first_of("Z+-", timeOfDay);
  if (zone == std::string::npos)
    return {text};
  return {text.substr(0, zone), text[zone] == '-' ? '-' : '+'};
}

// The digits up to a fraction, filled up to a whole time.
std::string DigitsOf(const std::string& text) {
  std::string digits;
  for (const char character : text) {
    if (character == '.' || character == ',')
      break;
    if (character >= '0' && character <= '9')
      digits += character;
  }
  if (digits.size() < kDigits)
    digits.resize(kDigits, '0');
  return digits;
}

std::string Formatted(CXMLFileTime& time) {
  time.Format();
  return time.GetText() ? time.GetText() : "";
}

// What the text says. In UTC the module is exact: the zone is taken off as a whole number, and not in halves.
std::string Meant(const WrittenTime& written, LONGLONG zoneOffset) {
  CXMLFileTime local((written.local.find('T') == std::string::npos ? written.local : written.local + "Z").c_str());
  if (Formatted(local).empty() || DigitsOf(local.GetText()).substr(0, kDigits) != DigitsOf(written.local))
    return {};
  ULARGE_INTEGER moment;
  moment.LowPart = local.AsFileTime()->dwLowDateTime;
  moment.HighPart = local.AsFileTime()->dwHighDateTime;
  moment.QuadPart += static_cast<ULONGLONG>(written.sign == '-' ? zoneOffset : -zoneOffset);
  const FILETIME meant = {moment.LowPart, moment.HighPart};
  CXMLFileTime time(&meant);
  return Formatted(time);
}

}  // namespace

TimeReading ReadTime(const std::string& text) {
  KeptLog log;
  const std::string narrow = AnsiFromWide(WideFromUtf8(text)).value_or("");
  CXMLFileTime time(narrow.c_str());
  const std::string taken = Formatted(time);
  if (taken.empty() || !log.FirstComplaint().empty())
    return {TimeReading::Verdict::Refused, taken, ""};
  const std::string meant = Meant(Split(narrow), time.GetZoneOffset());
  if (meant == taken)
    return {TimeReading::Verdict::AsItSays, taken, meant};
  return {TimeReading::Verdict::Shifted, taken, meant};
}
