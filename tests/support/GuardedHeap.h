#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "support/ImportPatch.h"

// Puts guard bytes behind everything that the code under test allocates, and checks them when it is freed, or with the
// object's end: a byte written behind a buffer is a failure of the test. What a handler allocates itself is not guarded.
class GuardedHeap {
 public:
  GuardedHeap() = default;
  ~GuardedHeap() {
    isChecking = true;
    for (const auto& [memory, bytes] : blocks)
      Check(memory, bytes);
  }

  // Blocks that were freed, and checked, so far.
  int Checked() const { return checked; }

 private:
  static constexpr std::size_t kGuardBytes = 16;
  static constexpr char kGuard = 0x5A;

  void* Allocate(decltype(&::HeapAlloc) original, HANDLE heap, DWORD flags, SIZE_T bytes) {
    if (isChecking)
      return original(heap, flags, bytes);
    void* const memory = original(heap, flags, bytes + kGuardBytes);
    if (memory) {
      std::memset(static_cast<char*>(memory) + bytes, kGuard, kGuardBytes);
      blocks[static_cast<char*>(memory)] = bytes;
    }
    return memory;
  }

  BOOL Free(decltype(&::HeapFree) original, HANDLE heap, DWORD flags, void* memory) {
    const auto block = blocks.find(static_cast<char*>(memory));
    if (block != blocks.end()) {
      isChecking = true;
      ++checked;
      Check(block->first, block->second);
      blocks.erase(block);
      isChecking = false;
    }
    return original(heap, flags, memory);
  }

  static void Check(const char* memory, std::size_t bytes) {
    for (std::size_t i = 0; i < kGuardBytes; ++i)
      EXPECT_EQ(kGuard, memory[bytes + i]) << "byte " << i << " behind " << bytes;
  }

  std::map<char*, std::size_t> blocks;
  int checked = 0;
  bool isChecking = false;  // what a report of a failure allocates and frees is nobody's to guard

  ImportedFunction<struct GuardedFree, decltype(&::HeapFree)> free{
      "HeapFree", [this](auto... arguments) { return Free(arguments...); }};
  ImportedFunction<struct GuardedAlloc, decltype(&::HeapAlloc)> allocate{
      "HeapAlloc", [this](auto... arguments) { return Allocate(arguments...); }};
};
