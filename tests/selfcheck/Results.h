#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

// What a test program wrote with --gtest_output=json:FILE.
struct Results {
  std::vector<std::string> passed;
  std::map<std::string, std::string> failed;   // with what the case told
  std::map<std::string, std::string> skipped;  // by the case itself, with its reason
};

// None when there is no whole file.
std::optional<Results> ReadResults(const std::filesystem::path& path);

// What the output of a program without results tells.
struct Traces {
  int passed = 0;
  std::vector<std::string> failed;
  std::string lastCase;      // the one that began and did not end; empty when there is none
  std::string lastCaseText;  // what came after its beginning
};
Traces ReadTraces(const std::string& output);

// The full names that --gtest_list_tests printed.
std::vector<std::string> ReadList(const std::string& output);

// A file's text as UTF-8: what is none becomes the replacement character. Empty when the file cannot be read.
std::string ReadText(const std::filesystem::path& path);
