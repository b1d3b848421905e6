#pragma once

#include "common/Windows.h"

// The class object of the one class that the module serves. S_OK; CLASS_E_CLASSNOTAVAILABLE for any other class;
// E_NOINTERFACE; E_POINTER without a place for it; E_OUTOFMEMORY. `object` is null after a failure.
[[nodiscard]] HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object);
