#pragma once

#include "common/Windows.h"

#include <string>
#include <vector>

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

// The full name of a file of the project ("docs/tool.md"). The project's folder is named by the environment variable
// NORVIK_PROJECT_FOLDER; without it, it is the one that the program was built in, as <folder>/build/<width>/tests/<program>.
std::string ProjectFile(const std::string& name);

// A test that cannot prepare its files fails: these add a failure when the file system refuses.
void WriteWholeFile(const std::string& path, const std::string& content);
std::string ReadWholeFile(const std::string& path);
std::string ReadWholeFile(const std::wstring& path);

// Some moment in June 2002.
constexpr FILETIME kAnyTime = {0xB1A8C200, 0x01C21C87};

void SetFileWriteTime(const std::string& path, const FILETIME& time);
FILETIME GetFileWriteTimeOf(const std::string& path);
DWORD AttributesOf(const std::string& path);  // also when there is nothing at `path`

bool FileExistsAt(const std::string& path);

// What is in a folder, without "." and ".."; nothing of one that is not there.
std::vector<WIN32_FIND_DATAW> EntriesOf(const std::wstring& folder);

// The names in a folder, sorted, without "." and "..", separated by blanks.
std::string NamesIn(const std::string& folder);

// With names of any characters, and read-only files.
void RemoveTree(const std::string& path);
void RemoveTree(const std::wstring& path);

// Bytes of which every one differs from the one 4 KiB before it, so that a chunk that is lost or doubled shows.
std::string PatternOf(std::size_t bytes);

// Text between the narrow tests and the wide interfaces; ASCII only.
std::wstring Wide(const std::string& text);
