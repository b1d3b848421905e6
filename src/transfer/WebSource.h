#pragma once

#include "common/Windows.h"

#include <wininet.h>

#include "common/Handles.h"
#include "transfer/ByteSource.h"

struct InternetHandleTraits {
  using Handle = HINTERNET;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle handle) { return InternetCloseHandle(handle) != FALSE; }
};
using InternetHandle = UniqueHandle<InternetHandleTraits>;

// The body of a server's answer. A body that is shorter or longer than the server announced is a failed read
// (ERROR_INTERNET_CONNECTION_ABORTED), and a connection that ends before the answer is a failed opening with the same code:
// not every system's transport notices by itself.
class WebSource : public ByteSource {
 public:
  // Asks the server, never a cache, and waits for the head of its answer. S_OK or the system's failure, which is logged.
  [[nodiscard]] HRESULT Open(const char* url);

  bool Read(void* buffer, DWORD size, DWORD& count) override;

  // The answer, for what else the system knows of it; null before one came.
  HINTERNET Answer() const { return connection.Get(); }

 private:
  void ReadAnnouncedBytes();

  InternetHandle session;
  InternetHandle connection;
  bool isLengthAnnounced = false;
  ULONGLONG announcedBytes = 0;
  ULONGLONG receivedBytes = 0;
};
