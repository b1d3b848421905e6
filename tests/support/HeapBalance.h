#pragma once

#include <set>

#include "support/ImportPatch.h"

// What a module took from the process heap and has not given back, from the construction on. Without a module that is the
// program itself, whose own objects count as well: keep what is measured in a block of its own.
class HeapBalance {
 public:
  explicit HeapBalance(HMODULE module = nullptr)
      : allocations(
            "HeapAlloc",
            [this](auto original, auto... arguments) {
    void* const memory = original(arguments...);
    if (memory)
      outstanding.insert(memory);
    return memory;
            },
            module),
  frees(
      "HeapFree",
      [this](auto original, HANDLE heap, DWORD flags, void* memory) {
    outstanding.erase(memory);
    return original(heap, flags, memory);
      },
      module) {
    std::set<void*> ownBlocks;  // of the second patch
    ownBlocks.swap(outstanding);
  }

  int Outstanding() const { return static_cast<int>(outstanding.size()); }

 private:
  std::set<void*> outstanding;
  ImportedFunction<struct BalancedAlloc, decltype(&::HeapAlloc)> allocations;
  ImportedFunction<struct BalancedFree, decltype(&::HeapFree)> frees;
};
