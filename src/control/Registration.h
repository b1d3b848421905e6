#pragma once

#include "common/Windows.h"

// Writes the module's registry entries: by the platform's registrar from the script in the module's resources, together with
// the type library; and, only if that fails, from the module's own table (RegistryTable.h). S_OK or the failure of the table
// or of the type library.
[[nodiscard]] HRESULT RegisterServer();

// Takes them away again, in the same two ways. Entries that are not there are no failure.
[[nodiscard]] HRESULT UnregisterServer();
