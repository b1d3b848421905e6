#include "advice/PermitCheck.h"

#include <algorithm>

#include "advice/Document.h"
#include "advice/FindingKind.h"
#include "advice/Words.h"

namespace {

constexpr char kValid[] = "permit-valid";
constexpr char kSound[] = "permit-sound";
constexpr char kSafe[] = "permit-safe";

// The finding that others than administrators and the system may write the file, its folder or the module.
bool IsAboutSafety(const Finding& finding) {
  return finding.code == kFileWritable.code;
}

DoctorCheck ValidityOf(const PermitDocument& permit) {
  const std::string path = "'" + Utf8(permit.Location()) + "'";
  if (permit.IsUsable())
    return {kValid, DoctorStatus::Ok, path + " has " + std::to_string(permit.Entries().size()) + " entries."};
  const std::string reason = permit.Complaint().empty() ? ReasonText(permit.Code()) : permit.Complaint();
  return {kValid, DoctorStatus::Failed, path + " is not valid, so every run is refused. " + reason};
}

std::string Counted(std::ptrdiff_t count, const std::string& name) {
  return std::to_string(count) + " " + name + (count == 1 ? "" : "s");
}

std::string LineOf(const Finding& finding) {
  return finding.line > 0 ? "Line " + std::to_string(finding.line) + ": " : "";
}

std::ptrdiff_t CountOf(const Findings& findings, FindingLevel level) {
  return std::count_if(findings.begin(), findings.end(), [=](const Finding& finding) { return finding.level == level; });
}

// The worst of the findings, the first one of its level; null without any that counts.
const Finding* WorstOf(const Findings& findings) {
  for (const FindingLevel level : {FindingLevel::Error, FindingLevel::Warning}) {
    for (const Finding& finding : findings) {
      if (finding.level == level)
        return &finding;
    }
  }
  return nullptr;
}

DoctorStatus StatusOf(const Finding& finding) {
  return finding.level == FindingLevel::Error ? DoctorStatus::Failed : DoctorStatus::Warning;
}

DoctorCheck SoundnessOf(const Findings& findings) {
  const Finding* const worst = WorstOf(findings);
  if (!worst)
    return {kSound, DoctorStatus::Ok, "Nothing to mend."};
  return {kSound, StatusOf(*worst),
          Counted(CountOf(findings, FindingLevel::Error), "error") + ", " +
              Counted(CountOf(findings, FindingLevel::Warning), "warning") + ". " + LineOf(*worst) + worst->message +
              " 'norvik check' shows all."};
}

DoctorCheck SafetyOf(const Findings& findings) {
  const Finding* const worst = WorstOf(findings);
  if (!worst)
    return {kSafe, DoctorStatus::Ok, "Only administrators and the system may write the file, its folder and the module."};
  return {kSafe, StatusOf(*worst), worst->message};
}

DoctorChecks Skipped(DoctorChecks checks, const std::string& reason) {
  checks.push_back({kSound, DoctorStatus::Skipped, reason});
  checks.push_back({kSafe, DoctorStatus::Skipped, reason});
  return checks;
}

}  // namespace

DoctorChecks CheckPermit(const std::wstring& path, const PermitExaminer& findingsOf) try {
  const PermitDocument permit(path);
  DoctorChecks checks = {ValidityOf(permit)};
  if (!findingsOf)
    return Skipped(std::move(checks), "Nobody looked.");
  Findings findings = findingsOf(permit);
  const auto others = std::stable_partition(findings.begin(), findings.end(), IsAboutSafety);
  if (permit.IsUsable())
    checks.push_back(SoundnessOf(Findings(others, findings.end())));
  else
    checks.push_back({kSound, DoctorStatus::Skipped, "The permission file is not valid."});
  checks.push_back(SafetyOf(Findings(findings.begin(), others)));
  return checks;
} catch (const Unanswered& reason) {
  return Skipped(
      {{kValid, DoctorStatus::Failed, std::string("Without a permission file every run is refused. ") + reason.what()}},
      "The permission file cannot be read.");
}
