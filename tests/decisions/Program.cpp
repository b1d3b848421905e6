#include "decisions/Program.h"

#include <gtest/gtest.h>

#include "common/Handles.h"

namespace {

constexpr DWORD kPatienceMilliseconds = 120000;

// The test programs lie in a folder below the one that holds the program.
std::string BuiltProgramPath() {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  std::string folder = program;
  folder.erase(folder.find_last_of('\\'));
  folder.erase(folder.find_last_of('\\'));
  return folder + "\\norvik.exe";
}

// As programs take their command line apart: backslashes count double before a quote.
std::string Quoted(const std::string& argument) {
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (const char character : argument) {
    if (character == '"')
      quoted.append(backslashes + 1, '\\');
    backslashes = character == '\\' ? backslashes + 1 : 0;
    quoted += character;
  }
  return quoted.append(backslashes, '\\') + "\"";
}

HANDLE CreateInherited(const std::string& path) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  return CreateFileA(
      path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

DWORD RunAndWait(std::string command, HANDLE output, HANDLE errors) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = output;
  startup.hStdError = errors;
  PROCESS_INFORMATION process = {};
  if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
    ADD_FAILURE() << "cannot run " << command << ", error " << GetLastError();
    return 99;
  }
  DWORD exitCode = 99;
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.hProcess, kPatienceMilliseconds));
  GetExitCodeProcess(process.hProcess, &exitCode);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return exitCode;
}

}  // namespace

InstalledProgram::InstalledProgram() {
  if (!CopyFileA(BuiltProgramPath().c_str(), folder.File("norvik.exe").c_str(), TRUE))
    ADD_FAILURE() << "cannot copy " << BuiltProgramPath() << ", error " << GetLastError();
}

InstalledProgram::Result InstalledProgram::Run(const std::vector<std::string>& arguments) const {
  std::string command = Quoted(folder.File("norvik.exe"));
  for (const std::string& argument : arguments)
    command += " " + Quoted(argument);
  const TemporaryFolder streams;
  Result result;
  {
    const FileHandle output(CreateInherited(streams.File("output")));
    const FileHandle errors(CreateInherited(streams.File("errors")));
    result.exitCode = RunAndWait(command, output.Get(), errors.Get());
  }
  result.output = ReadWholeFile(streams.File("output"));
  result.errors = ReadWholeFile(streams.File("errors"));
  return result;
}
