#pragma once

#include <string>

#include "advice/Explanation.h"
#include "advice/Outcome.h"

// The answers as text for a reader: lines of at most 100 columns, as far as names allow.
std::string ReportOf(const Answer& answer);
std::string ReportOf(const CommandOutcome& command);

// What a run came to, behind its commands.
std::string SummaryOf(const RunOutcome& outcome);
