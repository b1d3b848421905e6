#pragma once

#include <string>
#include <vector>

#include "advice/Outcome.h"

// What there is to say of a run that failed to somebody who knows neither manifests nor permission files. UTF-8, without
// user names and passwords.
struct FailureReport {
  std::string headline;              // what became of it, in one sentence
  std::vector<std::string> details;  // what was to be done, why it was not, and which entry came nearest; a paragraph each
};

// `outcome` is not S_OK. `permitFile` is the one of the run, empty for the one beside the program.
FailureReport ReportOfFailure(const RunOutcome& outcome, const std::wstring& permitFile);
