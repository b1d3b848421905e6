// Another process, beside the one that tests.
//
//   other_host run MODULE MANIFEST-URL     runs the manifest; exit code 0 for S_OK, 1 for S_FALSE, 2 for a failure
//   other_host hold FILE SHARING EVENT     holds the file open for reading, with that sharing (a number), from setting the
//                                          event of that name until its standard input ends

#include "common/Windows.h"

#include <cstdlib>
#include <string>

#include "common/Handles.h"
#include "host/ControlFixture.h"

namespace {

int Run(const char* modulePath, const char* manifestUrl) {
  CoInitialize(nullptr);
  LoadedModule module(modulePath);
  HRESULT hr = E_FAIL;
  {
    const auto control = module.CreateControl();
    if (control)
      hr = control->Execute(Automation(manifestUrl).Get());
  }
  CoUninitialize();
  return hr == S_OK ? 0 : hr == S_FALSE ? 1 : 2;
}

int Hold(const char* path, const char* sharing, const char* eventName) {
  const FileHandle file(
      CreateFileA(path, GENERIC_READ, static_cast<DWORD>(std::atoi(sharing)), nullptr, OPEN_EXISTING, 0, nullptr));
  const HANDLE ready = OpenEventA(EVENT_MODIFY_STATE, FALSE, eventName);
  if (!file || !ready)
    return 2;
  SetEvent(ready);
  char byte;
  DWORD count = 0;
  static_cast<void>(ReadFile(GetStdHandle(STD_INPUT_HANDLE), &byte, 1, &count, nullptr));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string task = argc > 1 ? argv[1] : "";
  if (task == "run" && argc == 4)
    return Run(argv[2], argv[3]);
  if (task == "hold" && argc == 5)
    return Hold(argv[2], argv[3], argv[4]);
  return 3;
}
