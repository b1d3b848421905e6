#pragma once

#include <windows.h>

// What the test program and the DLLs that it loads share: which functions of the module were entered since the last step of
// the test program.

struct EnteredFunction {
  LONG isInDll;   // or in the test program
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
