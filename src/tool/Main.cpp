#include <string>
#include <vector>

#include "tool/Tool.h"

int wmain(int argc, wchar_t** argv) {
  return RunTool(std::vector<std::wstring>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
