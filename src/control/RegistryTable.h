#pragma once

#include "common/Windows.h"

// The registration of last resort: a fixed table of keys below HKEY_CLASSES_ROOT, for a system whose registrar does not
// work. It names the class by another text than the script does and writes no path for the server, so that what it registers
// is known but cannot be loaded until the script has been run.

// Writes the rows in order. The first failure takes the rows written so far away again and is returned as a result code.
[[nodiscard]] HRESULT WriteRegistryTable();

// Deletes the keys of all rows. A key that is not there is no failure; the first other failure is returned.
[[nodiscard]] HRESULT DeleteRegistryTable();
