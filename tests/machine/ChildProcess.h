#pragma once

#include "common/Windows.h"

#include <string>

#include "common/Handles.h"

// other_host as a child process. It is waited for when the object goes.
class ChildProcess {
 public:
  // Everything behind the program's name.
  explicit ChildProcess(const std::string& arguments);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Ends its standard input and waits; its exit code.
  DWORD Finish();

 private:
  PROCESS_INFORMATION process = {};
  HANDLE input = nullptr;
};

// A file that another process holds open, from the construction on.
class HeldFile {
 public:
  HeldFile(const std::string& path, DWORD sharing);
  ~HeldFile();
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

 private:
  HANDLE ready;
  ChildProcess child;
};
