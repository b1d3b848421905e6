#pragma once

#include "common/Windows.h"

#include <string>

#include "advice/FailureReport.h"

// Shows what failed, until it is closed, with a button for the log when `log` (a path) is not empty. Where no window can be
// made, nothing is shown.
void ShowFailure(const FailureReport& report, const std::string& log);
