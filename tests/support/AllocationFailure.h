#pragma once

#include <gtest/gtest.h>

#include "support/ImportPatch.h"

// Calls `run` again and again, with the allocator of `module` (null for the program's own) refusing allocation number 1,
// number 2, ... for as long as there is one to refuse, and `check` after each of these runs. `prepare` goes before every
// run. Gives the number of refusals back; the last run of all is one without. Nothing but the code under test may allocate
// in `run`: what a test allocates there would end the process.
template <class Prepare, class Run, class Check>
int ForEachFailedAllocation(Prepare prepare, Run run, Check check, HMODULE module = nullptr) {
  constexpr int kMostAllocations = 10000;
  for (int call = 1; call <= kMostAllocations; ++call) {
    prepare();
    bool isRefused = false;
    {
      PATCH_IMPORT(
          heap, HeapAlloc,
          [&isRefused, call, count = 0](auto original, auto... arguments) mutable -> void* {
            if (++count != call)
              return original(arguments...);
            isRefused = true;
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
          },
          module);
      run();
    }
    if (!isRefused)
      return call - 1;
    SCOPED_TRACE(testing::Message() << "allocation " << call << " failed");
    check();
  }
  ADD_FAILURE() << "no end of allocations";
  return kMostAllocations;
}

template <class Run, class Check>
int ForEachFailedAllocation(Run run, Check check) {
  return ForEachFailedAllocation([] {}, run, check);
}
