#pragma once

#include "common/Windows.h"

#include <utility>

// Move-only owners of system handles. Closing keeps the thread's last error, so that a failure can still be reported after
// its handle is gone.
template <class Traits>
class UniqueHandle {
 public:
  using Handle = typename Traits::Handle;

  UniqueHandle() = default;
  explicit UniqueHandle(Handle owned) : handle(owned) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle(std::exchange(other.handle, Traits::Invalid())) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) {
      Close();
      handle = std::exchange(other.handle, Traits::Invalid());
    }
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { Close(); }

  Handle Get() const { return handle; }
  explicit operator bool() const { return handle != Traits::Invalid(); }

  void Close() {
    if (handle == Traits::Invalid())
      return;
    const DWORD error = GetLastError();
    Traits::Close(std::exchange(handle, Traits::Invalid()));
    SetLastError(error);
  }

 private:
  Handle handle = Traits::Invalid();
};

struct FileHandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static void Close(Handle handle) { CloseHandle(handle); }
};
using FileHandle = UniqueHandle<FileHandleTraits>;

// Text from the local heap.
struct LocalTextTraits {
  using Handle = char*;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle text) { LocalFree(text); }
};
using LocalText = UniqueHandle<LocalTextTraits>;
