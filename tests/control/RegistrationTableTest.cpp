// Registration without the platform's registrar: from the module's own table.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "host/ControlFixture.h"
#include "host/RegistryKeys.h"
#include "support/ImportPatch.h"

namespace {

constexpr int kRowCount = 12;
constexpr int kValueCount = 10;  // of the rows with a value
constexpr HRESULT kDiskFull = static_cast<HRESULT>(0x80070070);
constexpr HRESULT kAccessDenied = static_cast<HRESULT>(0x80070005);

// What the table writes.
Lines TableEntries() {
  const std::string key = ClassKey();
  const std::string classId = Braced(CLSID_AXNorvik);
  return {key + " = Quorvane ActiveX Control",
          key + "\\InProcServer32",
          key + "\\InProcServer32 [ThreadingModel] = Apartment",
          key + "\\ProgID = Norvik.AXNorvik.1",
          key + "\\Programmable",
          key + "\\TypeLib = " + Braced(LIBID_NORVIKLib),
          key + "\\VersionIndependentProgID = Norvik.AXNorvik",
          "Norvik.AXNorvik = Quorvane ActiveX Control",
          "Norvik.AXNorvik\\CLSID = " + classId,
          "Norvik.AXNorvik\\CurVer = Norvik.AXNorvik.1",
          "Norvik.AXNorvik.1 = Quorvane ActiveX Control",
          "Norvik.AXNorvik.1\\CLSID = " + classId};
}

// The same as calls, in the order in which they are made.
Lines TableCalls() {
  const std::string key = ClassKey();
  const std::string classId = Braced(CLSID_AXNorvik);
  return {
      key,
      " = Quorvane ActiveX Control (25)",
      key + "\\InProcServer32",
      key + "\\InProcServer32",
      "ThreadingModel = Apartment (10)",
      key + "\\ProgID",
      " = Norvik.AXNorvik.1 (18)",
      key + "\\Programmable",
      key + "\\TypeLib",
      " = " + Braced(LIBID_NORVIKLib) + " (39)",
      key + "\\VersionIndependentProgID",
      " = Norvik.AXNorvik (16)",
      "Norvik.AXNorvik",
      " = Quorvane ActiveX Control (25)",
      "Norvik.AXNorvik\\CLSID",
      " = " + classId + " (39)",
      "Norvik.AXNorvik\\CurVer",
      " = Norvik.AXNorvik.1 (18)",
      "Norvik.AXNorvik.1",
      " = Quorvane ActiveX Control (25)",
      "Norvik.AXNorvik.1\\CLSID",
      " = " + classId + " (39)"};
}

// The registrar cannot be had.
class RegistrationTableTest : public ModuleTest {
 protected:
  bool IsLibraryRegistered() const {
    BString path;
    return SUCCEEDED(QueryPathOfRegTypeLib(LIBID_NORVIKLib, 1, 0, LOCALE_NEUTRAL, path.Receive())) &&
           Narrow(path) == installed.Path();
  }

  void TearDown() override {
    registrar.reset();
    ModuleTest::TearDown();
  }

  ModuleEntriesAside aside;
  std::optional<ImportedFunction<struct CoCreateInstanceImport, decltype(&::CoCreateInstance)>> registrar{
      std::in_place, "CoCreateInstance", [](auto, auto...) { return REGDB_E_CLASSNOTREG; }, module.Handle()};
};

TEST_F(RegistrationTableTest, WritesEveryRow) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(TableEntries(), DumpClassKeys());
}

TEST_F(RegistrationTableTest, WritesTheRowsInTheirOrder) {
  Lines calls;
  {
    PATCH_IMPORT(
        keys, RegCreateKeyA,
        [&calls](auto original, HKEY root, const char* key, HKEY* created) {
      EXPECT_EQ(HKEY_CLASSES_ROOT, root);
      calls.push_back(key);
      return original(root, key, created);
        },
        module.Handle());
    PATCH_IMPORT(
        values, RegSetValueExA,
        [&calls](auto original, HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data, DWORD bytes) {
      EXPECT_EQ(static_cast<DWORD>(REG_SZ), type);
      calls.push_back(
          std::string(name ? name : "") + " = " + reinterpret_cast<const char*>(data) + " (" + std::to_string(bytes) + ")");
      return original(key, name, reserved, type, data, bytes);
        },
        module.Handle());
    EXPECT_HRESULT(S_OK, module.RegisterServer());
  }
  EXPECT_EQ(TableCalls(), calls);
}

TEST_F(RegistrationTableTest, RegistersTheTypeLibrary) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_TRUE(IsLibraryRegistered());
}

