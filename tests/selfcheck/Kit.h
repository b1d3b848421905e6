#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

// Why some cases of a suite are not like the others.
enum class RuleKind {
  NeedsRegistration,  // they write the module's entries into the registry
  NeedsCertificates,  // they speak to the server over TLS
  StatesWine,         // they state what Wine does, and may fail on Windows
};

struct Rule {
  RuleKind kind;
  std::string suite;
  std::string cases;  // patterns, as --gtest_filter takes them
  std::string reason;
};

// What was unpacked: <root>\x64 and <root>\x86, each with norvik.dll, norvik.exe and the test programs in tests\; the pages
// that the tests read in project\; the web server in server\; and suites.json, which says what there is to run.
struct Kit {
  std::filesystem::path root;
  std::string version;
  std::map<std::string, std::vector<std::string>> suites;  // their names by width
  std::vector<Rule> rules;

  std::filesystem::path Program(const std::string& width, const std::string& suite) const {
    return root / width / "tests" / (suite + ".exe");
  }
};

// Throws std::runtime_error with one sentence when suites.json is missing or is not what it should be.
Kit ReadKit(const std::filesystem::path& root);
