#pragma once

#include <cstdio>
#include <string>

#include "xml/XMLFileTime.h"

constexpr char kMidnight[] = "2002-06-25T00:00:00.000";
constexpr char kLocal[] = "2002-06-25T15:45:00.000";

// "2002-06-25T23:45:00.000", or "empty".
inline std::string Show(const CXMLFileTime& time) {
  const SYSTEMTIME* const s = time.AsSystemTime();
  if (!s)
    return "empty";
  char text[40];
  snprintf(text, sizeof(text), "%04d-%02d-%02dT%02d:%02d:%02d.%03d", s->wYear, s->wMonth, s->wDay, s->wHour, s->wMinute,
           s->wSecond, s->wMilliseconds);
  return text;
}

// The same, from the file time.
inline std::string ShowFileTime(const CXMLFileTime& time) {
  if (!time.AsFileTime())
    return "empty";
  const CXMLFileTime again(time.AsFileTime());
  return Show(again);
}