TEST_F(RegistrationTableTest, SuchAControlIsKnownAndCannotBeLoaded) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  CLSID classId = CLSID_NULL;
  EXPECT_HRESULT(S_OK, CLSIDFromProgID(L"Norvik.AXNorvik", &classId));
  EXPECT_EQ(CLSID_AXNorvik, classId);
  void* object = this;
  EXPECT_HRESULT(REGDB_E_CLASSNOTREG, CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object));
  EXPECT_EQ(nullptr, object);
}

class FailingRowTest : public RegistrationTableTest, public testing::WithParamInterface<int> {};

TEST_P(FailingRowTest, AKeyThatCannotBeMadeTakesAllRowsBack) {
  PATCH_IMPORT(
      keys, RegCreateKeyA,
      [call = 0](auto original, auto... arguments) mutable -> LONG {
        return ++call == GetParam() ? ERROR_DISK_FULL : original(arguments...);
      },
      module.Handle());
  EXPECT_HRESULT(kDiskFull, module.RegisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_FALSE(IsLibraryRegistered());
}

TEST_P(FailingRowTest, NothingIsWrittenBehindIt) {
  int made = 0;
  PATCH_IMPORT(
      keys, RegCreateKeyA,
      [&made](auto original, auto... arguments) -> LONG {
        return ++made == GetParam() ? ERROR_DISK_FULL : original(arguments...);
      },
      module.Handle());
  EXPECT_HRESULT(kDiskFull, module.RegisterServer());
  EXPECT_EQ(GetParam(), made);
}

INSTANTIATE_TEST_SUITE_P(Rows, FailingRowTest, testing::Range(1, kRowCount + 1));

class FailingValueTest : public RegistrationTableTest, public testing::WithParamInterface<int> {};

TEST_P(FailingValueTest, AValueThatCannotBeWrittenTakesAllRowsBack) {
  PATCH_IMPORT(
      values, RegSetValueExA,
      [call = 0](auto original, auto... arguments) mutable -> LONG {
        return ++call == GetParam() ? ERROR_ACCESS_DENIED : original(arguments...);
      },
      module.Handle());
  EXPECT_HRESULT(kAccessDenied, module.RegisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_FALSE(IsLibraryRegistered());
}

INSTANTIATE_TEST_SUITE_P(Rows, FailingValueTest, testing::Range(1, kValueCount + 1));

TEST_F(RegistrationTableTest, ItsKeysAreClosed) {
  int open = 0;
  PATCH_IMPORT(
      keys, RegCreateKeyA,
      [&open](auto original, auto... arguments) {
    ++open;
    return original(arguments...);
      },
      module.Handle());
  PATCH_IMPORT(
      closing, RegCloseKey,
      [&open](auto original, auto... arguments) {
    --open;
    return original(arguments...);
      },
      module.Handle());
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(0, open);
}

TEST_F(RegistrationTableTest, UnregistrationLeavesNoKey) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_EQ(Lines{}, DumpClassKey(LibraryKey()));
  EXPECT_EQ(Lines{}, DumpClassKey(InterfaceKey()));
}

TEST_F(RegistrationTableTest, WhatIsNotRegisteredCanBeUnregistered) {
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
}

TEST_F(RegistrationTableTest, AKeyThatCannotBeDeletedIsTold) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  {
    PATCH_IMPORT(
        deleting, RegDeleteKeyA,
        [](auto original, HKEY root, const char* key) -> LONG {
          return std::string(key) == "Norvik.AXNorvik\\CurVer" ? ERROR_ACCESS_DENIED : original(root, key);
        },
        module.Handle());
    EXPECT_HRESULT(kAccessDenied, module.UnregisterServer());
  }
  EXPECT_FALSE(IsLibraryRegistered());
  EXPECT_EQ(
      (Lines{"Norvik.AXNorvik = Quorvane ActiveX Control", "Norvik.AXNorvik\\CurVer = Norvik.AXNorvik.1"}), DumpClassKeys());
}

TEST_F(RegistrationTableTest, OfSeveralKeysThatCannotBeDeletedTheFirstIsTold) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  Lines deleted;
  {
    PATCH_IMPORT(
        deleting, RegDeleteKeyA,
        [&deleted](auto original, HKEY root, const char* key) -> LONG {
          deleted.push_back(key);
          if (key == ClassKey() + "\\TypeLib")
            return ERROR_ACCESS_DENIED;
          return std::string(key) == "Norvik.AXNorvik\\CLSID" ? ERROR_DISK_FULL : original(root, key);
        },
        module.Handle());
    EXPECT_HRESULT(kDiskFull, module.UnregisterServer());
  }
  EXPECT_EQ(static_cast<std::size_t>(kRowCount), deleted.size());
  EXPECT_EQ(ClassKey(), deleted.back());
}

