#include "decisions/Program.h"

#include "common/Windows.h"

#include <gtest/gtest.h>

#include "advice/Words.h"

namespace {

// The test programs lie in a folder below the one that holds the program.
std::string BuiltProgramPath() {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  std::string folder = program;
  folder.erase(folder.find_last_of('\\'));
  folder.erase(folder.find_last_of('\\'));
  return folder + "\\norvik.exe";
}

}  // namespace

InstalledProgram::InstalledProgram() {
  if (!CopyFileA(BuiltProgramPath().c_str(), folder.File("norvik.exe").c_str(), TRUE))
    ADD_FAILURE() << "cannot copy " << BuiltProgramPath() << ", error " << GetLastError();
}

ProgramResult InstalledProgram::Run(const std::vector<std::string>& arguments) const {
  std::vector<std::wstring> wide;
  for (const std::string& argument : arguments)
    wide.push_back(WideFromAnsi(argument.c_str()));
  return RunProgram(folder.File("norvik.exe"), wide, folder.Path());
}
