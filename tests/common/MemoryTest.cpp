// The allocator of the module, through the operators that it replaces.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <vector>

#include "support/ImportPatch.h"

namespace {

constexpr DWORD kEarlierError = 4711;

TEST(MemoryTest, MemoryComesFromTheProcessHeapAsItIsAskedFor) {
  std::vector<SIZE_T> sizes;
  {
    PATCH_IMPORT(record, HeapAlloc, [&](auto original, HANDLE heap, DWORD flags, SIZE_T bytes) {
      EXPECT_EQ(GetProcessHeap(), heap);
      EXPECT_EQ(0u, flags);
      sizes.push_back(bytes);
      return original(heap, flags, bytes);
    });
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, std::size_t{100}})
      ::operator delete(::operator new(bytes, std::nothrow));
  }
  EXPECT_EQ((std::vector<SIZE_T>{1, 1, 100}), sizes);
}

TEST(MemoryTest, MemoryGoesBackToTheProcessHeapOnce) {
  void* const memory = ::operator new(8, std::nothrow);
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  std::vector<std::uintptr_t> freed;
  {
    PATCH_IMPORT(record, HeapFree, [&](auto original, HANDLE heap, DWORD flags, void* block) {
      EXPECT_EQ(GetProcessHeap(), heap);
      EXPECT_EQ(0u, flags);
      freed.push_back(reinterpret_cast<std::uintptr_t>(block));
      return original(heap, flags, block);
    });
    ::operator delete(memory);
    ::operator delete(nullptr);
  }
  EXPECT_EQ(std::vector<std::uintptr_t>{address}, freed);
}

// What failed is still to be reported when the memory for it goes.
TEST(MemoryTest, GivingMemoryBackKeepsTheLastError) {
  PATCH_IMPORT(changes, HeapFree, [](auto original, auto... arguments) {
    const BOOL isFreed = original(arguments...);
    SetLastError(ERROR_INVALID_PARAMETER);
    return isFreed;
  });
  void* const memory = ::operator new(8, std::nothrow);
  SetLastError(kEarlierError);
  ::operator delete(memory);
  EXPECT_EQ(kEarlierError, GetLastError());
}

}  // namespace
