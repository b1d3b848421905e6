#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/ImportPatch.h"
#include "tool/Console.h"

// Standard output and standard error as consoles or as files, and what the program writes to them.
class FakeStreamsTest : public testing::Test {
 protected:
  struct Stream {
    bool isConsole = true;
    bool knowsSequences = true;
    DWORD mode = 3;
    std::vector<std::wstring> written;  // as to a console
    std::string bytes;                  // as to a file
    std::size_t mostBytes = 1000000;    // that a file takes at once
    bool isRead = true;
  };

  template <class Action>
  void Do(Action action) {
    PATCH_IMPORT(
        handles, GetStdHandle, [&](auto, DWORD number) -> HANDLE { return number == STD_OUTPUT_HANDLE ? &output : &error; });
    PATCH_IMPORT(modes, GetConsoleMode, [](auto, HANDLE stream, DWORD* mode) -> BOOL {
      *mode = Of(stream).mode;
      return Of(stream).isConsole;
    });
    PATCH_IMPORT(changes, SetConsoleMode, [](auto, HANDLE stream, DWORD mode) -> BOOL {
      Of(stream).mode = mode;
      return Of(stream).knowsSequences;
    });
    PATCH_IMPORT(
        consoles, WriteConsoleW, [](auto, HANDLE stream, const void* text, DWORD length, DWORD* written, void*) -> BOOL {
          Of(stream).written.emplace_back(static_cast<const wchar_t*>(text), length);
          *written = length;
          return TRUE;
        });
    PATCH_IMPORT(files, WriteFile,
                 [&](auto original, HANDLE handle, const void* data, DWORD length, DWORD* written, auto overlapped) -> BOOL {
                   if (handle != &output && handle != &error)
                     return original(handle, data, length, written, overlapped);
                   Stream& stream = Of(handle);
                   *written = stream.isRead ? static_cast<DWORD>(std::min<std::size_t>(length, stream.mostBytes)) : 0;
                   stream.bytes.append(static_cast<const char*>(data), *written);
                   return stream.isRead;
                 });
    action();
    PrintError("");  // takes away what shows progress
  }

  static Stream& Of(HANDLE stream) { return *static_cast<Stream*>(stream); }

  Stream output;
  Stream error;
};
