#pragma once

#include <string>
#include <vector>

// Copies a built file ("norvik.dll", "norvik.exe"), which lies in the folder above that of the test programs, into a folder.
// A failure to do so fails the test.
void CopyBuilt(const std::string& name, const std::string& folder);

// A command line from which a program reads back its own path and the arguments as they are.
std::wstring CommandLineOf(const std::wstring& path, const std::vector<std::wstring>& arguments);

// What a program did.
struct ProgramResult {
  unsigned long code = 0;
  std::string output;  // standard output, as it was written
  std::string errors;  // standard error
};

// Runs a command line as it stands, in a folder; else as RunProgram.
ProgramResult RunCommandLine(std::wstring commandLine, const std::string& folder);

// Runs a program to its end, in a folder, without standard input. The arguments reach it as they are. One that does not end
// within five minutes is ended, and fails the test.
ProgramResult RunProgram(const std::string& path, const std::vector<std::wstring>& arguments, const std::string& folder);
