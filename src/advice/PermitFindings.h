#pragma once

#include "advice/Finding.h"
#include "advice/FindingKind.h"
#include "advice/PermitDocument.h"
#include "advice/Surroundings.h"

// What the owner of a permission file should know about it, by lines: entries that permit more than they seem to, nothing,
// or what another one permits already; and who else may change the file. What an entry permits is asked of the module's own
// classes. The log gets nothing. Of a file that the module refuses: why, and who may change it.
Findings FindingsOf(const PermitDocument& permit, const Surroundings& surroundings = ThisMachinesSurroundings());

// The parts, which stand in a file each. The document is usable.
void AddURLFindings(const PermitDocument& permit, const Surroundings& surroundings, Findings& findings);
void AddExtensionFindings(const PermitDocument& permit, const Surroundings& surroundings, Findings& findings);
void AddFolderFindings(const PermitDocument& permit, const Surroundings& surroundings, Findings& findings);

// A finding about an entry.
Finding FindingAbout(const PermitEntry& entry, const FindingKind& kind, const std::string& message);

// That an entry is covered by another one, which the message names.
Finding CoveredFinding(const FindingKind& kind, const PermitEntry& entry, const PermitEntry& by);

// The entries of a kind that the module has taken.
std::vector<const PermitEntry*> TakenEntries(const PermitDocument& permit, EntryKind kind);

// The text in the quotes of messages, without user names and passwords.
std::string Quoted(const std::string& text);
