#include "control/ClassFactory.h"
#include "control/Module.h"
#include "control/Registration.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    AttachModule(instance);
    DisableThreadLibraryCalls(instance);
  }
  return TRUE;
}

STDAPI DllCanUnloadNow() {
  return IsModuleInUse() ? S_FALSE : S_OK;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object) {
  return GetClassObject(classId, interfaceId, object);
}

STDAPI DllRegisterServer() {
  return RegisterServer();
}

STDAPI DllUnregisterServer() {
  return UnregisterServer();
}
