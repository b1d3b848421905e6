#pragma once

#include <string>
#include <vector>

#include "torture/CallCounter.h"

// Where in its work the module makes a call.
struct Situation {
  // The step of its work: "control", "permissions", "permit copy", "permit document", "permit URL" and so on for each list
  // of the permission file, "run", "manifest copy", "manifest document", "Copy" and "Open" while these are collected, the
  // pattern that one of their elements is read by, "command" while they are carried out, "source copy" into the Internet
  // cache.
  std::string step;

  // Which call of the function it is, where a step has several: what it makes, what it asks for.
  std::string subject;

  // Whose elements are read: "Copy" or "Open".
  std::string element;
};

// One for each of the calls of a use in which nothing fails. What the log does has none.
std::vector<Situation> SituationsOf(const std::vector<FallibleCall>& calls);
