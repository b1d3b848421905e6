// What the DLL shows to whoever loads it: four functions, and one class.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"

using Microsoft::WRL::ComPtr;

namespace {

// The names in the export table of a loaded module, in its order (that of the alphabet).
Lines ExportedNames(HMODULE module) {
  char* const base = reinterpret_cast<char*>(module);
  const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
  const auto* exports = reinterpret_cast<IMAGE_EXPORT_DIRECTORY*>(base + table);
  const auto* names = reinterpret_cast<DWORD*>(base + exports->AddressOfNames);
  Lines found;
  for (DWORD index = 0; index < exports->NumberOfNames; ++index)
    found.push_back(base + names[index]);
  return found;
}

using ExportsTest = ModuleTest;

TEST_F(ExportsTest, TheModuleExportsFourFunctionsAndNothingElse) {
  EXPECT_EQ((Lines{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"}),
            ExportedNames(module.Handle()));
}

TEST_F(ExportsTest, TheClassIsHandedOutAsAClassFactory) {
  ComPtr<IClassFactory> factory;
  EXPECT_HRESULT(
      S_OK, module.GetClassObject(CLSID_AXNorvik, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf())));
  EXPECT_NE(nullptr, factory.Get());
}

TEST_F(ExportsTest, TheClassIsHandedOutAsAnUnknownObject) {
  ComPtr<IUnknown> unknown;
  EXPECT_HRESULT(
      S_OK, module.GetClassObject(CLSID_AXNorvik, IID_IUnknown, reinterpret_cast<void**>(unknown.GetAddressOf())));
  ComPtr<IClassFactory> factory;
  EXPECT_HRESULT(S_OK, unknown.As(&factory));
}

struct RefusedClass {
  const char* name;
  const GUID* classId;
  const GUID* interfaceId;
  HRESULT code;
};

class RefusedClassTest : public ModuleTest, public testing::WithParamInterface<RefusedClass> {};

TEST_P(RefusedClassTest, GivesItsCodeAndNothing) {
  void* object = this;
  EXPECT_HRESULT(GetParam().code, module.GetClassObject(*GetParam().classId, *GetParam().interfaceId, &object));
  EXPECT_EQ(nullptr, object);
}

const RefusedClass kRefusedClasses[] = {
    {"NoClass", &CLSID_NULL, &IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
    {"AnotherClass", &CLSID_StdMarshal, &IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
    {"TheLibraryAsAClass", &LIBID_NORVIKLib, &IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
    {"TheControlsInterface", &CLSID_AXNorvik, &IID_IAXNorvik, E_NOINTERFACE},
    {"Dispatch", &CLSID_AXNorvik, &IID_IDispatch, E_NOINTERFACE},
    {"LicensedFactory", &CLSID_AXNorvik, &IID_IClassFactory2, E_NOINTERFACE},
};
INSTANTIATE_TEST_SUITE_P(Rows, RefusedClassTest, testing::ValuesIn(kRefusedClasses), [](const auto& row) {
  return row.param.name;
});

TEST_F(ExportsTest, NoPlaceForTheClassIsRefused) {
  EXPECT_HRESULT(E_POINTER, module.GetClassObject(CLSID_AXNorvik, IID_IClassFactory, nullptr));
}

TEST_F(ExportsTest, AModuleThatWasOnlyLoadedCanBeUnloaded) {
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(ExportsTest, LoadingTheModuleWritesNoLog) {
  EXPECT_EQ(Lines{}, Messages("Norvik"));
  EXPECT_FALSE(FileExistsAt(LogCapture::PathOf("Norvik")));
}

}  // namespace
