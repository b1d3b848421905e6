#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "support/ImportPatch.h"

// Puts guard bytes behind everything that the code under test allocates, and checks them when it is freed: a byte written
// behind a buffer is a failure of the test. What is not freed within the object's lifetime is not checked.
class GuardedHeap {
 public:
  // Allocations that were checked so far.
  int Checked() const { return checked; }

 private:
  static constexpr std::size_t kGuardBytes = 16;
  static constexpr int kSlots = 256;

  struct Slot {
    void* memory;
    std::size_t bytes;
  };

  void* Allocate(decltype(&::HeapAlloc) original, HANDLE heap, DWORD flags, SIZE_T bytes) {
    void* const memory = original(heap, flags, bytes + kGuardBytes);
    for (Slot& slot : slots) {
      if (memory && !slot.memory) {
        slot = {memory, bytes};
        std::memset(static_cast<char*>(memory) + bytes, kGuard, kGuardBytes);
        break;
      }
    }
    return memory;
  }

  BOOL Free(decltype(&::HeapFree) original, HANDLE heap, DWORD flags, void* memory) {
    for (Slot& slot : slots) {
      if (memory && slot.memory == memory) {
        ++checked;
        for (std::size_t i = 0; i < kGuardBytes; ++i)
          EXPECT_EQ(kGuard, static_cast<char*>(memory)[slot.bytes + i]) << "byte " << i << " behind " << slot.bytes;
        slot.memory = nullptr;
      }
    }
    return original(heap, flags, memory);
  }

  static constexpr char kGuard = 0x5A;
  Slot slots[kSlots] = {};
  int checked = 0;

  ImportedFunction<struct GuardedFree, decltype(&::HeapFree)> free{
      "HeapFree", [this](auto... arguments) { return Free(arguments...); }};
  ImportedFunction<struct GuardedAlloc, decltype(&::HeapAlloc)> allocate{
      "HeapAlloc", [this](auto... arguments) { return Allocate(arguments...); }};
};
