#include "tool/Report.h"

#include <fmt/format.h>

#include "advice/Words.h"
#include "tool/Console.h"

namespace {

constexpr std::size_t kIndent = 4;

std::string EntryText(const PermitEntry& entry) {
  return fmt::format("'{}' on line {}", WithoutCredentials(entry.text), entry.line);
}

std::string WhatBecomes(const CommandOutcome& command) {
  const std::string destination = command.destination.value_or("");
  switch (command.action) {
    case CommandAction::Write:
      return "writes " + destination;
    case CommandAction::Replace:
      return "replaces " + destination;
    case CommandAction::Leave:
      return "leaves " + destination + " as it is";
    case CommandAction::MoveAside:
      return "writes " + destination + ", moves the old file to " + command.movedTo.value_or("");
    case CommandAction::Cancel:
      return "is cancelled by " + destination;
    case CommandAction::Cache:
      return "writes a file of the Internet cache";
    case CommandAction::Cookie:
      return "writes a cookie";
    case CommandAction::Refuse:
      break;
  }
  return destination.empty() ? "is refused" : "is refused because of " + destination;
}

std::string WordFor(HRESULT hr) {
  return FAILED(hr) ? InColour(Colour::Red, "FAILED") : InColour(Colour::Green, "ok    ");
}

Colour ColourOf(FindingLevel level) {
  switch (level) {
    case FindingLevel::Error:
      return Colour::Red;
    case FindingLevel::Warning:
      return Colour::Yellow;
    case FindingLevel::Note:
      break;
  }
  return Colour::Grey;
}

Colour ColourOf(DoctorStatus status) {
  switch (status) {
    case DoctorStatus::Ok:
      return Colour::Green;
    case DoctorStatus::Warning:
      return Colour::Yellow;
    case DoctorStatus::Failed:
      return Colour::Red;
    case DoctorStatus::Skipped:
      break;
  }
  return Colour::Grey;
}

}  // namespace

std::string ReportOf(const Finding& finding) {
  const std::string place = finding.line ? fmt::format(" on line {}", finding.line) : "";
  const std::string entry = finding.entry.empty() ? "" : fmt::format(": '{}'", WithoutCredentials(finding.entry));
  return fmt::format("{} {}{}{}\n", InColour(ColourOf(finding.level), fmt::format("{:7}", NameOf(finding.level))),
                     finding.code, place, entry) +
         Paragraph(kIndent, finding.message);
}

std::string ReportOf(const std::wstring& folder, const std::vector<KitFile>& files) {
  std::string report;
  for (const KitFile& file : files)
    report += fmt::format("{}\\{}\n", Utf8(folder), file.name) + Paragraph(kIndent, file.purpose);
  return report;
}

std::string ReportOf(const DoctorCheck& check) {
  return fmt::format("{} {}\n", InColour(ColourOf(check.status), fmt::format("{:7}", NameOf(check.status))), check.name) +
         Paragraph(kIndent, check.detail);
}

std::string ReportOf(const Answer& answer) {
  std::string report = fmt::format(
      "{} {} {}\n", answer.isPermitted ? InColour(Colour::Green, "permitted") : InColour(Colour::Red, "refused  "),
      NameOf(answer.question.kind), answer.asked);
  if (answer.understood != answer.asked)
    report += Paragraph(kIndent, "understood as " + answer.understood);
  if (answer.by)
    report += Paragraph(kIndent, "by the entry " + EntryText(*answer.by));
  if (answer.nearest) {
    report += Paragraph(kIndent, fmt::format("the nearest entry is {} ({})", EntryText(*answer.nearest->entry),
                                             NameOf(answer.nearest->reason)));
    report += Paragraph(kIndent, answer.nearest->message);
  } else if (!answer.isPermitted) {
    report += Paragraph(kIndent, "the file has no entry of this kind");
  }
  return report;
}

std::string ReportOf(const CommandOutcome& command) {
  std::string report = fmt::format(
      "{} {} {} {} (line {})\n", WordFor(command.result), command.number, command.command, command.source, command.line);
  report += Paragraph(kIndent, WhatBecomes(command));
  if (!command.reason.empty())
    report += Paragraph(kIndent, fmt::format("{} ({})", command.reason, ResultName(command.result)));
  return report;
}

std::string SummaryOf(const RunOutcome& outcome) {
  std::string summary = fmt::format("{} {}\n", ResultName(outcome.result), outcome.manifest);
  if (!outcome.reason.empty())
    summary += Paragraph(kIndent, outcome.reason);
  if (outcome.navigate)
    summary += Paragraph(kIndent, "browser: " + *outcome.navigate);
  if (!outcome.log.empty())
    summary += Paragraph(kIndent, "log: " + outcome.log);
  return summary;
}
