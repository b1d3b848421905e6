#pragma once

#include <string>
#include <vector>

#include "support/Files.h"
#include "support/Program.h"

// The built norvik.exe in a folder of its own, in which the permission file is put beside it.
class InstalledProgram {
 public:
  InstalledProgram();
  InstalledProgram(const InstalledProgram&) = delete;
  InstalledProgram& operator=(const InstalledProgram&) = delete;

  const std::string& Folder() const { return folder.Path(); }
  std::string PermitPath() const { return folder.File("permit.xml"); }

  // Runs the program as a process and waits for it. The arguments are in the code page.
  ProgramResult Run(const std::vector<std::string>& arguments) const;

 private:
  TemporaryFolder folder;
};
