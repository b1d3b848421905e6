// The fuzzer's way into one target.

#include <cstdio>
#include <cstdlib>

#include "../Target.h"
#include "log/LogFile.h"

void Broken(const char* promise, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, promise);
  std::abort();
}

// The log file is chosen before a target patches what that takes.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  SetLogFileName(L"fuzz");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  FUZZ_TARGET(input);
  return 0;
}
