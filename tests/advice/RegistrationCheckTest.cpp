#include "advice/RegistrationCheck.h"

#include <gtest/gtest.h>

#include "advice/DoctorExpectations.h"
#include "advice/Words.h"
#include "common/identifiers.h"
#include "host/InstalledModule.h"
#include "host/RegistryKeys.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"

namespace {

constexpr int kBits = static_cast<int>(sizeof(void*)) * 8;
constexpr int kOtherBits = 96 - kBits;
constexpr char kClasses[] = "Software\\Classes\\CLSID";
constexpr char kKilledControls[] = "SOFTWARE\\Microsoft\\Internet Explorer\\ActiveX Compatibility";

std::string Named(const std::string& name, int bits) {
  return name + "-" + std::to_string(bits);
}

// A key of the control in one view of the registry, taken away with the object.
class ViewKey {
 public:
  ViewKey(HKEY root, const char* parentName, int bits) {
    const REGSAM view = bits == 64 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
    EXPECT_EQ(
        ERROR_SUCCESS, RegCreateKeyExA(root, parentName, 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &parent, nullptr));
    RegDeleteTreeA(parent, NORVIK_CLASS_ID);
    Create("");
  }
  ~ViewKey() {
    RegDeleteTreeA(parent, NORVIK_CLASS_ID);
    RegCloseKey(parent);
  }
  ViewKey(const ViewKey&) = delete;
  ViewKey& operator=(const ViewKey&) = delete;

  void SetText(const char* subkey, const char* name, const std::string& text, DWORD type = REG_SZ) {
    const HKEY key = Create(subkey);
    EXPECT_EQ(ERROR_SUCCESS, RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                                            static_cast<DWORD>(text.size()) + 1));
    RegCloseKey(key);
  }

  void SetNumber(const char* name, DWORD number) {
    const HKEY key = Create("");
    EXPECT_EQ(
        ERROR_SUCCESS, RegSetValueExA(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number)));
    RegCloseKey(key);
  }

 private:
  HKEY Create(const std::string& subkey) {
    HKEY key = nullptr;
    const std::string name = subkey.empty() ? NORVIK_CLASS_ID : std::string(NORVIK_CLASS_ID "\\") + subkey;
    EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExA(parent, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    return key;
  }

  HKEY parent = nullptr;
};

RegisteredView ViewOf(const Registration& registration, int bits) {
  for (const RegisteredView& view : registration.views) {
    if (view.bits == bits)
      return view;
  }
  ADD_FAILURE() << "there is no view of " << bits << " bit";
  return {};
}

class RegistryTest : public testing::Test {
 protected:
  ModuleEntriesAside aside;
};

TEST_F(RegistryTest, WithoutEntriesNothingIsRegistered) {
  const Registration registration = ReadRegistration();
  EXPECT_FALSE(registration.views.empty());
  EXPECT_EQ(kBits == 64 ? 2u : registration.views.size(), registration.views.size());
  for (const RegisteredView& view : registration.views) {
    EXPECT_FALSE(view.isRegistered);
    EXPECT_EQ(L"", view.server);
    EXPECT_FALSE(view.isKilled);
  }
  EXPECT_EQ(L"", registration.libraryPath);
}

TEST_F(RegistryTest, TheModulesOwnRegistrationIsSeenInItsWidth) {
  const InstalledModule installed;
  const LoadedModule module(installed.Path());
  ASSERT_HRESULT(S_OK, module.RegisterServer());
  const Registration registration = ReadRegistration();
  const RegisteredView view = ViewOf(registration, kBits);
  EXPECT_TRUE(view.isRegistered);
  EXPECT_FALSE(view.isForUserOnly);
  EXPECT_EQ(Wide(installed.Path()), view.server);
  EXPECT_EQ(L"Apartment", view.threadingModel);
  EXPECT_EQ(Wide(installed.Path()), registration.libraryPath);
  for (const DoctorCheck& check : CheckRegistration(registration, ReadModuleFile(Wide(installed.Path()))))
    EXPECT_TRUE(check.status == DoctorStatus::Ok || check.status == DoctorStatus::Skipped) << check.name << check.detail;
}

