#pragma once

#include "common/Windows.h"

#include <string>
#include <vector>

#include "support/Files.h"

// The built norvik.exe in a folder of its own, in which the permission file is put beside it.
class InstalledProgram {
 public:
  InstalledProgram();
  InstalledProgram(const InstalledProgram&) = delete;
  InstalledProgram& operator=(const InstalledProgram&) = delete;

  const std::string& Folder() const { return folder.Path(); }
  std::string PermitPath() const { return folder.File("permit.xml"); }

  struct Result {
    DWORD exitCode = 99;
    std::string output;  // of both kinds, each by itself
    std::string errors;
  };

  // Runs the program as a process and waits for it.
  Result Run(const std::vector<std::string>& arguments) const;

 private:
  TemporaryFolder folder;
};
