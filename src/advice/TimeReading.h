#pragma once

#include <string>

// What the module makes of the text of a `FileTime`, when it is not what the text says.
struct TimeReading {
  enum class Verdict { AsItSays, Refused, Shifted };

  Verdict verdict;
  std::string taken;  // the moment that the module takes, as text in UTC; empty when there is none
  std::string meant;  // what a shifted text says; empty where that cannot be told
};

// Reads a text, which is in UTF-8, with the module's own class. A text says what its digits say: a date, a time of day that
// is midnight when it is left out, and the distance of its zone from UTC. Fractions of a second are dropped, as it is
// documented.
TimeReading ReadTime(const std::string& text);
