#include "advice/FailureReport.h"

#include <algorithm>

#include "advice/Document.h"
#include "advice/Explanation.h"
#include "advice/Words.h"

namespace {

std::string WithFullStop(const std::string& text) {
  return text.empty() || text.back() == '.' ? text : text + ".";
}

bool HasFailed(const CommandOutcome& command) {
  return FAILED(command.result);
}

std::string CountOfFailures(const RunOutcome& outcome) {
  const auto failed = std::count_if(outcome.commands.begin(), outcome.commands.end(), HasFailed);
  return std::to_string(failed) + " of " + std::to_string(outcome.commands.size());
}

// What the permission file says to the first question that it does not answer with yes.
std::string NearestEntry(const PermitDocument& permit, const std::vector<Question>& questions) {
  for (const Question& question : questions) {
    const Answer answer = Explain(permit, question);
    if (answer.isPermitted)
      continue;
    if (!answer.nearest)
      return "The permission file of this computer permits nothing of this kind.";
    const PermitEntry& entry = *answer.nearest->entry;
    const std::string text = entry.text.empty() ? entry.element : entry.text;
    return "The entry of the permission file that comes nearest is '" + WithoutCredentials(text) + "' on line " +
           std::to_string(entry.line) + ". " + answer.nearest->message;
  }
  return {};
}

// Nothing more is said when the permission file cannot be read any longer, or the module cannot read what is asked.
void AddNearestEntry(const std::wstring& permitFile, const std::vector<Question>& questions, FailureReport& report) {
  if (questions.empty())
    return;
  try {
    const PermitDocument permit(permitFile.empty() ? DefaultPermitPath() : permitFile);
    const std::string nearest = permit.IsUsable() ? NearestEntry(permit, questions) : std::string();
    if (!nearest.empty())
      report.details.push_back(nearest);
  } catch (const Unanswered&) {
    return;
  }
}

std::string TaskOf(const CommandOutcome& command) {
  const std::string task = command.command == "Open" ? "To be fetched and opened: " : "To be fetched: ";
  return task + command.source;
}

}  // namespace

FailureReport ReportOfFailure(const RunOutcome& outcome, const std::wstring& permitFile) {
  FailureReport report;
  if (FAILED(outcome.result)) {
    report.headline = "Nothing was installed or opened.";
    report.details = {"To be carried out: " + outcome.manifest, WithFullStop(outcome.reason)};
    AddNearestEntry(permitFile, outcome.questions, report);
    return report;
  }
  const auto first = std::find_if(outcome.commands.begin(), outcome.commands.end(), HasFailed);
  if (first == outcome.commands.end()) {
    report.headline = "Not everything was done.";
    return report;
  }
  report.headline = CountOfFailures(outcome) + " steps failed.";
  report.details = {"Step " + std::to_string(first->number) + ". " + TaskOf(*first), WithFullStop(first->reason)};
  AddNearestEntry(permitFile, first->questions, report);
  return report;
}
