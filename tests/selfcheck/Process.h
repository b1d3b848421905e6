#pragma once

#include "common/Windows.h"

#include <filesystem>
#include <string>
#include <vector>

#include "common/Handles.h"

struct HandleTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle handle) { return CloseHandle(handle) != FALSE; }
};
using OwnedHandle = UniqueHandle<HandleTraits>;

// How a program came to its end.
struct Ending {
  DWORD code = 0;
  bool isOverLimit = false;
  double seconds = 0;
};

// Runs a program with its output and errors in a file, in the folder that it lies in, without standard input. One that is
// not done after `limitSeconds` is ended, with all that it started. Throws std::system_error when it cannot be started.
Ending RunToFile(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                 const std::filesystem::path& output, DWORD limitSeconds);

// The scripted web server, which lives as long as the object.
class ServerProcess {
 public:
  // The certificates' folder may be empty. Throws std::runtime_error with one sentence when the server does not start.
  ServerProcess(const std::filesystem::path& script, const std::filesystem::path& certificates);

  // The line in which it says where it listens.
  const std::string& Ports() const { return ports; }

 private:
  bool Start(const std::wstring& python, const std::vector<std::wstring>& arguments);

  OwnedHandle input;
  std::string ports;
};
