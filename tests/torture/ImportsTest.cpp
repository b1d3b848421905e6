// What the module calls: nothing of the system may be left out of the torture unnoticed.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/InstalledModule.h"
#include "torture/FailingSystem.h"

namespace {

// What cannot fail, what only formats or compares text in place, and what the C runtime needs before the module's own code
// runs.
const std::vector<std::string> kLeftAlone = {
    "CharUpperA",
    "CompareFileTime",
    "CryptAcquireContextA",
    "CryptGenRandom",
    "CryptReleaseContext",
    "DeleteCriticalSection",
    "DisableThreadLibraryCalls",
    "EnterCriticalSection",
    "FreeLibrary",
    "GetFileType",
    "GetLastError",
    "GetLocalTime",
    "GetModuleHandleA",
    "GetProcAddress",
    "GetProcessHeap",
    "InitializeCriticalSection",
    "IsDBCSLeadByte",
    "LeaveCriticalSection",
    "LoadLibraryA",
    "lstrcpynA",
    "PathAddBackslashA",
    "PathAppendA",
    "PathFindFileNameA",
    "PathRemoveBackslashA",
    "PathRemoveExtensionA",
    "SetLastError",
    "Sleep",
    "StrStrA",
    "SysStringLen",
    "TlsGetValue",
    "VirtualProtect",
    "VirtualQuery",
    "wnsprintfA",
    "wsprintfA",
    "wvnsprintfA",
    "wvnsprintfW",
};

// The functions that a module imports by name, without those of the C runtime.
std::vector<std::string> ImportsOf(HMODULE module) {
  std::vector<std::string> names;
  const char* const base = reinterpret_cast<const char*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + table); library->Name; ++library) {
    if (!_stricmp(base + library->Name, "msvcrt.dll"))
      continue;
    for (const auto* entry = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
         entry->u1.AddressOfData; ++entry)
      names.push_back(reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + entry->u1.AddressOfData)->Name);
  }
  return names;
}

bool Has(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

TEST(ImportsTest, EveryImportedFunctionIsMadeToFailOrCannot) {
  const InstalledModule installed;
  const LoadedModule module(installed.Path());
  const std::vector<std::string> imports = ImportsOf(module.Handle());
  CallCounter counter;
  Places places;
  const FailingSystem system(module.Handle(), counter, places);
  ASSERT_LT(60u, imports.size());
  for (const std::string& name : imports)
    EXPECT_NE(Has(system.Replaced(), name), Has(kLeftAlone, name)) << name;
}

}  // namespace
