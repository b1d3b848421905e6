#include "support/Files.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>

#include "common/Handles.h"

TemporaryFolder::TemporaryFolder() {
  static std::atomic<int> count{0};
  char base[MAX_PATH];
  GetTempPathA(MAX_PATH, base);
  path = std::string(base) + "norvik-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
  RemoveTree(path);
  if (!CreateDirectoryA(path.c_str(), nullptr))
    ADD_FAILURE() << "cannot create " << path << ", error " << GetLastError();
}

TemporaryFolder::~TemporaryFolder() {
  RemoveTree(path);
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
  if (!file) {
    ADD_FAILURE() << "cannot read " << path << ", error " << GetLastError();
    return std::string();
  }
  std::string content;
  char chunk[65536];
  DWORD count = 0;
  while (ReadFile(file.Get(), chunk, sizeof(chunk), &count, nullptr) && count > 0)
    content.append(chunk, count);
  return content;
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
  return GetFileAttributesA(path.c_str());
}

std::string NamesIn(const std::string& folder) {
  std::set<std::string> names;
  WIN32_FIND_DATAA data;
  const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &data);
  if (search != INVALID_HANDLE_VALUE) {
    do {
      const std::string name = data.cFileName;
      if (name != "." && name != "..")
        names.insert(name);
    } while (FindNextFileA(search, &data));
    FindClose(search);
  }
  std::string joined;
  for (const std::string& name : names)
    joined += (joined.empty() ? "" : " ") + name;
  return joined;
}

void RemoveTree(const std::string& path) {
  WIN32_FIND_DATAA data;
  const HANDLE search = FindFirstFileA((path + "\\*").c_str(), &data);
  if (search != INVALID_HANDLE_VALUE) {
    do {
      const std::string name = data.cFileName;
      if (name == "." || name == "..")
        continue;
      const std::string full = path + "\\" + name;
      SetFileAttributesA(full.c_str(), FILE_ATTRIBUTE_NORMAL);
      if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
        RemoveTree(full);
      else
        DeleteFileA(full.c_str());
    } while (FindNextFileA(search, &data));
    FindClose(search);
  }
  RemoveDirectoryA(path.c_str());
}

std::wstring Wide(const std::string& text) {
  return std::wstring(text.begin(), text.end());
}
