#pragma once

#include "common/Windows.h"

#include <string>

#include "support/ImportPatch.h"

// One file that is made, written and deleted in memory; every other file is the system's. One object at a time.
class CapturedFile {
 public:
  static constexpr char kPath[] = "C:\\captured\\file.bin";

  // The write number `write`, counted from 1, fails with ERROR_DISK_FULL, or takes all but one byte and reports success.
  void FailWrite(unsigned write, bool isShort) {
    failedWrite = write;
    isFailureShort = isShort;
  }

  const std::string& Bytes() const { return bytes; }
  bool IsThere() const { return isThere; }
  bool IsClosed() const { return !isOpen; }
  ULONGLONG Time() const { return time; }

 private:
  HANDLE Handle() { return this; }

  BOOL Write(const void* data, DWORD size, DWORD* count) {
    *count = 0;
    const bool fails = ++writes == failedWrite;
    if (fails && !isFailureShort) {
      SetLastError(ERROR_DISK_FULL);
      return FALSE;
    }
    *count = fails ? size - 1 : size;
    bytes.append(static_cast<const char*>(data), *count);
    return TRUE;
  }

  HANDLE Create() {
    isThere = isOpen = true;
    bytes.clear();
    return Handle();
  }

  BOOL Delete() {
    isThere = false;
    return TRUE;
  }

  std::string bytes;
  bool isThere = false;
  bool isOpen = false;
  bool isFailureShort = false;
  unsigned failedWrite = 0;
  unsigned writes = 0;
  ULONGLONG time = 0;

  ImportedFunction<struct CapturedCreate, decltype(&::CreateFileA)> create{
      "CreateFileA", [this](auto original, const char* name, auto... arguments) {
        return std::string(name) == kPath ? Create() : original(name, arguments...);
      }};
  ImportedFunction<struct CapturedWrite, decltype(&::WriteFile)> write{
      "WriteFile", [this](auto original, HANDLE file, const void* data, DWORD size, DWORD* count, auto* overlapped) {
        return file == Handle() ? Write(data, size, count) : original(file, data, size, count, overlapped);
      }};
  ImportedFunction<struct CapturedClose, decltype(&::CloseHandle)> close{
      "CloseHandle", [this](auto original, HANDLE file) -> BOOL {
        if (file != Handle())
          return original(file);
        isOpen = false;
        return TRUE;
      }};
  ImportedFunction<struct CapturedDelete, decltype(&::DeleteFileA)> remove{
      "DeleteFileA",
      [this](auto original, const char* name) { return std::string(name) == kPath ? Delete() : original(name); }};
  ImportedFunction<struct CapturedTime, decltype(&::SetFileTime)> setTime{
      "SetFileTime", [this](auto original, HANDLE file, auto* creation, auto* access, const FILETIME* written) -> BOOL {
        if (file != Handle())
          return original(file, creation, access, written);
        time = ULONGLONG{written->dwHighDateTime} << 32 | written->dwLowDateTime;
        return TRUE;
      }};
};