// The views are kept apart: an entry of one is none of the other.
TEST_F(RegistryTest, EachViewHasItsOwnEntries) {
  const int widths = static_cast<int>(ReadRegistration().views.size());
  for (const int bits : {64, 32}) {
    if (widths == 1 && bits == 64)
      continue;
    ViewKey key(HKEY_LOCAL_MACHINE, kClasses, bits);
    key.SetText("InprocServer32", "", "C:\\" + std::to_string(bits) + ".dll");
    key.SetText("InprocServer32", "ThreadingModel", "Both");
    const Registration registration = ReadRegistration();
    EXPECT_EQ(L"C:\\" + std::to_wstring(bits) + L".dll", ViewOf(registration, bits).server);
    EXPECT_EQ(L"Both", ViewOf(registration, bits).threadingModel);
    EXPECT_FALSE(widths == 2 && ViewOf(registration, 96 - bits).isRegistered) << bits;
  }
}

TEST_F(RegistryTest, TheUsersOwnEntryStandsBeforeTheMachines) {
  ViewKey machine(HKEY_LOCAL_MACHINE, kClasses, kBits), user(HKEY_CURRENT_USER, kClasses, kBits);
  machine.SetText("InprocServer32", "", "C:\\machine.dll");
  user.SetText("InprocServer32", "", "C:\\user.dll");
  EXPECT_EQ(L"C:\\user.dll", ViewOf(ReadRegistration(), kBits).server);
  EXPECT_TRUE(ViewOf(ReadRegistration(), kBits).isForUserOnly);
}

// A class of the user without a server of its own, such as a user's choice of an icon, hides nothing.
TEST_F(RegistryTest, TheUsersOwnClassWithoutAServerHidesNoServer) {
  ViewKey machine(HKEY_LOCAL_MACHINE, kClasses, kBits), user(HKEY_CURRENT_USER, kClasses, kBits);
  EXPECT_TRUE(ViewOf(ReadRegistration(), kBits).isRegistered);
  EXPECT_EQ(L"", ViewOf(ReadRegistration(), kBits).server);
  machine.SetText("InprocServer32", "", "C:\\machine.dll");
  EXPECT_EQ(L"C:\\machine.dll", ViewOf(ReadRegistration(), kBits).server);
  EXPECT_FALSE(ViewOf(ReadRegistration(), kBits).isForUserOnly);
}

TEST_F(RegistryTest, VariablesInAPathAreReplaced) {
  ViewKey key(HKEY_CURRENT_USER, kClasses, kBits);
  key.SetText("InprocServer32", "", "%SystemDrive%\\norvik.dll", REG_EXPAND_SZ);
  char drive[MAX_PATH] = "";
  GetEnvironmentVariableA("SystemDrive", drive, MAX_PATH);
  EXPECT_EQ(Wide(drive) + L"\\norvik.dll", ViewOf(ReadRegistration(), kBits).server);
}

TEST_F(RegistryTest, TheKillBitIsOneOfTheFlags) {
  ViewKey key(HKEY_LOCAL_MACHINE, kKilledControls, kBits);
  EXPECT_FALSE(ViewOf(ReadRegistration(), kBits).isKilled);
  key.SetNumber("Compatibility Flags", 0xFFFFFBFF);
  EXPECT_FALSE(ViewOf(ReadRegistration(), kBits).isKilled);
  key.SetNumber("Compatibility Flags", 0x400);
  EXPECT_TRUE(ViewOf(ReadRegistration(), kBits).isKilled);
}

class RegistrationCheckTest : public testing::Test {
 protected:
  RegistrationCheckTest() : module(ReadModuleFile(Wide(installed.Path()))), other(folder.File("other.dll")) {
    std::string bytes = ReadWholeFile(installed.Path());
    const WORD machine = kOtherBits == 64 ? IMAGE_FILE_MACHINE_AMD64 : IMAGE_FILE_MACHINE_I386;
    bytes.replace(static_cast<unsigned char>(bytes[0x3C]) + std::size_t{4}, 2, reinterpret_cast<const char*>(&machine), 2);
    WriteWholeFile(other, bytes);
    registration.views = {Registered(kBits, installed.Path()), Registered(kOtherBits, other)};
    registration.libraryPath = Wide(installed.Path());
  }

