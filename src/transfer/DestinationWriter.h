#pragma once

#include "common/Windows.h"

// What a transfer writes to. Operations answer false after a failure and leave the reason in the thread's last error.
class DestinationWriter {
 public:
  virtual ~DestinationWriter() = default;

  // Makes the destination anew; `attributes` are those of a file.
  virtual bool Create(DWORD attributes) = 0;

  // Appends the bytes.
  virtual bool Write(const void* bytes, DWORD count) = 0;

  virtual bool SetTime(const FILETIME& newTime) = 0;

  // Ends the writing. Nothing happens when nothing was created.
  virtual bool Close() = 0;

  // Takes away what was created, once it is closed.
  virtual void Delete() = 0;
};
