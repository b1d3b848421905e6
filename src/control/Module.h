#pragma once

#include "common/Windows.h"

// The module as a COM server: its instance, and the count of what keeps it loaded.

void AttachModule(HINSTANCE instance);

// The module's path; false when it cannot be had or does not fit.
bool GetModuleWidePath(wchar_t (&path)[MAX_PATH]);

// Server locks and live objects. The count may be changed from any thread.
void LockModule();
void UnlockModule();
bool IsModuleInUse();

// A member of every object that keeps the module loaded.
class ModuleReference {
 public:
  ModuleReference() { LockModule(); }
  ~ModuleReference() { UnlockModule(); }
  ModuleReference(const ModuleReference&) = delete;
  ModuleReference& operator=(const ModuleReference&) = delete;
};
