#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "advice/Explanation.h"
#include "advice/Outcome.h"

// The documents that the commands print with --json (docs/tool.md). Keys stand in the order in which they were put.
using Json = nlohmann::ordered_json;

Json ToJson(const PermitDocument& permit, const std::vector<Answer>& answers);
Json ToJson(const RunOutcome& outcome);

// Prints the document, and a line end.
void PrintJson(const Json& document);
