#include "support/Program.h"

#include "common/Windows.h"

#include <gtest/gtest.h>

#include "common/Handles.h"
#include "support/Files.h"

namespace {

constexpr DWORD kPatienceMilliseconds = 300000;

// An argument as CommandLineToArgvW reads it back.
std::wstring Quoted(const std::wstring& argument) {
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t character : argument) {
    if (character == L'"')
      quoted.append(backslashes + 1, L'\\');
    quoted += character;
    backslashes = character == L'\\' ? backslashes + 1 : 0;
  }
  return quoted.append(backslashes, L'\\') + L"\"";
}

FileHandle InheritedFile(const std::string& path) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  return FileHandle(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

// For a message: what is no ASCII becomes a question mark.
std::string Shown(const std::wstring& text) {
  std::string shown;
  for (const wchar_t character : text.substr(0, 200))
    shown += character < 0x7F ? static_cast<char>(character) : '?';
  return shown;
}

std::string FolderAbove(std::string path) {
  path.erase(path.find_last_of('\\'));
  return path;
}

}  // namespace

void CopyBuilt(const std::string& name, const std::string& folder) {
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  const std::string built = FolderAbove(FolderAbove(program)) + "\\" + name;
  if (!CopyFileA(built.c_str(), (folder + "\\" + name).c_str(), FALSE))
    ADD_FAILURE() << "cannot copy " << built << ", error " << GetLastError();
}

std::wstring CommandLineOf(const std::wstring& path, const std::vector<std::wstring>& arguments) {
  std::wstring command = Quoted(path);
  for (const std::wstring& argument : arguments)
    command += L" " + Quoted(argument);
  return command;
}

ProgramResult RunCommandLine(std::wstring commandLine, const std::string& folder) {
  const TemporaryFolder written;
  ProgramResult result;
  {
    const FileHandle output = InheritedFile(written.File("output"));
    const FileHandle errors = InheritedFile(written.File("errors"));
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.Get();
    startup.hStdError = errors.Get();
    PROCESS_INFORMATION process = {};
    const std::wstring wideFolder(folder.begin(), folder.end());
    if (!CreateProcessW(
            nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, wideFolder.c_str(), &startup, &process)) {
      ADD_FAILURE() << "cannot run " << Shown(commandLine) << ", error " << GetLastError();
      return result;
    }
    const FileHandle ended(process.hProcess);
    const FileHandle thread(process.hThread);
    if (WaitForSingleObject(process.hProcess, kPatienceMilliseconds) != WAIT_OBJECT_0) {
      ADD_FAILURE() << Shown(commandLine) << " does not end";
      TerminateProcess(process.hProcess, 99);
    }
    GetExitCodeProcess(process.hProcess, &result.code);
  }
  result.output = ReadWholeFile(written.File("output"));
  result.errors = ReadWholeFile(written.File("errors"));
  return result;
}

ProgramResult RunProgram(const std::string& path, const std::vector<std::wstring>& arguments, const std::string& folder) {
  return RunCommandLine(CommandLineOf(std::wstring(path.begin(), path.end()), arguments), folder);
}
