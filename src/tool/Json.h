#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "advice/BrowserKit.h"
#include "advice/BrowserLaunch.h"
#include "advice/DoctorCheck.h"
#include "advice/Explanation.h"
#include "advice/Finding.h"
#include "advice/Outcome.h"

// The documents that the commands print with --json (docs/tool.md). Keys stand in the order in which they were put.
using Json = nlohmann::ordered_json;

// One of the files that check was asked about.
struct CheckedFile {
  std::string file;
  bool isManifest = false;
  bool isValid = false;
  Findings findings;
  std::optional<RunOutcome> plan;  // of a manifest, when there is a permission file
};

Json ToJson(const std::vector<CheckedFile>& files);
Json ToJson(const DoctorChecks& checks);
Json ToJson(const PermitDocument& permit, const std::vector<Answer>& answers);
Json ToJson(const RunOutcome& outcome);
Json ToJson(const BrowserLaunch& launch, const DoctorCheck& check);
Json ToJson(const std::wstring& folder, const std::vector<KitFile>& files);

// Prints the document, and a line end.
void PrintJson(const Json& document);
