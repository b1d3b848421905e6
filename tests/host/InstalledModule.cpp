#include "host/InstalledModule.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include "host/RegistryKeys.h"
#include "support/HResult.h"
#include "support/Program.h"

using Microsoft::WRL::ComPtr;

InstalledModule::InstalledModule(const std::string& subfolder) : folder(temporary.File(subfolder)) {
  CreateDirectoryA(folder.c_str(), nullptr);
  CopyBuilt("norvik.dll", folder);
}

InstalledModule::~InstalledModule() {
  DeleteUrlCacheEntryA(PermitPath().c_str());
}

void InstalledModule::WritePermit(const std::string& url, const std::string& destination) const {
  WriteWholeFile(PermitPath(),
                 "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">\r\n"
                 "<VantorPermissions version=\"1.0\">\r\n<Source><URL>" +
                     url + "</URL><Extension>txt</Extension><Extension>htm</Extension><Extension>dll</Extension></Source>" +
                     "\r\n<Destination><Path>" + destination + "</Path></Destination>\r\n</VantorPermissions>\r\n");
}

LoadedModule::LoadedModule(const std::string& modulePath) : path(modulePath), module(LoadLibraryA(path.c_str())) {
  if (!module)
    ADD_FAILURE() << "cannot load " << path << ", error " << GetLastError();
}

template <class Function>
Function LoadedModule::Find(const char* name) const {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

HRESULT LoadedModule::CanUnloadNow() const {
  return Find<HRESULT(STDAPICALLTYPE*)()>("DllCanUnloadNow")();
}

HRESULT LoadedModule::GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) const {
  return Find<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>("DllGetClassObject")(classId, interfaceId, object);
}

HRESULT LoadedModule::RegisterServer() const {
  if (!MayChangeEntries())
    return E_ACCESSDENIED;
  return Find<HRESULT(STDAPICALLTYPE*)()>("DllRegisterServer")();
}

HRESULT LoadedModule::UnregisterServer() const {
  if (!MayChangeEntries())
    return E_ACCESSDENIED;
  return Find<HRESULT(STDAPICALLTYPE*)()>("DllUnregisterServer")();
}

ComPtr<IClassFactory> LoadedModule::Factory() const {
  ComPtr<IClassFactory> factory;
  EXPECT_HRESULT(S_OK, GetClassObject(CLSID_AXNorvik, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf())));
  return factory;
}

ComPtr<IAXNorvik> LoadedModule::CreateControl() const {
  ComPtr<IAXNorvik> control;
  EXPECT_HRESULT(S_OK, Factory()->CreateInstance(nullptr, IID_IAXNorvik, reinterpret_cast<void**>(control.GetAddressOf())));
  return control;
}

bool LoadedModule::Free() {
  if (module)
    FreeLibrary(module);
  module = nullptr;
  return GetModuleHandleA(path.c_str()) == nullptr;
}
