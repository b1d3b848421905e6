// What the compiler calls at the beginning of every function of src/. It notes each function once in a step, and then calls
// nothing of the system: tests let system calls fail.

#include "function_trace.h"

#include <cstring>

extern "C" IMAGE_DOS_HEADER __ImageBase;

FunctionTrace* OpenFunctionTrace(bool isCreated) {
  static const char kName[] = "Local\\norvik-function-trace";
  const HANDLE mapping =
      isCreated ? CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(FunctionTrace), kName)
                : OpenFileMappingA(FILE_MAP_WRITE, FALSE, kName);
  return mapping ? static_cast<FunctionTrace*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 0)) : nullptr;
}

namespace {

constexpr unsigned kSeenFunctions = 8192;

struct Seen {
  const void* function;
  LONG step;
};

ImageKind KindOfThisImage() {
  char path[MAX_PATH] = "";
  if (GetModuleFileNameA(reinterpret_cast<HMODULE>(&__ImageBase), path, MAX_PATH) >= MAX_PATH)
    return ImageKind::kTestProgram;  // none of the others has a path as long
  const char* const separator = std::strrchr(path, '\\');
  const char* const name = separator ? separator + 1 : path;
  if (reinterpret_cast<const void*>(&__ImageBase) != reinterpret_cast<const void*>(GetModuleHandleA(nullptr)))
    return ImageKind::kModule;
  if (!lstrcmpiA(name, "norvik.exe"))
    return ImageKind::kTool;
  return lstrcmpiA(name, "norvikopen.exe") ? ImageKind::kTestProgram : ImageKind::kOpen;
}

struct Image {
  ImageKind kind = KindOfThisImage();
  FunctionTrace* trace = OpenFunctionTrace(kind == ImageKind::kTestProgram);
  // A program for tests that a test program starts has functions of its own at the same positions.
  bool isWatched = trace && (kind != ImageKind::kTestProgram || IsTestProgram());
  Seen seen[kSeenFunctions] = {};

  bool IsTestProgram() {
    if (!trace->testProgram)
      trace->testProgram = GetCurrentProcessId();
    return trace->testProgram == GetCurrentProcessId();
  }

  void Note(const void* function) {
    const LONG step = trace->step + 1;  // zero is no step
    unsigned place = static_cast<unsigned>(reinterpret_cast<UINT_PTR>(function) >> 2) % kSeenFunctions;
    while (seen[place].function && seen[place].function != function)
      place = (place + 1) % kSeenFunctions;
    if (seen[place].function && seen[place].step == step)
      return;
    seen[place] = {function, step};
    const LONG number = InterlockedIncrement(&trace->count) - 1;
    if (number < kMostFunctions) {
      const UINT_PTR position = reinterpret_cast<UINT_PTR>(function) - reinterpret_cast<UINT_PTR>(&__ImageBase);
      trace->functions[number] = {kind, static_cast<LONG>(position)};
    }
  }
};

Image* image = nullptr;
bool isBeingMade = false;

}  // namespace

extern "C" void __cyg_profile_func_enter(void* function, void*) {
  if (!image && !isBeingMade) {
    isBeingMade = true;
    static Image made;
    image = &made;
  }
  if (image && image->isWatched)
    image->Note(function);
}

extern "C" void __cyg_profile_func_exit(void*, void*) {}
