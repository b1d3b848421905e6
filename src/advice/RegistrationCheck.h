#pragma once

#include "common/Windows.h"

#include <string>
#include <vector>

#include "advice/DoctorCheck.h"
#include "advice/ModuleFile.h"

// What the registry shows of the control to the programs of one width, for the user who asks.
struct RegisteredView {
  int bits = 0;
  bool isRegistered = false;
  bool isForUserOnly = false;  // other users, and administrators' programs, do not see it
  std::wstring server;         // the path of the module; empty without one
  std::wstring threadingModel;
  bool isKilled = false;  // hosts that keep to the list of killed controls do not create it
};

struct Registration {
  std::vector<RegisteredView> views;  // 64 and 32 bit, or 32 bit alone where there is nothing else
  std::wstring libraryPath;           // of the registered type library; empty without one
};

Registration ReadRegistration();

// One check for each view, and one each for the threading model, the type library and the kill bit.
DoctorChecks CheckRegistration(const Registration& registration, const ModuleFile& module);
