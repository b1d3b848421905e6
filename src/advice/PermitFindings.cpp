#include "advice/PermitFindings.h"

#include <algorithm>

#include "advice/Document.h"
#include "advice/InvalidDocument.h"
#include "advice/KeptLog.h"
#include "advice/Words.h"
#include "common/ModulePath.h"
#include "transfer/Transfer.h"

namespace {

std::wstring FolderOf(const std::wstring& path) {
  return path.substr(0, path.find_last_of(L"\\/"));
}

void AddWriter(const std::wstring& path, const char* words, const Surroundings& surroundings, Findings& findings) {
  const std::string writer = surroundings.WriterOf(path);
  if (!writer.empty()) {
    findings.push_back(
        {kFileWritable.level, kFileWritable.code, 0, "",
         Quoted(writer) + " may change " + words + " " + Quoted(Utf8(path)) +
             ", and with it what every page may do here. Let only administrators and the system write there."});
  }
}

// Who may change a file on the web, its server alone knows.
void AddWriters(const PermitDocument& permit, const Surroundings& surroundings, Findings& findings) {
  if (!IsOnTheWeb(permit.Location())) {
    AddWriter(permit.Location(), "this file,", surroundings, findings);
    AddWriter(FolderOf(permit.Location()), "its folder,", surroundings, findings);
  }
  if (*GetModulePath())
    AddWriter(WideFromAnsi(GetModulePath()), "the module,", surroundings, findings);
}

// What the module makes of such an entry is another text, with question marks in it.
void AddLostCharacters(const PermitDocument& permit, Findings& findings) {
  for (const PermitEntry& entry : permit.Entries()) {
    if (!IsInCodePage(entry.text))
      findings.push_back(FindingAbout(
          entry, kCharactersLost,
          "This has characters that the code page of this machine lacks, and the module reads others "
          "in their place. Use a name without them."));
  }
}

}  // namespace

std::string Quoted(const std::string& text) {
  return "'" + WithoutCredentials(text) + "'";
}

Finding FindingAbout(const PermitEntry& entry, const FindingKind& kind, const std::string& message) {
  const std::string& shown = entry.text.empty() ? entry.element : entry.text;
  return {kind.level, kind.code, entry.line, WithoutCredentials(shown), message};
}

Finding CoveredFinding(const FindingKind& kind, const PermitEntry& entry, const PermitEntry& by) {
  return FindingAbout(entry, kind,
                      Quoted(by.text.empty() ? by.element : by.text) + " on line " + std::to_string(by.line) +
                          " permits all of this already. Remove this entry, or the other one if it permits too much.");
}

std::vector<const PermitEntry*> TakenEntries(const PermitDocument& permit, EntryKind kind) {
  std::vector<const PermitEntry*> taken;
  for (const PermitEntry& entry : permit.Entries()) {
    if (entry.kind == kind && entry.item)
      taken.push_back(&entry);
  }
  return taken;
}

Findings FindingsOf(const PermitDocument& permit, const Surroundings& surroundings) {
  const KeptLog log;
  Findings findings;
  AddWriters(permit, surroundings, findings);
  if (permit.IsUsable()) {
    AddLostCharacters(permit, findings);
    AddURLFindings(permit, surroundings, findings);
    AddExtensionFindings(permit, surroundings, findings);
    AddFolderFindings(permit, surroundings, findings);
  } else {
    findings.push_back(WhyInvalid(permit));
  }
  std::stable_sort(
      findings.begin(), findings.end(), [](const Finding& one, const Finding& other) { return one.line < other.line; });
  return findings;
}
