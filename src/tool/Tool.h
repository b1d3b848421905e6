#pragma once

#include <string>
#include <vector>

// The whole program: `arguments` are those behind its name. Gives the exit code.
int RunTool(const std::vector<std::wstring>& arguments);
