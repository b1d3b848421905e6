#pragma once

#include "support/ImportPatch.h"

// Calls `run` again and again, with the module's heap refusing allocation number 1, number 2, ... for as long as there is
// one to refuse, and `check` after each of these runs. Gives their number back. Nothing but the code under test may allocate
// in `run`: what a test allocates would end the process.
template <class Run, class Check>
int ForEachFailedAllocation(Run run, Check check) {
  for (int call = 1;; ++call) {
    bool isRefused = false;
    {
      PATCH_IMPORT(heap, HeapAlloc, [&isRefused, call, count = 0](auto original, auto... arguments) mutable -> void* {
        if (++count != call)
          return original(arguments...);
        isRefused = true;
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
      });
      run();
    }
    if (!isRefused)
      return call - 1;
    check();
  }
}
