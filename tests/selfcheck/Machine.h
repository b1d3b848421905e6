#pragma once

#include <map>
#include <string>

// What the results depend on, and nothing that tells whose machine it is. All texts are UTF-8.
struct Machine {
  std::string windows;                       // "10.0.19045"
  std::string product;                       // "Windows 10 Pro 22H2", as the registry names it
  std::string wine;                          // the version of Wine; empty on Windows
  std::map<std::string, std::string> files;  // the versions of the system's files that the module uses
  unsigned ansiCodePage = 0;
  unsigned oemCodePage = 0;
  std::string locale;
  std::string timeZone;
  bool isElevated = false;  // with an administrator's rights
};

Machine ReadMachine();
