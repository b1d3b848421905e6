#include "decisions/Program.h"

#include "advice/Words.h"

InstalledProgram::InstalledProgram() {
  CopyBuilt("norvik.exe", folder.Path());
}

ProgramResult InstalledProgram::Run(const std::vector<std::string>& arguments) const {
  std::vector<std::wstring> wide;
  for (const std::string& argument : arguments)
    wide.push_back(WideFromAnsi(argument.c_str()));
  return RunProgram(folder.File("norvik.exe"), wide, folder.Path());
}
