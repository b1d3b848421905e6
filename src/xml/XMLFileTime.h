#pragma once

#include "common/Windows.h"

#include "common/Text.h"

// A moment in time, in UTC, as manifests write it: a date, optionally followed by the letter T and a time of day that ends
// in a zone designator, in the manner of ISO 8601 (2002-06-25, 2002-06-25T15:45:00-08:00, 20020625T154500-0800, ...Z).
// Problems of a text are logged and never returned: the value keeps what was read before them, and is empty (file time zero)
// when no valid moment came out.
class CXMLFileTime {
 public:
  CXMLFileTime() = default;
  explicit CXMLFileTime(const FILETIME* time) { SetFileTime(time); }
  explicit CXMLFileTime(const char* text) { SetText(text); }
  CXMLFileTime(const CXMLFileTime&) = delete;
  CXMLFileTime& operator=(const CXMLFileTime&) = delete;

  void Clear();

  // Takes the moment from a text; null leaves the value empty.
  void SetText(const char* text);

  // Takes the moment from a file time; null leaves the value empty.
  void SetFileTime(const FILETIME* time);

  bool IsEmpty() const { return fileTime.dwLowDateTime == 0 && fileTime.dwHighDateTime == 0; }

  // The moment in either form; null when empty. The pointer is valid until the value changes.
  const FILETIME* AsFileTime() const { return IsEmpty() ? nullptr : &fileTime; }
  const SYSTEMTIME* AsSystemTime() const { return IsEmpty() ? nullptr : &systemTime; }

  // 1 when this value is empty, else -1, 0 or 1 as it is earlier than, equal to or later than `other`.
  LONG CompareTo(const FILETIME* other) const;

  // Writes the moment as text, always in UTC: 2002-06-25T23:45:00+00:00. Nothing happens when the value is empty.
  void Format();

  // What Format wrote last; null before.
  const char* GetText() const { return text.get(); }

  // The offset of the last zone designator that was read, in units of 100 nanoseconds.
  LONGLONG GetZoneOffset() const { return zoneOffset; }

 private:
  void ParseDate(const char* date);
  void ParseTime(char* time);
  void ApplyZone(const char* zone);

  FILETIME fileTime = {};
  SYSTEMTIME systemTime = {};
  OwnedText text;
  LONGLONG zoneOffset = 0;
};
