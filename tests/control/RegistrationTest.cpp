// Registration by the platform's registrar, in the registry that every program of the prefix sees.

#include <gtest/gtest.h>

#include <algorithm>

#include "host/Apartments.h"
#include "host/ControlFixture.h"
#include "host/RegistryKeys.h"
#include "support/ImportPatch.h"

using Microsoft::WRL::ComPtr;

namespace {

// What the registration script writes for a module at `path`.
Lines ScriptEntries(const std::string& path) {
  const std::string key = ClassKey();
  const std::string classId = Braced(CLSID_AXNorvik);
  return {key + " = AXNorvik Class",
          key + "\\InprocServer32 = " + path,
          key + "\\InprocServer32 [ThreadingModel] = Apartment",
          key + "\\ProgID = Norvik.AXNorvik.1",
          key + "\\Programmable",
          key + "\\TypeLib = " + Braced(LIBID_NORVIKLib),
          key + "\\VersionIndependentProgID = Norvik.AXNorvik",
          "Norvik.AXNorvik = AXNorvik Class",
          "Norvik.AXNorvik\\CLSID = " + classId,
          "Norvik.AXNorvik\\CurVer = Norvik.AXNorvik.1",
          "Norvik.AXNorvik.1 = AXNorvik Class",
          "Norvik.AXNorvik.1\\CLSID = " + classId};
}

class RegistrationTest : public ModuleTest {
 protected:
  ModuleEntriesAside aside;
};

TEST_F(RegistrationTest, WritesTheEntriesOfTheScript) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(ScriptEntries(installed.Path()), DumpClassKeys());
}

TEST_F(RegistrationTest, NeverWritesTheTableWhenTheScriptWasCarriedOut) {
  int calls = 0;
  const auto count = [&calls](auto original, auto... arguments) {
    ++calls;
    return original(arguments...);
  };
  PATCH_IMPORT(keys, RegCreateKeyA, count, module.Handle());
  PATCH_IMPORT(values, RegSetValueExA, count, module.Handle());
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(0, calls);
}

TEST_F(RegistrationTest, RegistersTheTypeLibrary) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  BString path;
  EXPECT_HRESULT(S_OK, QueryPathOfRegTypeLib(LIBID_NORVIKLib, 1, 0, LOCALE_NEUTRAL, path.Receive()));
  EXPECT_EQ(installed.Path(), Narrow(path));
  ComPtr<ITypeLib> library;
  EXPECT_HRESULT(S_OK, LoadRegTypeLib(LIBID_NORVIKLib, 1, 0, LOCALE_NEUTRAL, &library));
  const Lines entries = DumpClassKey(LibraryKey());
  const char* const platform = sizeof(void*) == 8 ? "win64" : "win32";
  EXPECT_EQ(
      1, std::count(entries.begin(), entries.end(), LibraryKey() + "\\1.0 = Quorvane ActiveX Control 1.0 Type Library"));
  EXPECT_EQ(
      1, std::count(entries.begin(), entries.end(), LibraryKey() + "\\1.0\\0\\" + platform + " = " + installed.Path()));
}

TEST_F(RegistrationTest, RegistersTheInterfaceOfTheTypeLibrary) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  const Lines entries = DumpClassKey(InterfaceKey());
  ASSERT_FALSE(entries.empty());
  EXPECT_EQ(InterfaceKey() + " = IAXNorvik", entries[0]);
  EXPECT_EQ(1, std::count(entries.begin(), entries.end(), InterfaceKey() + "\\TypeLib = " + Braced(LIBID_NORVIKLib)));
}

TEST_F(RegistrationTest, AModuleThatMovedRegistersItsNewPlace) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  const InstalledModule elsewhere("elsewhere");
  const LoadedModule other(elsewhere.Path());
  EXPECT_HRESULT(S_OK, other.RegisterServer());
  EXPECT_EQ(ScriptEntries(elsewhere.Path()), DumpClassKeys());
  BString path;
  EXPECT_HRESULT(S_OK, QueryPathOfRegTypeLib(LIBID_NORVIKLib, 1, 0, LOCALE_NEUTRAL, path.Receive()));
  EXPECT_EQ(elsewhere.Path(), Narrow(path));
}

TEST_F(RegistrationTest, RegisteringTwiceIsTheSameAsOnce) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(ScriptEntries(installed.Path()), DumpClassKeys());
}

TEST_F(RegistrationTest, APathMayHoldQuotesAndPercentSigns) {
  const InstalledModule quoted("it's 'here' 100%");
  const LoadedModule other(quoted.Path());
  EXPECT_HRESULT(S_OK, other.RegisterServer());
  EXPECT_EQ(ScriptEntries(quoted.Path()), DumpClassKeys());
  EXPECT_HRESULT(S_OK, other.UnregisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
}

TEST_F(RegistrationTest, UnregistrationLeavesNoKey) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_EQ(Lines{}, DumpClassKey(LibraryKey()));
  EXPECT_EQ(Lines{}, DumpClassKey(InterfaceKey()));
  EXPECT_EQ(Lines{}, DumpClassKey("Wow6432Node\\" + InterfaceKey()));
}

