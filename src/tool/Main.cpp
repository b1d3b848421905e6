#include <string>
#include <vector>

#include "tool/Tool.h"

// NOLINTNEXTLINE(readability-identifier-naming): the C library calls it by this name
int wmain(int argc, wchar_t** argv) {
  return RunTool(std::vector<std::wstring>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
