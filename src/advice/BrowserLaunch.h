#pragma once

#include "common/Windows.h"

#include <string>

#include "advice/DoctorCheck.h"

// Whether links of browsers (`norvik:` and a URL) start manifests on this machine: a registration of the scheme, for all
// users, that an administrator switches on and off.
struct BrowserLaunch {
  bool isOn = false;
  std::wstring command;  // that the system starts for a link, as it is registered for the machine
  std::wstring program;  // the program in it

  // What this user has chosen instead: a program's identifier, or a command; empty for nothing.
  std::wstring usersChoice;
};

BrowserLaunch ReadBrowserLaunch();

// Registers the program (a full path) for links, for all users. Gives an error of the system: ERROR_ACCESS_DENIED when the
// caller is no administrator. After an error links start what they started before.
LONG SwitchBrowserLaunchOn(const std::wstring& program);

// Takes the registration away, whoever made it. ERROR_SUCCESS also when there was none; else as above.
LONG SwitchBrowserLaunchOff();

// The program for links beside this one.
std::wstring LinkProgramPath();

// What the state is in a sentence or two, and whether anything about it is wrong. Off is as it should be.
DoctorCheck CheckBrowserLaunch(const BrowserLaunch& launch, const std::wstring& expectedProgram);
