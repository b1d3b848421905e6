#pragma once

#include "common/Windows.h"

// Where a transfer's bytes come from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  // Reads up to `size` bytes; `count` is 0 at the end of the data. False after a failure, with the reason in the thread's
  // last error.
  virtual bool Read(void* buffer, DWORD size, DWORD& count) = 0;
};
