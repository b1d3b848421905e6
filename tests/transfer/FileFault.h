#pragma once

#include <string>

#include "support/ImportPatch.h"

// Makes one system call of the code under test fail: the call number `call` (counted from 1) of its kind on the file at
// `path`. Other files, the log's among them, are left alone. One object at a time.
class FileFault {
 public:
  enum class Kind {
    Read,
    Write,
    ShortWrite,  // reports success and takes one byte less; `error` is of no use
    SetTime,
    Close,  // the file is closed all the same
  };

  FileFault(const std::string& path, Kind kind, int call, DWORD error)
      : watchedPath(path), faultKind(kind), faultCall(call), faultError(error) {}

  // The calls of the kind so far.
  int Calls() const { return calls; }

 private:
  bool IsFault(HANDLE file, Kind kind) {
    if (file != watched || kind != faultKind || ++calls != faultCall)
      return false;
    SetLastError(faultError);
    return true;
  }

  BOOL Write(decltype(&::WriteFile) original, HANDLE file, const void* bytes, DWORD count, DWORD* written,
             OVERLAPPED* overlapped) {
    if (IsFault(file, Kind::Write))
      return FALSE;
    return original(file, bytes, IsFault(file, Kind::ShortWrite) ? count - 1 : count, written, overlapped);
  }

  std::string watchedPath;
  Kind faultKind;
  int faultCall;
  DWORD faultError;
  HANDLE watched = nullptr;
  int calls = 0;

  ImportedFunction<struct FaultyCreate, decltype(&::CreateFileA)> create{
      "CreateFileA", [this](auto original, const char* name, auto... arguments) {
        const HANDLE file = original(name, arguments...);
        if (watchedPath == name)
          watched = file;
        return file;
      }};
  ImportedFunction<struct FaultyRead, decltype(&::ReadFile)> read{
      "ReadFile", [this](auto original, HANDLE file, auto... arguments) {
        return IsFault(file, Kind::Read) ? FALSE : original(file, arguments...);
      }};
  ImportedFunction<struct FaultyWrite, decltype(&::WriteFile)> write{
      "WriteFile", [this](auto... arguments) { return Write(arguments...); }};
  ImportedFunction<struct FaultyClose, decltype(&::CloseHandle)> close{
      "CloseHandle", [this](auto original, HANDLE file) {
        const BOOL isClosed = original(file);
        const bool isFault = IsFault(file, Kind::Close);
        if (file == watched)
          watched = nullptr;  // the next file may get the same handle
        return isFault ? FALSE : isClosed;
      }};
  ImportedFunction<struct FaultySetTime, decltype(&::SetFileTime)> setTime{
      "SetFileTime", [this](auto original, HANDLE file, auto... arguments) {
        return IsFault(file, Kind::SetTime) ? FALSE : original(file, arguments...);
      }};
};
