#include "engine/HeapFailure.h"

#include "support/ImportPatch.h"

HeapFailure HeapFailure::OfSize(std::size_t bytes) {
  return HeapFailure(bytes, 0);
}

HeapFailure HeapFailure::OneOfSize(std::size_t bytes, int number) {
  return HeapFailure(bytes, number);
}

bool HeapFailure::Fails(std::size_t size) {
  if (size != bytes)
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
