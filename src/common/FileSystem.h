#pragma once

#include "common/Windows.h"

// The files and folders of the machine. Whoever only wants to know what would become of them gives an object of a class that
// keeps account instead. Operations answer false after a failure and leave the reason in the thread's last error.
class FileSystem {
 public:
  constexpr FileSystem() = default;
  FileSystem(const FileSystem&) = delete;
  FileSystem& operator=(const FileSystem&) = delete;

  // INVALID_FILE_ATTRIBUTES when there is nothing of that name.
  virtual DWORD GetAttributes(const char* path) const;

  virtual bool SetAttributes(const char* path, DWORD attributes);
  virtual bool CreateFolder(const char* path);  // the last one of the path only
  virtual bool Move(const char* from, const char* to);
  virtual bool Delete(const char* path);

  bool Exists(const char* path) const { return GetAttributes(path) != INVALID_FILE_ATTRIBUTES; }

 protected:
  ~FileSystem() = default;
};

// The system's own.
FileSystem& SystemFiles();
