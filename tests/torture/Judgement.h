#pragma once

#include <string>
#include <vector>

#include "support/LogCapture.h"
#include "torture/CallCounter.h"
#include "torture/Scenario.h"

// What is known about a use of the module in which one call failed, or one and all behind it.
struct Trial {
  const Scenario* scenario;
  FallibleCall call;
  bool andAllAfter;
  const CallCounter* counter;
  std::vector<LogEntry> log;
  Effects usual;
  Effects effects;
};

// What is wrong with it; empty when nothing is.
std::string Judge(const Trial& trial);
