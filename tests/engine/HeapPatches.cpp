#include "engine/HeapPatches.h"

#include <gtest/gtest.h>

namespace {

constexpr int kMostAllocations = 10000;

}  // namespace

HeapBalance::HeapBalance()
    : allocations(
          "HeapAlloc",
          [this](auto original, auto... arguments) {
  void* const memory = original(arguments...);
  outstanding += memory ? 1 : 0;
  return memory;
          }),
frees("HeapFree", [this](auto original, HANDLE heap, DWORD flags, void* memory) {
  outstanding -= memory ? 1 : 0;
  return original(heap, flags, memory);
}) {
  outstanding = 0;
}

HeapFailure HeapFailure::OfSize(std::size_t bytes) {
  return HeapFailure(bytes, 0);
}

HeapFailure HeapFailure::OneOfSize(std::size_t bytes, int number) {
  return HeapFailure(bytes, number);
}

HeapFailure HeapFailure::OfNumber(int number) {
  return HeapFailure(0, number);
}

bool HeapFailure::Fails(std::size_t size) {
  if (bytes != 0 && size != bytes)
    return false;
  ++seen;
  return number == 0 || seen == number;
}

void HeapFailure::Run(const std::function<void()>& code) {
  bool isRunning = false;
  PATCH_IMPORT(memory, HeapAlloc, [&](auto original, HANDLE heap, DWORD flags, SIZE_T size) -> void* {
    if (!isRunning || !Fails(size))
      return original(heap, flags, size);
    ++failures;
    return nullptr;
  });
  isRunning = true;
  code();
  isRunning = false;
}

int FailEachAllocation(const std::function<void()>& prepare, const std::function<void()>& code,
                       const std::function<void(int number)>& check) {
  for (int number = 1; number < kMostAllocations; ++number) {
    prepare();
    HeapFailure failure = HeapFailure::OfNumber(number);
    failure.Run(code);
    if (failure.Failures() == 0)
      return number - 1;
    check(number);
  }
  ADD_FAILURE() << "no end of allocations";
  return kMostAllocations;
}
