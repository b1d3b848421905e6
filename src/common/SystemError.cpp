#include "common/SystemError.h"

HRESULT ResultFromError(LONG error) {
  if (error <= 0)
    return error;
  return static_cast<HRESULT>(0x80070000u | (static_cast<DWORD>(error) & 0xFFFFu));
}

HRESULT ResultFromLastError() {
  const HRESULT hr = ResultFromError(static_cast<LONG>(GetLastError()));
  return FAILED(hr) ? hr : E_FAIL;
}
