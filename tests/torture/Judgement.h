#pragma once

#include <string>
#include <vector>

#include "support/LogCapture.h"
#include "torture/CallCounter.h"
#include "torture/Scenario.h"
#include "torture/Situations.h"

// A use of the module in which nothing fails.
struct Undisturbed {
  Effects effects;
  std::vector<LogEntry> log;
  std::vector<FallibleCall> calls;
  std::vector<Situation> situations;  // of the calls
};

// What is known about a use of the module in which one call failed, or one and all behind it.
struct Trial {
  const Scenario* scenario;
  const Undisturbed* usual;
  std::size_t number;  // of the call
  bool andAllAfter;
  const CallCounter* counter;
  std::vector<LogEntry> log;
  Effects effects;

  const FallibleCall& Call() const { return usual->calls[number]; }
};

// What is wrong with it; empty when nothing is.
std::string Judge(const Trial& trial);