TEST_F(RegistrationTableTest, WhatCannotBeTakenBackDoesNotHideWhyTheWritingFailed) {
  PATCH_IMPORT(
      values, RegSetValueExA,
      [call = 0](auto original, auto... arguments) mutable -> LONG {
        return ++call == kValueCount ? ERROR_DISK_FULL : original(arguments...);
      },
      module.Handle());
  PATCH_IMPORT(
      deleting, RegDeleteKeyA, [](auto, auto...) -> LONG { return ERROR_ACCESS_DENIED; }, module.Handle());
  EXPECT_HRESULT(kDiskFull, module.RegisterServer());
}

// The registrar works; what comes with it does not.
class FailingLibraryTest : public ModuleTest {
 protected:
  ModuleEntriesAside aside;
};

TEST_F(FailingLibraryTest, ALibraryThatCannotBeRegisteredAtFirstMakesTheTableBeWritten) {
  PATCH_IMPORT(library, RegisterTypeLib, FailCall<HRESULT>(1, TYPE_E_REGISTRYACCESS, 0), module.Handle());
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(ClassKey() + " = Quorvane ActiveX Control", DumpClassKeys().at(0));
  EXPECT_FALSE(DumpClassKey(LibraryKey()).empty());
}

TEST_F(FailingLibraryTest, TheRowsAloneDecideOnTheResultOfTheTable) {
  {
    PATCH_IMPORT(
        library, RegisterTypeLib, [](auto, auto...) -> HRESULT { return TYPE_E_REGISTRYACCESS; }, module.Handle());
    EXPECT_HRESULT(S_OK, module.RegisterServer());
  }
  EXPECT_EQ(ClassKey() + " = Quorvane ActiveX Control", DumpClassKeys().at(0));
  EXPECT_EQ(Lines{}, DumpClassKey(LibraryKey()));
}

TEST_F(FailingLibraryTest, TheDeletedRowsAloneDecideOnTheResultOfTheUnregistration) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  {
    PATCH_IMPORT(
        library, UnRegisterTypeLib, [](auto, auto...) -> HRESULT { return TYPE_E_REGISTRYACCESS; }, module.Handle());
    EXPECT_HRESULT(S_OK, module.UnregisterServer());
  }
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_NE(Lines{}, DumpClassKey(LibraryKey()));
}

// How many keys of the table an unregistration asks to be deleted while the type library cannot be taken away.
int DeletionsWithoutTheLibrary(const LoadedModule& module) {
  int deletions = 0;
  PATCH_IMPORT(
      library, UnRegisterTypeLib, [](auto, auto...) -> HRESULT { return TYPE_E_REGISTRYACCESS; }, module.Handle());
  PATCH_IMPORT(
      deleting, RegDeleteKeyA,
      [&deletions](auto original, auto... arguments) {
    ++deletions;
    return original(arguments...);
      },
      module.Handle());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  return deletions;
}

TEST_F(FailingLibraryTest, ALibraryThatStaysRegisteredIsAFailureOfTheScript) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(kRowCount, DeletionsWithoutTheLibrary(module));
}

TEST_F(FailingLibraryTest, ALibraryThatWasNotRegisteredIsNoFailureOfTheScript) {
  EXPECT_EQ(0, DeletionsWithoutTheLibrary(module));
}

TEST_F(FailingLibraryTest, AModuleWithoutAPathWritesTheTable) {
  PATCH_IMPORT(path, GetModuleFileNameW, FailWith<DWORD>(0, ERROR_INVALID_HANDLE), module.Handle());
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(TableEntries(), DumpClassKeys());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
}

TEST_F(FailingLibraryTest, UnregistrationByTheTableRemovesWhatTheScriptWrote) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  PATCH_IMPORT(
      registrar, CoCreateInstance, [](auto, auto...) { return REGDB_E_CLASSNOTREG; }, module.Handle());
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_EQ(Lines{}, DumpClassKey(LibraryKey()));
}

TEST_F(FailingLibraryTest, UnregistrationByTheScriptRemovesWhatTheTableWrote) {
  {
    PATCH_IMPORT(
        registrar, CoCreateInstance, [](auto, auto...) { return REGDB_E_CLASSNOTREG; }, module.Handle());
    EXPECT_HRESULT(S_OK, module.RegisterServer());
  }
  EXPECT_HRESULT(S_OK, module.UnregisterServer());
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_EQ(Lines{}, DumpClassKey(LibraryKey()));
}

TEST_F(FailingLibraryTest, AScriptThatWasCarriedOutReplacesWhatTheTableWrote) {
  {
    PATCH_IMPORT(
        registrar, CoCreateInstance, [](auto, auto...) { return REGDB_E_CLASSNOTREG; }, module.Handle());
    EXPECT_HRESULT(S_OK, module.RegisterServer());
  }
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  const Lines entries = DumpClassKeys();
  EXPECT_EQ(ClassKey() + " = AXNorvik Class", entries.at(0));
  EXPECT_EQ(1, std::count(entries.begin(), entries.end(), ClassKey() + "\\InprocServer32 = " + installed.Path()));
}

}  // namespace
