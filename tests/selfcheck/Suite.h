#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "selfcheck/Kit.h"

// What decides how the suites are run.
struct SuiteSettings {
  bool mayRegister = false;
  bool hasCertificates = false;
  unsigned limitSeconds = 0;           // for one start of one program
  std::filesystem::path outputFolder;  // for what the programs write
};

struct FailedCase {
  std::string name;  // "Suite.Case", or what else failed
  std::string output;
  std::string reason;  // of one that states what Wine does
};

struct LeftOutCase {
  std::string name;
  std::string reason;
};

struct SuiteResult {
  std::string width;
  std::string name;
  double seconds = 0;
  int passed = 0;
  std::vector<FailedCase> failed;
  std::vector<FailedCase> expected;  // failed, and state what Wine does
  std::vector<LeftOutCase> leftOut;
};

// Runs one test program. A case in which it crashes, or runs over its limit, has failed, and the program is run again
// without it. All texts are UTF-8. Throws nothing: what goes wrong is a failure of the suite.
SuiteResult RunSuite(const Kit& kit, const std::string& width, const std::string& name, const SuiteSettings& settings);
