#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "selfcheck/Machine.h"
#include "selfcheck/Suite.h"

struct Report {
  std::string version;  // of the module
  std::string began;    // UTC
  bool hasRegistered = false;
  Machine machine;
  std::vector<SuiteResult> suites;
  std::vector<std::string> problems;  // what went wrong around the suites, a sentence each

  // Whether something passed, and nothing went wrong that should not.
  bool IsGood() const;
};

nlohmann::ordered_json JsonOf(const Report& report);
std::string TextOf(const Report& report);

// "12 passed, 1 failed", and what else there was.
std::string CountsOf(const SuiteResult& suite);
std::string CountsOf(const Report& report);
