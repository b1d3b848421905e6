#include "control/Module.h"

#include "common/ModulePath.h"

namespace {

HINSTANCE moduleInstance;
volatile LONG moduleUses;

}  // namespace

void AttachModule(HINSTANCE instance) {
  moduleInstance = instance;
  RecordModulePath(instance);
}

bool GetModuleWidePath(wchar_t (&path)[MAX_PATH]) {
  const DWORD length = GetModuleFileNameW(moduleInstance, path, MAX_PATH);
  return length > 0 && length < MAX_PATH;
}

void LockModule() {
  InterlockedIncrement(&moduleUses);
}

void UnlockModule() {
  InterlockedDecrement(&moduleUses);
}

bool IsModuleInUse() {
  return moduleUses != 0;
}
