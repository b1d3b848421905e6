#include "selfcheck/Results.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "advice/Words.h"

namespace {

using Json = nlohmann::json;

std::string TextsOf(const Json& test, const char* list, const char* key) {
  std::string text;
  if (test.contains(list)) {
    for (const Json& entry : test.at(list))
      text += (text.empty() ? "" : "\n") + entry.at(key).get<std::string>();
  }
  return text;
}

void AddCase(const Json& test, const std::string& name, Results& results) {
  if (test.contains("failures"))
    results.failed[name] = TextsOf(test, "failures", "failure");
  else if (test.value("result", "") == "SKIPPED")
    results.skipped[name] = TextsOf(test, "skipped", "message");
  else if (test.value("status", "") == "RUN" && test.value("result", "") == "COMPLETED")
    results.passed.push_back(name);
  else
    results.failed[name] = "It did not run.";
}

std::string WithoutLineEnd(std::string line) {
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  return line;
}

// The name in a line such as "[ RUN      ] Suite.Case", or "[  FAILED  ] Suite.Case, where ... (3 ms)".
std::string NameIn(const std::string& line) {
  const std::string rest = line.substr(line.find(']') + 2);
  return rest.substr(0, rest.find_first_of(" ,"));
}

bool Begins(const std::string& line, const char* text) {
  return line.rfind(text, 0) == 0;
}

}  // namespace

std::optional<Results> ReadResults(const std::filesystem::path& path) {
  const Json json = Json::parse(ReadText(path), nullptr, false);
  if (json.is_discarded())
    return std::nullopt;
  Results results;
  for (const Json& suite : json.at("testsuites")) {
    for (const Json& test : suite.at("testsuite"))
      AddCase(test, suite.at("name").get<std::string>() + "." + test.at("name").get<std::string>(), results);
  }
  return results;
}

Traces ReadTraces(const std::string& output) {
  Traces traces;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    line = WithoutLineEnd(line);
    if (Begins(line, "[ RUN      ] ")) {
      traces.lastCase = NameIn(line);
      traces.lastCaseText.clear();
    } else if (Begins(line, "[       OK ] ") || Begins(line, "[  FAILED  ] ")) {
      if (line[3] == 'F')
        traces.failed.push_back(NameIn(line));
      else
        ++traces.passed;
      traces.lastCase.clear();
      traces.lastCaseText.clear();
    } else {
      traces.lastCaseText += line + "\n";
    }
  }
  return traces;
}

std::vector<std::string> ReadList(const std::string& output) {
  std::vector<std::string> names;
  std::string suite;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    line = WithoutLineEnd(line);
    line = line.substr(0, line.find("  #"));
    if (Begins(line, "  "))
      names.push_back(suite + line.substr(2));
    else
      suite = line;
  }
  return names;
}

std::string ReadText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return Utf8(WideFromUtf8(text.str()));
}
