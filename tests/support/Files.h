#pragma once

#include "common/Windows.h"

#include <string>

// A folder of its own below the temporary folder, without a trailing backslash; it is removed with all that is in it,
// read-only files included.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& Path() const { return path; }

  // The full name of `name` below the folder.
  std::string File(const std::string& name) const { return path + "\\" + name; }

 private:
  std::string path;
};

// A test that cannot prepare its files fails: these add a failure when the file system refuses.
void WriteWholeFile(const std::string& path, const std::string& content);
std::string ReadWholeFile(const std::string& path);
void SetFileWriteTime(const std::string& path, const FILETIME& time);
FILETIME GetFileWriteTimeOf(const std::string& path);

bool FileExistsAt(const std::string& path);
DWORD AttributesOf(const std::string& path);

// The names in a folder, sorted, without "." and "..", separated by blanks.
std::string NamesIn(const std::string& folder);

void RemoveTree(const std::string& path);

// Text between the narrow tests and the wide interfaces; ASCII only.
std::wstring Wide(const std::string& text);
