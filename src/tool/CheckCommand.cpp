#include <algorithm>

#include "advice/Document.h"
#include "advice/ExitCode.h"
#include "advice/ManifestFindings.h"
#include "advice/Outline.h"
#include "advice/PermitFindings.h"
#include "advice/Words.h"
#include "tool/Commands.h"
#include "tool/Console.h"
#include "tool/Json.h"
#include "tool/Report.h"

namespace {

constexpr char kPermitRoot[] = "VantorPermissions";

bool IsThere(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

CheckedFile CheckPermit(const LocalDocument& document) {
  const PermitDocument permit(document);
  CheckedFile checked;
  checked.isValid = permit.IsUsable();
  checked.findings = FindingsOf(permit);
  return checked;
}

// The plan tells each command's verdict. A permission file that cannot be used is the other file's finding.
CheckedFile CheckManifest(const LocalDocument& document, const std::wstring& permitFile) {
  const ManifestDocument manifest(document);
  CheckedFile checked;
  checked.isManifest = true;
  checked.isValid = manifest.IsUsable();
  checked.findings = FindingsOf(manifest);
  if (checked.isValid && IsThere(permitFile) && PermitDocument(permitFile).IsUsable())
    checked.plan = PlanManifest(document.Place(), permitFile);
  return checked;
}

// What the root does not tell, the rules for a manifest tell.
CheckedFile Check(const std::wstring& place, const std::wstring& permitFile) {
  const LocalDocument document(place);
  const bool isPermit = OutlineOf(ReadDocument(document.Path())).root.name == kPermitRoot;
  CheckedFile checked = isPermit ? CheckPermit(document) : CheckManifest(document, permitFile);
  checked.file = WithoutCredentials(Utf8(place));
  return checked;
}

bool IsSound(const CheckedFile& file) {
  return file.isValid && std::none_of(file.findings.begin(), file.findings.end(), [](const Finding& finding) {
           return finding.level == FindingLevel::Error;
         });
}

void PrintReport(const CheckedFile& file) {
  const std::string verdict = !file.isValid ? "not valid" : IsSound(file) ? "valid and sound" : "valid, not sound";
  Print(InColour(IsSound(file) ? Colour::Green : Colour::Red, verdict) + ": " + file.file + " (" +
        (file.isManifest ? "manifest" : "permission file") + ")\n");
  for (const Finding& finding : file.findings)
    Print(ReportOf(finding));
  if (!file.plan)
    return;
  for (const CommandOutcome& command : file.plan->commands)
    Print(ReportOf(command));
  if (FAILED(file.plan->result))
    Print(SummaryOf(*file.plan));
}

}  // namespace

int CheckCommand(const Arguments& arguments) {
  const std::wstring permitFile = arguments.permit.empty() ? DefaultPermitPath() : arguments.permit;
  std::vector<std::wstring> places = arguments.files;
  if (places.empty())
    places.push_back(permitFile);
  std::vector<CheckedFile> files;
  files.reserve(places.size());
  for (const std::wstring& place : places)
    files.push_back(Check(place, permitFile));
  if (arguments.isJson)
    PrintJson(ToJson(files));
  else
    std::for_each(files.begin(), files.end(), PrintReport);
  return std::all_of(files.begin(), files.end(), IsSound) ? kYes : kNo;
}
