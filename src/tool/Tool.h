#pragma once

#include <string>
#include <vector>

// The answers of the program to whoever started it.
constexpr int kYes = 0;  // valid and sound, permitted, would succeed, succeeded, ready
constexpr int kNo = 1;
constexpr int kWrongUsage = 2;
constexpr int kUnanswered = 3;  // a file cannot be read, a server is not reached, memory ran out

// The whole program: `arguments` are those behind its name. Gives the exit code.
int RunTool(const std::vector<std::wstring>& arguments);
