#pragma once

#include "common/Windows.h"

#include "common/Handles.h"
#include "common/Text.h"

// What a transfer writes to: a file, or a cookie that is set when the writer is closed. Operations answer false after a
// failure and leave the reason in the thread's last error.
class DestinationWriter {
 public:
  // `destinationName` (a path, or the URL of a cookie) has to outlive the writer.
  DestinationWriter(const char* destinationName, bool isCookieDestination)
      : name(destinationName), isCookie(isCookieDestination) {}

  // Creates the file alone and anew, with `attributes`; an existing one is emptied. A name that stands for a device is
  // refused (ERROR_INVALID_NAME).
  bool Create(DWORD attributes);

  // Appends the bytes. A system that takes fewer of them has failed (ERROR_WRITE_FAULT).
  bool Write(const void* bytes, DWORD count);

  // Sets the creation, last-access and last-write time of the file, or the expiry of the cookie.
  bool SetTime(const FILETIME& newTime);

  // Closes the file, or sets the cookie. Nothing happens when nothing was created.
  bool Close();

  bool IsCreated() const { return isCreated; }

  // Deletes the file that was created, a read-only one too. The writer has to be closed.
  void Delete();

 private:
  bool CreateFileAnew(DWORD attributes);
  bool CreateCookie();
  bool AppendToCookie(const void* bytes, DWORD count);
  bool SetCookie();

  const char* name;
  bool isCookie;
  bool isCreated = false;
  FileHandle file;
  OwnedText cookieValue;
  std::size_t cookieLength = 0;
  std::size_t cookieCapacity = 0;
  FILETIME cookieExpiry = {};
};