// Component categories and the like, which another program may have put below the class.
void AddStrayKeys() {
  for (const std::string& key : {ClassKey() + "\\Stray", ClassKey() + "\\Programmable\\Stray"}) {
    HKEY created = nullptr;
    EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyA(HKEY_CLASSES_ROOT, key.c_str(), &created));
    RegCloseKey(created);
  }
}

// The registrar of some systems does not carry this out, so the words are what can be seen everywhere.
TEST_F(RegistrationTest, TheScriptRemovesTheClassWholeAndTheKeyOfAllClassesNever) {
  const HRSRC found = FindResourceA(module.Handle(), MAKEINTRESOURCEA(100), "REGISTRY");
  ASSERT_NE(nullptr, found);
  const std::string script(
      static_cast<const char*>(LockResource(LoadResource(module.Handle(), found))), SizeofResource(module.Handle(), found));
  for (const std::string& words :
       {std::string("NoRemove CLSID\r\n"), "ForceRemove " + Braced(CLSID_AXNorvik) + " = s 'AXNorvik Class'\r\n",
        std::string("ForceRemove Programmable\r\n")})
    EXPECT_NE(std::string::npos, script.find(words)) << words;
}

TEST_F(RegistrationTest, TheClassIsWrittenAnew) {
  AddStrayKeys();
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(ScriptEntries(installed.Path()), DumpClassKeys());
}

TEST_F(RegistrationTest, UnregistrationLeavesOtherClassesAlone) {
  const Lines registrar = DumpClassKey("CLSID\\{44EC053A-400F-11D0-9DCD-00A0C90391D3}");
  ASSERT_FALSE(registrar.empty());
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(registrar, DumpClassKey("CLSID\\{44EC053A-400F-11D0-9DCD-00A0C90391D3}"));
}

TEST_F(RegistrationTest, WhatIsNotRegisteredCanBeUnregistered) {
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
}

TEST_F(RegistrationTest, RegistrationKeepsNothingLoaded) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
  EXPECT_TRUE(module.Free());
  EXPECT_TRUE(DeleteFileA(installed.Path().c_str())) << GetLastError();
}

// An installer's thread may have initialised COM in either way, or not at all.
class RegistrationApartmentTest : public RegistrationTest, public testing::WithParamInterface<Apartment> {};

TEST_P(RegistrationApartmentTest, IsLeftAsItWas) {
  InThread(GetParam(), [&] {
    EXPECT_HRESULT(S_OK, module.RegisterServer());
    ExpectApartment(GetParam());
    EXPECT_EQ(ScriptEntries(installed.Path()), DumpClassKeys());
    EXPECT_HRESULT(S_OK, module.UnregisterServer());
    ExpectApartment(GetParam());
    EXPECT_EQ(Lines{}, DumpClassKeys());
  });
}

INSTANTIATE_TEST_SUITE_P(Apartments, RegistrationApartmentTest,
                         testing::Values(Apartment::SingleThreaded, Apartment::MultiThreaded, Apartment::None),
                         [](const auto& row) { return NameOf(row.param); });

// A host that knows the control by its name only; the module is loaded by the system, from where it is registered.
class RegisteredControlTest : public ControlTest {
 protected:
  RegisteredControlTest() {
    control.Reset();
    EXPECT_HRESULT(S_OK, module.RegisterServer());
    EXPECT_TRUE(module.Free());
  }

  void TearDown() override {
    control.Reset();
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_EQ(nullptr, GetModuleHandleA(installed.Path().c_str()));
    ControlTest::TearDown();
  }

  ModuleEntriesAside aside;
};

TEST_F(RegisteredControlTest, IsMadeByItsName) {
  for (const wchar_t* name : {L"Norvik.AXNorvik", L"Norvik.AXNorvik.1"}) {
    CLSID classId = CLSID_NULL;
    ASSERT_HRESULT(S_OK, CLSIDFromProgID(name, &classId));
    EXPECT_EQ(CLSID_AXNorvik, classId);
    ASSERT_HRESULT(S_OK, CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IAXNorvik,
                                          reinterpret_cast<void**>(control.ReleaseAndGetAddressOf())));
  }
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
}

TEST_F(RegisteredControlTest, GivesItsNamesBack) {
  LPOLESTR name = nullptr;
  EXPECT_HRESULT(S_OK, ProgIDFromCLSID(CLSID_AXNorvik, &name));
  EXPECT_EQ(std::wstring(L"Norvik.AXNorvik.1"), name);
  CoTaskMemFree(name);
}

}  // namespace
