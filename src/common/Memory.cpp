// The module's allocator: the process heap, and null instead of an exception. Everything is allocated with
// `new (std::nothrow)`; the plain forms exist because the language links them, and end the process rather than
// hand out null to code that does not look.

#include "common/Windows.h"

#include <new>

namespace {

void* Allocate(std::size_t bytes) noexcept {
  return HeapAlloc(GetProcessHeap(), 0, bytes ? bytes : 1);
}

void* AllocateOrEnd(std::size_t bytes) noexcept {
  void* memory = Allocate(bytes);
  if (!memory)
    __builtin_trap();
  return memory;
}

void Free(void* memory) noexcept {
  if (!memory)
    return;
  const DWORD error = GetLastError();
  HeapFree(GetProcessHeap(), 0, memory);
  SetLastError(error);
}

}  // namespace

// clang-format off
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return Allocate(bytes); }
void* operator new(std::size_t bytes) { return AllocateOrEnd(bytes); }
void* operator new[](std::size_t bytes) { return AllocateOrEnd(bytes); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t /*bytes*/) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t /*bytes*/) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { Free(memory); }
// clang-format on
