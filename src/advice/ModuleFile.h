#pragma once

#include "common/Windows.h"

#include <string>

#include "advice/DoctorCheck.h"

// What a DLL or a program says of itself.
struct ModuleFile {
  std::wstring path;
  std::string problem;  // why it cannot be read, as a sentence; empty when it can
  int bits = 0;         // 64 or 32; 0 for what is no program of either
  std::string product;  // of its version resource; empty without one
  std::string version;  // "1.0.0.0"; empty without one
  std::string hash;     // SHA-256 in hex; empty when the system does not compute it
};

ModuleFile ReadModuleFile(const std::wstring& path);

// The running program; without its hash.
ModuleFile ThisProgram();

// Whether two paths lead to one file. False when one of them cannot be opened.
bool IsSameFile(const std::wstring& path, const std::wstring& otherPath);

// Whether it is the module, and goes with the program.
DoctorCheck CheckModule(const ModuleFile& module, const ModuleFile& program);
