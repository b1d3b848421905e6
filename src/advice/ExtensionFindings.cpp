// What an entry for extensions permits, and whether it permits anything.

#include "advice/Covering.h"
#include "advice/PermitFindings.h"
#include "permissions/SourceExtension.h"

namespace {

void Examine(const PermitEntry& entry, const CSourceExtension& none, const Surroundings& surroundings, Findings& findings) {
  const auto add = [&](const FindingKind& kind, const std::string& message) {
    findings.push_back(FindingAbout(entry, kind, message));
  };
  if (entry.item->Compare(&none) == 0)
    add(kExtensionEmpty,
        "This permits files whose names have no dot, or end in one: the system drops that dot, and 'tool.exe.' "
        "becomes 'tool.exe'. Remove the entry unless such files are meant.");
  else if (entry.text.find('.') != std::string::npos)
    add(kExtensionDot,
        "An extension is the text behind the last dot and has none itself: this entry permits nothing. Write " +
            Quoted(entry.text.substr(entry.text.rfind('.') + 1)) + ".");
  else if (surroundings.IsProgram(entry.text))
    add(kExtensionProgram,
        "The system runs such files. Keep this entry only if programs are to be brought here, and name "
        "sources that nobody else can write to.");
}

bool IsBefore(const CListItem* item, const CListItem* other) {
  return item->Compare(other) < 0;
}

}  // namespace

void AddExtensionFindings(const PermitDocument& permit, const Surroundings& surroundings, Findings& findings) {
  const std::vector<const PermitEntry*> entries = TakenEntries(permit, EntryKind::Extension);
  const CSourceExtension none("", nullptr);
  for (const PermitEntry* const entry : entries)
    Examine(*entry, none, surroundings, findings);
  for (const CoveredEntry& covered : FindCovered(entries, IsBefore))
    findings.push_back(CoveredFinding(kExtensionCovered, *covered.entry, *covered.by));
}
