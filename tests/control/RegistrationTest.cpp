// Registration by the platform's registrar, in the registry that every program of the prefix sees.

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <optional>

#include "control/Registrar.h"
#include "host/Apartments.h"
#include "host/ControlFixture.h"
#include "host/RegistryKeys.h"
#include "support/FakeXmlBase.h"
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
  PATCH_IMPORT(
      deleting, RegDeleteKeyA,
      [](auto original, HKEY root, const char* key) {
    ADD_FAILURE() << "the registrar was not asked; the module deletes " << key << " itself";
    return original(root, key);
      },
      module.Handle());
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

// The system's registrar: keeps what it was told.
class FakeRegistrar : public IRegistrar {
 public:
  Lines calls;
  std::wstring quotedPath;
  HRESULT replacementCode = S_OK;
  int references = 0;

  HRESULT WINAPI QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references); }
  ULONG WINAPI Release() override { return static_cast<ULONG>(--references); }

  HRESULT WINAPI AddReplacement(const wchar_t* key, const wchar_t* item) override {
    calls.push_back("replace " + NarrowOf(key));
    quotedPath = item;
    return replacementCode;
  }
  HRESULT WINAPI ResourceRegister(const wchar_t* file, UINT id, const wchar_t* type) override {
    return Script("register ", file, id, type);
  }
  HRESULT WINAPI ResourceUnregister(const wchar_t* file, UINT id, const wchar_t* type) override {
    return Script("unregister ", file, id, type);
  }

  FAKE_METHOD_REFUSED(ClearReplacements)
  FAKE_METHOD_REFUSED(ResourceRegisterSz, const wchar_t*, const wchar_t*, const wchar_t*)
  FAKE_METHOD_REFUSED(ResourceUnregisterSz, const wchar_t*, const wchar_t*, const wchar_t*)
  FAKE_METHOD_REFUSED(FileRegister, const wchar_t*)
  FAKE_METHOD_REFUSED(FileUnregister, const wchar_t*)
  FAKE_METHOD_REFUSED(StringRegister, const wchar_t*)
  FAKE_METHOD_REFUSED(StringUnregister, const wchar_t*)

 private:
  static std::string NarrowOf(const wchar_t* text) { return std::string(text, text + wcslen(text)); }

  HRESULT Script(const std::string& task, const wchar_t* file, UINT id, const wchar_t* type) {
    calls.push_back(task + NarrowOf(type) + " " + std::to_string(id) + " of " + NarrowOf(file));
    return S_OK;
  }
};

// The registrar is the test's own.
class RegistrarTest : public RegistrationTest {
 protected:
  void TearDown() override {
    creation.reset();
    EXPECT_EQ(0, registrar.references);
    RegistrationTest::TearDown();
  }

  FakeRegistrar registrar;
  std::optional<ImportedFunction<struct CoCreateInstanceImport, decltype(&::CoCreateInstance)>> creation{
      std::in_place, "CoCreateInstance",
      [this](auto, REFCLSID, IUnknown* outer, DWORD context, REFIID, void** object) {
    EXPECT_EQ(nullptr, outer);
    EXPECT_EQ(DWORD{CLSCTX_INPROC_SERVER}, context);
    registrar.AddRef();
    *object = static_cast<IRegistrar*>(&registrar);
    return S_OK;
      },
      module.Handle()};
};

TEST_F(RegistrarTest, IsToldThePathAndThenTheScript) {
  const std::string script = "REGISTRY 100 of " + installed.Path();
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ((Lines{"replace MODULE", "register " + script}), registrar.calls);
  EXPECT_EQ(Wide(installed.Path()), registrar.quotedPath);
  registrar.calls.clear();
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ((Lines{"replace MODULE", "unregister " + script}), registrar.calls);
}

TEST_F(RegistrarTest, IsGivenTheLongestPathWithAllItsQuotesDoubled) {
  const std::wstring path(MAX_PATH - 1, L'\'');
  PATCH_IMPORT(
      name, GetModuleFileNameW,
      [&](auto, HMODULE, wchar_t* buffer, DWORD) -> DWORD {
        wcscpy(buffer, path.c_str());
        return static_cast<DWORD>(path.size());
      },
      module.Handle());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(path + path, registrar.quotedPath);
  EXPECT_EQ(2u, registrar.calls.size());
}

TEST_F(RegistrarTest, ThatDoesNotTakeThePathIsNotGivenTheScript) {
  registrar.replacementCode = E_OUTOFMEMORY;
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(Lines{"replace MODULE"}, registrar.calls);
  EXPECT_EQ(ClassKey() + " = Quorvane ActiveX Control", DumpClassKeys().at(0));
}

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
