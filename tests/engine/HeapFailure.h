#pragma once

#include <cstddef>
#include <functional>

// Lets allocations of one size fail while `Run` runs, all of them or a single one. Nothing but the code under test may
// allocate there, so keep assertions out of it.
class HeapFailure {
 public:
  // All allocations of `bytes` bytes.
  static HeapFailure OfSize(std::size_t bytes);

  // The one of them with that number, counted from 1.
  static HeapFailure OneOfSize(std::size_t bytes, int number);

  // Runs the code under test.
  void Run(const std::function<void()>& code);

  // How many allocations failed in `Run`.
  int Failures() const { return failures; }

 private:
  HeapFailure(std::size_t failingBytes, int failingNumber) : bytes(failingBytes), number(failingNumber) {}
  bool Fails(std::size_t size);

  std::size_t bytes;
  int number;  // 0 for all
  int seen = 0;
  int failures = 0;
};
