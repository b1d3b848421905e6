#pragma once

#include "common/Windows.h"

// A Windows error number as a result code: a positive number n gives 0x80070000 with n's low 16 bits, any other value is
// used as it is.
HRESULT ResultFromError(LONG error);

// The result code of the call that has just failed. Some calls fail without leaving an error number; that is E_FAIL, so that
// a failure never reads as success.
HRESULT ResultFromLastError();