  static RegisteredView Registered(int bits, const std::string& server) {
    RegisteredView view;
    view.bits = bits;
    view.isRegistered = true;
    view.server = Wide(server);
    view.threadingModel = L"Apartment";
    return view;
  }

  static RegisteredView NotRegistered(int bits) {
    RegisteredView view;
    view.bits = bits;
    return view;
  }

  RegisteredView& Own() { return registration.views[0]; }
  RegisteredView& Other() { return registration.views[1]; }

  void Expect(const std::string& name, DoctorStatus status, const std::string& detail) const {
    ExpectCheck(name, status, detail, CheckNamed(name, CheckRegistration(registration, module)));
  }
  void ExpectOwn(DoctorStatus status, const std::string& detail) const {
    Expect(Named("registered", kBits), status, detail);
  }
  void ExpectOther(DoctorStatus status, const std::string& detail) const {
    Expect(Named("registered", kOtherBits), status, detail);
  }

  void ExpectNoneRegistered() const {
    ExpectOwn(DoctorStatus::Failed, "The module is not registered for " + kOwnPrograms + "." + kAdvice);
    ExpectOther(DoctorStatus::Skipped,
                "No module is registered for " + kOtherPrograms + ". It is needed only where such hosts are in use.");
  }

  const std::string kOwnPrograms = std::to_string(kBits) + "-bit programs";
  const std::string kOtherPrograms = std::to_string(kOtherBits) + "-bit programs";
  const std::string kAdvice = " Run regsvr32 of that width with the module's path, as an administrator.";
  InstalledModule installed;
  TemporaryFolder folder;
  ModuleFile module;
  std::string other;
  Registration registration;
};

TEST_F(RegistrationCheckTest, AllIsWell) {
  ExpectOwn(DoctorStatus::Ok, "'" + installed.Path() + "' is registered for " + kOwnPrograms + ".");
  ExpectOther(DoctorStatus::Ok, "'" + other + "' is registered for " + kOtherPrograms + ".");
  Expect("threading-model", DoctorStatus::Ok, "Apartment.");
  Expect("type-library", DoctorStatus::Ok, "'" + installed.Path() + "' is registered.");
  Expect("kill-bit", DoctorStatus::Ok, "It is not set.");
}

TEST_F(RegistrationCheckTest, TheModulesWidthMustBeRegisteredAndTheOtherNeedNot) {
  registration.views = {NotRegistered(kBits), NotRegistered(kOtherBits)};
  ExpectNoneRegistered();
  Expect("threading-model", DoctorStatus::Skipped, "The control is not registered.");
  Expect("type-library", DoctorStatus::Skipped, "The control is not registered.");
  Expect("kill-bit", DoctorStatus::Ok, "It is not set.");
}

TEST_F(RegistrationCheckTest, WithoutAModuleTheProgramsWidthCounts) {
  registration.views = {NotRegistered(kBits), NotRegistered(kOtherBits)};
  module = ReadModuleFile(Wide(folder.File("none.dll")));
  ExpectNoneRegistered();
}

TEST_F(RegistrationCheckTest, ARegistrationWithoutAPathFails) {
  Own().server.clear();
  ExpectOwn(
      DoctorStatus::Failed, "The control is registered for " + kOwnPrograms + " without the path of a module." + kAdvice);
  Other().server.clear();
  ExpectOther(
      DoctorStatus::Failed, "The control is registered for " + kOtherPrograms + " without the path of a module." + kAdvice);
}

TEST_F(RegistrationCheckTest, APathThatIsNotFullFails) {
  Own().server = L"norvik.dll";
  ExpectOwn(DoctorStatus::Failed, "For " + kOwnPrograms + " 'norvik.dll' is registered, which is no full path." + kAdvice);
}

TEST_F(RegistrationCheckTest, AModuleThatIsGoneFails) {
  Own().server = Other().server = Wide(folder.File("gone.dll"));
  const std::string reason = " a module is registered that cannot be loaded. " + ReadModuleFile(Own().server).problem;
  ExpectOwn(DoctorStatus::Failed, "For " + kOwnPrograms + reason + kAdvice);
  ExpectOther(DoctorStatus::Failed, "For " + kOtherPrograms + reason + kAdvice);
}

