#pragma once

#include <cstddef>
#include <functional>

#include "support/ImportPatch.h"

// The process heap as the module's allocator sees it. While memory runs out nothing else of the program may allocate, so
// keep what is measured in `Run`, and assertions out of it.

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

// Lets allocations fail while `Run` runs: those of one size, or a single one.
class HeapFailure {
 public:
  // All allocations of `bytes` bytes.
  static HeapFailure OfSize(std::size_t bytes);

  // The one of them with that number, counted from 1.
  static HeapFailure OneOfSize(std::size_t bytes, int number);

  // The allocation of that number, counted from 1.
  static HeapFailure OfNumber(int number);

  // Runs the code under test.
  void Run(const std::function<void()>& code);

  // How many allocations failed in `Run`.
  int Failures() const { return failures; }

 private:
  HeapFailure(std::size_t failingBytes, int failingNumber) : bytes(failingBytes), number(failingNumber) {}
  bool Fails(std::size_t size);

  std::size_t bytes;  // 0 for any
  int number;         // 0 for all
  int seen = 0;
  int failures = 0;
};

// Runs `code` with the first allocation failing, then with the second, and so on, until a run does not get to the one that
// was to fail. `prepare` goes before every run and `check` behind it, both with memory.
// Answers how many runs there were with a failure.
int FailEachAllocation(const std::function<void()>& prepare, const std::function<void()>& code,
                       const std::function<void(int number)>& check);
