#include "selfcheck/Report.h"

#include <algorithm>
#include <map>

namespace {

using Json = nlohmann::ordered_json;

struct Counts {
  std::size_t passed = 0;
  std::size_t failed = 0;
  std::size_t expected = 0;
  std::size_t leftOut = 0;

  void Add(const SuiteResult& suite) {
    passed += static_cast<std::size_t>(suite.passed);
    failed += suite.failed.size();
    expected += suite.expected.size();
    leftOut += suite.leftOut.size();
  }
};

Counts TotalOf(const Report& report) {
  Counts counts;
  for (const SuiteResult& suite : report.suites)
    counts.Add(suite);
  return counts;
}

std::string Sentence(const Counts& counts) {
  std::string text = std::to_string(counts.passed) + " passed, " + std::to_string(counts.failed) + " failed";
  if (counts.expected > 0)
    text += ", " + std::to_string(counts.expected) + " failed that state what Wine does";
  if (counts.leftOut > 0)
    text += ", " + std::to_string(counts.leftOut) + " left out";
  return text;
}

Json JsonOf(const Machine& machine) {
  Json json = {{"windows", machine.windows}, {"product", machine.product}};
  if (!machine.wine.empty())
    json["wine"] = machine.wine;
  json["files"] = machine.files;
  json["ansiCodePage"] = machine.ansiCodePage;
  json["oemCodePage"] = machine.oemCodePage;
  json["locale"] = machine.locale;
  json["timeZone"] = machine.timeZone;
  json["elevated"] = machine.isElevated;
  return json;
}

Json JsonOf(const std::vector<FailedCase>& cases) {
  Json list = Json::array();
  for (const FailedCase& one : cases) {
    list.push_back({{"case", one.name}, {"output", one.output}});
    if (!one.reason.empty())
      list.back()["reason"] = one.reason;
  }
  return list;
}

Json JsonOf(const SuiteResult& suite) {
  Json leftOut = Json::array();
  for (const LeftOutCase& one : suite.leftOut)
    leftOut.push_back({{"case", one.name}, {"reason", one.reason}});
  return {{"width", suite.width},
          {"suite", suite.name},
          {"seconds", suite.seconds},
          {"passed", suite.passed},
          {"failed", JsonOf(suite.failed)},
          {"statesWine", JsonOf(suite.expected)},
          {"leftOut", leftOut}};
}

std::string Indented(const std::string& text) {
  std::string indented;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    indented += "    " + text.substr(start, end - start) + "\n";
    start = end + 1;
  }
  return indented;
}

std::string TextOf(const Machine& machine) {
  std::string text = "Windows " + machine.windows + " (" + machine.product + ")\n";
  if (!machine.wine.empty())
    text += "Wine " + machine.wine + "\n";
  for (const auto& [name, version] : machine.files)
    text += name + " " + version + "\n";
  text += "Code pages " + std::to_string(machine.ansiCodePage) + " and " + std::to_string(machine.oemCodePage) +
          ", locale " + machine.locale + ", time zone " + machine.timeZone + "\n";
  return text + (machine.isElevated ? "With" : "Without") + " an administrator's rights\n";
}

std::string TextOf(const SuiteResult& suite, const std::vector<FailedCase>& cases) {
  std::string text;
  for (const FailedCase& one : cases) {
    text += suite.width + " " + suite.name + " " + one.name + (one.reason.empty() ? "" : ": " + one.reason) + "\n";
    text += Indented(one.output);
  }
  return text;
}

// The cases of a suite by the reason for which they were left out.
std::string LeftOutText(const SuiteResult& suite) {
  std::map<std::string, std::string> byReason;
  for (const LeftOutCase& one : suite.leftOut)
    byReason[one.reason] += one.name + "\n";
  std::string text;
  for (const auto& [reason, names] : byReason)
    text += suite.width + " " + suite.name + ": " + reason + "\n" + Indented(names);
  return text;
}

std::string Section(const char* title, const std::string& text) {
  return text.empty() ? text : std::string("\n") + title + "\n\n" + text;
}

}  // namespace

bool Report::IsGood() const {
  const Counts counts = TotalOf(*this);
  return problems.empty() && counts.failed == 0 && counts.passed > 0;
}

std::string CountsOf(const SuiteResult& suite) {
  Counts counts;
  counts.Add(suite);
  return Sentence(counts);
}

std::string CountsOf(const Report& report) {
  return Sentence(TotalOf(report));
}

Json JsonOf(const Report& report) {
  Json suites = Json::array();
  for (const SuiteResult& suite : report.suites)
    suites.push_back(JsonOf(suite));
  const Counts counts = TotalOf(report);
  return {{"version", report.version},
          {"began", report.began},
          {"registered", report.hasRegistered},
          {"machine", JsonOf(report.machine)},
          {"problems", report.problems},
          {"suites", suites},
          {"total",
           {{"passed", counts.passed},
            {"failed", counts.failed},
            {"statesWine", counts.expected},
            {"leftOut", counts.leftOut}}}};
}

std::string TextOf(const Report& report) {
  std::string problems, suites, failed, expected, leftOut;
  for (const std::string& problem : report.problems)
    problems += problem + "\n";
  for (const SuiteResult& suite : report.suites) {
    suites += suite.width + " " + suite.name + ": " + CountsOf(suite) + "\n";
    failed += TextOf(suite, suite.failed);
    expected += TextOf(suite, suite.expected);
    leftOut += LeftOutText(suite);
  }
  return "Norvik " + report.version + ", self-check of " + report.began + "\n\n" + TextOf(report.machine) +
         Section("PROBLEMS", problems) + Section("SUITES", suites) + Section("FAILED", failed) +
         Section("FAILED, AND STATE WHAT WINE DOES", expected) + Section("LEFT OUT", leftOut) + "\n" + CountsOf(report) +
         "\n";
}
