#include "selfcheck/Process.h"

#include <chrono>
#include <stdexcept>
#include <system_error>

#include "support/Program.h"

namespace {

struct Child {
  OwnedHandle process;
  OwnedHandle thread;
};

SECURITY_ATTRIBUTES Inherited() {
  return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

// Suspended, so that it can be put into a job before it starts anything. Gives no process when it cannot be started.
Child StartSuspended(std::wstring command, const wchar_t* folder, HANDLE input, HANDLE output, HANDLE errors) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = input;
  startup.hStdOutput = output;
  startup.hStdError = errors;
  PROCESS_INFORMATION process = {};
  if (!CreateProcessW(
          nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr, folder, &startup, &process))
    return {};
  return {OwnedHandle(process.hProcess), OwnedHandle(process.hThread)};
}

[[noreturn]] void ThrowLastError(const std::filesystem::path& path) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), path.string());
}

OwnedHandle CreateOutput(const std::filesystem::path& path) {
  SECURITY_ATTRIBUTES inherited = Inherited();
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE)
    ThrowLastError(path);
  return OwnedHandle(file);
}

// The first line that comes through the pipe, or what came before it was closed.
std::string ReadLine(HANDLE pipe) {
  std::string line;
  char character = 0;
  DWORD count = 0;
  while (ReadFile(pipe, &character, 1, &count, nullptr) && count == 1 && character != '\n')
    line += character;
  while (!line.empty() && line.back() == '\r')
    line.pop_back();
  return line;
}

}  // namespace

Ending RunToFile(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                 const std::filesystem::path& output, DWORD limitSeconds) {
  const OwnedHandle file = CreateOutput(output);
  const OwnedHandle job(CreateJobObjectW(nullptr, nullptr));
  const auto started = std::chrono::steady_clock::now();
  const Child child = StartSuspended(
      CommandLineOf(program.wstring(), arguments), program.parent_path().c_str(), nullptr, file.Get(), file.Get());
  if (!child.process)
    ThrowLastError(program);
  // Before Windows 8 a program that is in a job already cannot be put into another: then it is ended alone.
  const bool isInJob = AssignProcessToJobObject(job.Get(), child.process.Get());
  ResumeThread(child.thread.Get());
  Ending ending;
  if (WaitForSingleObject(child.process.Get(), limitSeconds * 1000) != WAIT_OBJECT_0) {
    ending.isOverLimit = true;
    TerminateProcess(child.process.Get(), ERROR_TIMEOUT);
    WaitForSingleObject(child.process.Get(), INFINITE);
  }
  if (isInJob)
    TerminateJobObject(job.Get(), ERROR_TIMEOUT);
  GetExitCodeProcess(child.process.Get(), &ending.code);
  ending.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  return ending;
}

ServerProcess::ServerProcess(const std::filesystem::path& script, const std::filesystem::path& certificates) {
  std::vector<std::wstring> arguments = {script.wstring()};
  if (!certificates.empty())
    arguments.push_back(certificates.wstring());
  std::vector<std::wstring> withVersion = arguments;
  withVersion.insert(withVersion.begin(), L"-3");
  if (!Start(L"py", withVersion) && !Start(L"python", arguments))
    throw std::runtime_error("The web server does not start: Python 3.8 or later is needed, as 'py' or 'python'.");
}

bool ServerProcess::Start(const std::wstring& python, const std::vector<std::wstring>& arguments) {
  SECURITY_ATTRIBUTES inherited = Inherited();
  HANDLE childInput = nullptr, ourInput = nullptr, ourOutput = nullptr, childOutput = nullptr;
  if (!CreatePipe(&childInput, &ourInput, &inherited, 0) || !CreatePipe(&ourOutput, &childOutput, &inherited, 0))
    return false;
  const OwnedHandle theirInput(childInput), output(ourOutput);
  OwnedHandle theirOutput(childOutput);
  input = OwnedHandle(ourInput);
  SetHandleInformation(ourInput, HANDLE_FLAG_INHERIT, 0);
  SetHandleInformation(ourOutput, HANDLE_FLAG_INHERIT, 0);
  const Child child =
      StartSuspended(CommandLineOf(python, arguments), nullptr, childInput, childOutput, GetStdHandle(STD_ERROR_HANDLE));
  if (!child.process)
    return false;
  theirOutput.Close();  // so that the end of the server is the end of its output
  ResumeThread(child.thread.Get());
  ports = ReadLine(output.Get());
  return ports.find('=') != std::string::npos;
}
