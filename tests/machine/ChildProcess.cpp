#include "machine/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

constexpr DWORD kPatienceMilliseconds = 120000;

std::string OtherHost() {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  std::string folder = program;
  folder.erase(folder.find_last_of('\\'));
  return "\"" + folder + "\\other_host.exe\"";
}

std::string EventName() {
  return "norvik-held-" + std::to_string(GetCurrentProcessId());
}

}  // namespace

ChildProcess::ChildProcess(const std::string& arguments) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  HANDLE childInput = nullptr;
  EXPECT_TRUE(CreatePipe(&childInput, &input, &inherited, 0));
  SetHandleInformation(input, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = childInput;
  startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  std::string command = OtherHost() + " " + arguments;
  if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process))
    ADD_FAILURE() << "cannot run " << command << ", error " << GetLastError();
  CloseHandle(childInput);
}

ChildProcess::~ChildProcess() {
  Finish();
}

DWORD ChildProcess::Finish() {
  DWORD code = 99;
  if (input)
    CloseHandle(input);
  input = nullptr;
  if (!process.hProcess)
    return code;
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.hProcess, kPatienceMilliseconds));
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  process = {};
  return code;
}

HeldFile::HeldFile(const std::string& path, DWORD sharing)
    : ready(CreateEventA(nullptr, TRUE, FALSE, EventName().c_str())),
      child("hold \"" + path + "\" " + std::to_string(sharing) + " " + EventName()) {
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(ready, kPatienceMilliseconds)) << path << " is not held";
}

HeldFile::~HeldFile() {
  CloseHandle(ready);
}