TEST_F(RegistrationCheckTest, AModuleOfTheWrongWidthFails) {
  Own().server = Wide(other);
  ExpectOwn(DoctorStatus::Failed, "For " + kOwnPrograms + " '" + other + "' is registered, which is not a " +
                                      std::to_string(kBits) + "-bit module." + kAdvice);
  Other().server = Wide(installed.Path());
  ExpectOther(DoctorStatus::Failed, "For " + kOtherPrograms + " '" + installed.Path() + "' is registered, which is not a " +
                                        std::to_string(kOtherBits) + "-bit module." + kAdvice);
}

TEST_F(RegistrationCheckTest, AnotherModuleOfTheSameWidthFails) {
  const InstalledModule second("second");
  Own().server = Wide(second.Path());
  ExpectOwn(DoctorStatus::Failed, "For " + kOwnPrograms + " '" + second.Path() +
                                      "' is registered, not the module that is examined here." + kAdvice);
  const std::string longWay = installed.Folder() + "\\.\\NORVIK.dll";
  Own().server = Wide(longWay);
  ExpectOwn(DoctorStatus::Ok, "'" + longWay + "' is registered for " + kOwnPrograms + ".");
}

// Nobody is asked for what is not on this machine.
TEST_F(RegistrationCheckTest, AModuleOnAnotherMachineIsAWarning) {
  Own().server = Other().server = registration.libraryPath = L"\\\\server.invalid\\share\\norvik.dll";
  PATCH_IMPORT(files, CreateFileW, [](auto original, LPCWSTR path, auto... arguments) {
    EXPECT_NE(L'\\', path[0]);
    return original(path, arguments...);
  });
  const std::string path = "'\\\\server.invalid\\share\\norvik.dll' is registered";
  const std::string advice = ". It lies on another machine, which is not asked; install the module on this one.";
  ExpectOwn(DoctorStatus::Warning, path + " for " + kOwnPrograms + advice);
  ExpectOther(DoctorStatus::Warning, path + " for " + kOtherPrograms + advice);
  Expect("type-library", DoctorStatus::Warning, path + advice);
}

TEST_F(RegistrationCheckTest, ARegistrationOfTheUserIsAWarning) {
  Own().isForUserOnly = Other().isForUserOnly = true;
  const std::string advice = " of this user only, who can change that. Register it for the machine, as an administrator.";
  ExpectOwn(DoctorStatus::Warning, "'" + installed.Path() + "' is registered for " + kOwnPrograms + advice);
  ExpectOther(DoctorStatus::Warning, "'" + other + "' is registered for " + kOtherPrograms + advice);
}

TEST_F(RegistrationCheckTest, TheThreadingModelIsApartmentInEveryView) {
  Own().threadingModel = L"apartment";
  Expect("threading-model", DoctorStatus::Ok, "Apartment.");
  Own().threadingModel = L"Both";
  Other().threadingModel = L"";
  Expect("threading-model", DoctorStatus::Failed,
         "It is 'Both' for " + kOwnPrograms + " and '' for " + kOtherPrograms + " and must be Apartment." + kAdvice);
  Own().threadingModel = L"Apartment";
  Other() = NotRegistered(kOtherBits);
  Expect("threading-model", DoctorStatus::Ok, "Apartment.");
}

TEST_F(RegistrationCheckTest, ATypeLibraryThatIsMissingOrAnotherIsAWarning) {
  registration.libraryPath = Wide(other);
  Expect("type-library", DoctorStatus::Warning,
         "'" + other + "' is registered, not the module that is examined here." + kAdvice);
  registration.libraryPath.clear();
  Expect("type-library", DoctorStatus::Warning,
         "It is not registered. Scripts run, but hosts that ask for the control's types fail." + kAdvice);
}

TEST_F(RegistrationCheckTest, AKillBitFails) {
  const std::string advice =
      " hosts: they do not create the control. Ask who set it before you clear the control's Compatibility Flags.";
  Other().isKilled = true;
  Expect("kill-bit", DoctorStatus::Failed, "It is set for " + std::to_string(kOtherBits) + "-bit" + advice);
  Own().isKilled = true;
  Expect("kill-bit", DoctorStatus::Failed,
         "It is set for " + std::to_string(kBits) + "-bit and " + std::to_string(kOtherBits) + "-bit" + advice);
}

}  // namespace
