#pragma once

#include "common/Windows.h"

// Writes the module's registry entries: by the platform's registrar from the script in the module's resources, together with
// the type library; and, only if that fails, from the module's own table (RegistryTable.h). The type library is registered
// then as well, if it can be; S_OK or the failure of the table.
[[nodiscard]] HRESULT RegisterServer();

// Takes them away again, in the same two ways. Entries that are not there are no failure; S_OK or the failure of the table.
[[nodiscard]] HRESULT UnregisterServer();
