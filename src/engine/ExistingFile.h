#pragma once

#include "common/Windows.h"

#include "xml/XMLFileTime.h"

// What is done with a file that already stands where a command is to write. Log lines name the source file CopyCommand.

// The policies of a manifest; any other number counts as Overwrite.
enum class IfFileExists : LONG { Overwrite = 0, Skip = 1, Cancel = 2, Rename = 3, Update = 4 };

constexpr HRESULT kCancelledResult = static_cast<HRESULT>(0x800704C7);

// Applies the policy to the existing file `fileName`. `time` is the command's own time, for Update: the file is replaced
// when it is older, or when the command has no time. `force` lets a read-only or hidden file be replaced. S_OK when the file
// may be written now, S_FALSE when it is to be left alone, kCancelledResult for Cancel, else the failure.
[[nodiscard]] HRESULT HandleExistingFile(IfFileExists policy, const char* fileName, bool force, const CXMLFileTime& time);

// Makes sure that the file may be overwritten: with `force` a read-only or hidden one loses these two attributes (a failure
// of that shows in the log only), without it is refused with E_ACCESSDENIED.
[[nodiscard]] HRESULT PrepareOverwrite(const char* fileName, bool force);

// Moves the file aside, to the first free name of 000 to 999 in place of its extension; the file of 999 is given up when all
// are taken. S_OK or the system's code. A folder is not moved: E_ACCESSDENIED.
[[nodiscard]] HRESULT RenameExistingFile(const char* fileName);
