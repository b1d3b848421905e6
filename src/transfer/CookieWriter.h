#pragma once

#include <cstddef>

#include "common/Text.h"
#include "transfer/DestinationWriter.h"

// Collects the value of a cookie, which is set when the writer is closed, also after a transfer that failed.
class CookieWriter : public DestinationWriter {
 public:
  // `cookieURL` has to outlive the writer.
  explicit CookieWriter(const char* cookieURL) : url(cookieURL) {}

  // Without memory: ERROR_OUTOFMEMORY, here and in what follows.
  bool Create(DWORD attributes) override;
  bool Write(const void* bytes, DWORD count) override;

  // The cookie's expiry; zero, as before, is none.
  bool SetTime(const FILETIME& newTime) override;

  // Sets the cookie from the text that came (CookieText.h).
  bool Close() override;

  // A cookie that was set stays.
  void Delete() override {}

 private:
  const char* url;
  OwnedText value;  // zero-terminated; null before and after
  std::size_t length = 0;
  std::size_t capacity = 0;
  FILETIME expiry = {};
};
