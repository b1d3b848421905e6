#pragma once

#include "support/ImportPatch.h"

// Counts the blocks of the process heap that were taken since the object was made and have not been given back.
class HeapBalance {
 public:
  HeapBalance() { outstanding = 0; }  // the second patch takes memory, too
  int Outstanding() const { return outstanding; }

 private:
  int outstanding = 0;
  ImportedFunction<struct BalancedAlloc, decltype(&::HeapAlloc)> allocations{
      "HeapAlloc", [this](auto original, auto... arguments) {
        void* const memory = original(arguments...);
        outstanding += memory ? 1 : 0;
        return memory;
      }};
  ImportedFunction<struct BalancedFree, decltype(&::HeapFree)> frees{
      "HeapFree", [this](auto original, HANDLE heap, DWORD flags, void* memory) {
        outstanding -= memory ? 1 : 0;
        return original(heap, flags, memory);
      }};
};
