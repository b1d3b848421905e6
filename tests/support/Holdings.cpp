#include "support/Holdings.h"

#include <gtest/gtest.h>

std::uintptr_t LowestFreeHandle() {
  const HANDLE event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  EXPECT_TRUE(CloseHandle(event));
  return reinterpret_cast<std::uintptr_t>(event) / 4;  // handles are multiples of four
}

SIZE_T HeapBytesInUse() {
  SIZE_T bytes = 0;
  PROCESS_HEAP_ENTRY entry = {};
  HeapLock(GetProcessHeap());
  while (HeapWalk(GetProcessHeap(), &entry)) {
    if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)
      bytes += entry.cbData;
  }
  HeapUnlock(GetProcessHeap());
  EXPECT_LT(0u, bytes);
  return bytes;
}
