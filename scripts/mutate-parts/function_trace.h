#pragma once

#include <windows.h>

// What the test program shares with the DLLs that it loads and the programs that it starts: which functions of src/ were entered
// since its last step.

// Of what a function is a part. A trace calls them "test", "norvik.dll", "norvik.exe" and "norvikopen.exe".
enum class ImageKind : LONG { kTestProgram, kModule, kTool, kOpen };

struct EnteredFunction {
  ImageKind image;
  LONG position;  // of the function behind the beginning of its image
};

constexpr LONG kMostFunctions = 4096;

struct FunctionTrace {
  DWORD testProgram;  // the process that runs the tests
  volatile LONG step;
  volatile LONG count;
  EnteredFunction functions[kMostFunctions];
};

// Null when no test program asks for it.
FunctionTrace* OpenFunctionTrace(bool isCreated);
