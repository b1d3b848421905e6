#pragma once

#include "common/Windows.h"

#include <utility>

// Move-only owners of system handles. What an owner closes by itself keeps the thread's last error, so that a failure can
// still be reported after its handle is gone.
template <class Traits>
class UniqueHandle {
 public:
  using Handle = typename Traits::Handle;

  UniqueHandle() = default;
  explicit UniqueHandle(Handle owned) : handle(owned) {}
  UniqueHandle(UniqueHandle&& other) noexcept : handle(std::exchange(other.handle, Traits::Invalid())) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) {
      CloseQuietly();
      handle = std::exchange(other.handle, Traits::Invalid());
    }
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { CloseQuietly(); }

  Handle Get() const { return handle; }
  explicit operator bool() const { return handle != Traits::Invalid(); }

  // False when the system reports a failure, with the thread's last error; the handle is gone either way. True when there is
  // no handle.
  bool Close() { return handle == Traits::Invalid() || Traits::Close(std::exchange(handle, Traits::Invalid())); }

 private:
  void CloseQuietly() {
    const DWORD error = GetLastError();
    Close();
    SetLastError(error);
  }

  Handle handle = Traits::Invalid();
};

struct FileHandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static bool Close(Handle handle) { return CloseHandle(handle) != FALSE; }
};
using FileHandle = UniqueHandle<FileHandleTraits>;

// Of what is no file (a thread, a mutex), for which the system answers null when it has none.
struct KernelHandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle handle) { return CloseHandle(handle) != FALSE; }
};
using KernelHandle = UniqueHandle<KernelHandleTraits>;

// Whether what was opened as a file is a console, a port, a printer or the null device. Their names stand for them in every
// folder, with any extension.
inline bool IsDevice(const FileHandle& file) {
  return GetFileType(file.Get()) == FILE_TYPE_CHAR;
}

// Text from the local heap.
struct LocalTextTraits {
  using Handle = char*;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle text) { return LocalFree(text) == nullptr; }
};
using LocalText = UniqueHandle<LocalTextTraits>;
