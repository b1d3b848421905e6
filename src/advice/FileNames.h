#pragma once

#include <string>

// What the system makes of the names of files.

// Whether a name of a path ("aux", "nul.txt", "COM1 .x") is that of a device, on some version of the system: it then means
// the device in every folder.
bool IsDeviceName(const std::wstring& name);

// Whether the system drops the end of a name: a dot or a blank. "." and ".." are no names.
bool EndsInDot(const std::wstring& name);
