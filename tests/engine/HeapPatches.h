#pragma once

#include <cstddef>
#include <functional>

#include "support/ImportPatch.h"

// The process heap as the module's allocator sees it. While memory runs out nothing else of the program may allocate, so keep
// what is measured in `Run`, and assertions out of it.

// Counts the allocations that have not been given back since the object was made.
class HeapBalance {
 public:
  HeapBalance();
  int Outstanding() const { return outstanding; }

 private:
  int outstanding = 0;
  ImportedFunction<struct HeapAllocImport, decltype(&::HeapAlloc)> allocations;
  ImportedFunction<struct HeapFreeImport, decltype(&::HeapFree)> frees;
};

// Lets allocations fail while `Run` runs: those of one size, or one by its number.
class HeapFailure {
 public:
  // The allocations of `bytes` bytes, from the `first` of them (counted from 1) on.
  static HeapFailure OfSize(std::size_t bytes, int first = 1);

  // The allocation of that number, counted from 1.
  static HeapFailure OfNumber(int number);

  // Runs the code under test.
  void Run(const std::function<void()>& code);

  // How many allocations failed in `Run`.
  int Failures() const { return failures; }

 private:
  HeapFailure(std::size_t failingBytes, int firstNumber, bool isSingle)
      : bytes(failingBytes), first(firstNumber), single(isSingle) {}
  bool Fails(std::size_t size);

  std::size_t bytes;  // 0 for any
  int first;
  bool single;
  int seen = 0;
  int failures = 0;
};

// Runs `code` with the first allocation failing, then with the second, and so on, until a run does not get to the one that
// was to fail. `prepare` goes before every run and `check` behind it, both with memory.
// Answers how many runs there were with a failure.
int FailEachAllocation(const std::function<void()>& prepare, const std::function<void()>& code,
                       const std::function<void(int number)>& check);
