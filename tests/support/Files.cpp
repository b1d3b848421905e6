#include "support/Files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <set>

#include "common/Handles.h"

namespace {

std::wstring WidePath(const std::string& path) {
  wchar_t wide[4 * MAX_PATH] = L"";
  MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, wide, 4 * MAX_PATH);
  return wide;
}

std::string NarrowName(const wchar_t* name) {
  char narrow[4 * MAX_PATH] = "";
  WideCharToMultiByte(CP_ACP, 0, name, -1, narrow, sizeof(narrow), nullptr, nullptr);
  return narrow;
}

std::string ReadAll(const FileHandle& file, const std::string& name) {
  if (!file) {
    ADD_FAILURE() << "cannot read " << name << ", error " << GetLastError();
    return std::string();
  }
  std::string content;
  char chunk[65536];
  DWORD count = 0;
  while (ReadFile(file.Get(), chunk, sizeof(chunk), &count, nullptr) && count > 0)
    content.append(chunk, count);
  return content;
}

// A name that no other process has and none had: process numbers come again, and what the Internet cache keeps of a file
// goes by the file's path, also when the file is long gone.
std::string NameOfThisProcess() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  const ULONGLONG milliseconds = (ULONGLONG{now.dwHighDateTime} << 32 | now.dwLowDateTime) / 10000;
  char name[32];
  wsprintfA(name, "norvik-%lu-%08lx", GetCurrentProcessId(), static_cast<DWORD>(milliseconds));
  return name;
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  static const std::string name = NameOfThisProcess();
  static std::atomic<int> count{0};
  char base[MAX_PATH];
  GetTempPathA(MAX_PATH, base);
  path = base + name + "-" + std::to_string(++count);
  RemoveTree(path);
  if (!CreateDirectoryA(path.c_str(), nullptr))
    ADD_FAILURE() << "cannot create " << path << ", error " << GetLastError();
}

TemporaryFolder::~TemporaryFolder() {
  RemoveTree(path);
}

std::string ProjectFile(const std::string& name) {
  const char* const folder = std::getenv("NORVIK_PROJECT_FOLDER");
  if (folder)
    return std::string(folder) + "\\" + name;
  char program[MAX_PATH] = "";
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  return std::string(program) + "\\..\\..\\..\\..\\" + name;
}

void WriteWholeFile(const std::string& path, const std::string& content) {
  const FileHandle file(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD written = 0;
  if (!file || !WriteFile(file.Get(), content.data(), static_cast<DWORD>(content.size()), &written, nullptr) ||
      written != content.size())
    ADD_FAILURE() << "cannot write " << path << ", error " << GetLastError();
}

std::string ReadWholeFile(const std::string& path) {
  const FileHandle file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  return ReadAll(file, path);
}

std::string ReadWholeFile(const std::wstring& path) {
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  return ReadAll(file, NarrowName(path.c_str()));
}

void SetFileWriteTime(const std::string& path, const FILETIME& time) {
  const FileHandle file(
      CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file || !SetFileTime(file.Get(), nullptr, nullptr, &time))
    ADD_FAILURE() << "cannot set the time of " << path << ", error " << GetLastError();
}

FILETIME GetFileWriteTimeOf(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data))
    ADD_FAILURE() << "cannot get the time of " << path << ", error " << GetLastError();
  return data.ftLastWriteTime;
}

bool FileExistsAt(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

DWORD AttributesOf(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES)
    ADD_FAILURE() << "cannot get the attributes of " << path << ", error " << GetLastError();
  return attributes;
}

std::vector<WIN32_FIND_DATAW> EntriesOf(const std::wstring& folder) {
  std::vector<WIN32_FIND_DATAW> entries;
  WIN32_FIND_DATAW data;
  const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &data);
  if (search == INVALID_HANDLE_VALUE)
    return entries;
  do {
    if (std::wstring(data.cFileName) != L"." && std::wstring(data.cFileName) != L"..")
      entries.push_back(data);
  } while (FindNextFileW(search, &data));
  FindClose(search);
  return entries;
}

std::string NamesIn(const std::string& folder) {
  std::set<std::string> names;
  for (const WIN32_FIND_DATAW& entry : EntriesOf(WidePath(folder)))
    names.insert(NarrowName(entry.cFileName));
  std::string joined;
  for (const std::string& name : names)
    joined += (joined.empty() ? "" : " ") + name;
  return joined;
}

void RemoveTree(const std::string& path) {
  RemoveTree(WidePath(path));
}

void RemoveTree(const std::wstring& path) {
  for (const WIN32_FIND_DATAW& entry : EntriesOf(path)) {
    const std::wstring full = path + L"\\" + entry.cFileName;
    if (entry.dwFileAttributes & FILE_ATTRIBUTE_READONLY)
      SetFileAttributesW(full.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
      RemoveTree(full);
    else
      DeleteFileW(full.c_str());
  }
  RemoveDirectoryW(path.c_str());
}

std::string PatternOf(std::size_t bytes) {
  std::string pattern(bytes, '\0');
  for (std::size_t i = 0; i < bytes; ++i)
    pattern[i] = static_cast<char>(i * 7 + i / 4096);
  return pattern;
}

std::wstring Wide(const std::string& text) {
  return std::wstring(text.begin(), text.end());
}
