#pragma once

#include <string>

#include "advice/BrowserKit.h"
#include "advice/DoctorCheck.h"
#include "advice/Explanation.h"
#include "advice/Finding.h"
#include "advice/Outcome.h"

// The answers as text for a reader: lines of at most 100 columns, as far as names allow.
std::string ReportOf(const Answer& answer);
std::string ReportOf(const Finding& finding);
std::string ReportOf(const DoctorCheck& check);
std::string ReportOf(const CommandOutcome& command);
std::string ReportOf(const std::wstring& folder, const std::vector<KitFile>& files);

// What a run came to, behind its commands.
std::string SummaryOf(const RunOutcome& outcome);
