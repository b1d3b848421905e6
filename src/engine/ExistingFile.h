#pragma once

#include "common/Windows.h"

#include "engine/FileDecision.h"
#include "engine/RunObserver.h"
#include "xml/XMLFileTime.h"

// What is done with a file that already stands where a command is to write. Log lines name the source file CopyCommand.

// Applies the policy to the existing file `fileName`: decides (DecideOnExistingFile) and carries the decision out.
// `observer` (may be null) hears of the decision. S_OK when the file may be written now, S_FALSE when it is to be left
// alone, kCancelledResult for Cancel, else the failure.
[[nodiscard]] HRESULT HandleExistingFile(IfFileExists policy, const char* fileName, bool force, const CXMLFileTime& time,
                                         Machine& machine = ThisMachine(), RunObserver* observer = nullptr);

// Makes sure that the file may be overwritten: with `force` a read-only or hidden one loses these two attributes (a failure
// of that shows in the log only), without it is refused with E_ACCESSDENIED.
[[nodiscard]] HRESULT PrepareOverwrite(const char* fileName, bool force, Machine& machine = ThisMachine());

// Moves the file aside, to the first free name of 000 to 999 in place of its extension; the file of 999 is given up when all
// are taken. S_OK or the system's code. A folder is not moved: E_ACCESSDENIED.
[[nodiscard]] HRESULT RenameExistingFile(const char* fileName, Machine& machine = ThisMachine());
