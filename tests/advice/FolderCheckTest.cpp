#include "advice/FolderCheck.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstring>

#include "advice/DoctorExpectations.h"
#include "advice/Words.h"
#include "support/Files.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/PermitFile.h"

namespace {

// A folder that takes the place of every special folder.
auto SpecialFolder(const std::string& path) {
  return [=](auto, HWND, int, HANDLE, DWORD, LPSTR buffer) -> HRESULT {
    std::strcpy(buffer, path.c_str());
    return S_OK;
  };
}

std::string CannotBeWritten(const std::string& folder, HRESULT hr) {
  return "'" + folder + "' cannot be written (" + CodeAndText(hr) + "): runs leave no log.";
}

TEST(LogFolderCheckTest, AFolderThatCanBeWrittenIsLeftAsItWas) {
  const TemporaryFolder folder;
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder(folder.Path()));
  int files = 0;
  PATCH_IMPORT(creates, CreateFileA, [&](auto original, const char* path, auto... arguments) {
    ++files;
    EXPECT_EQ(0u, std::string(path).find(folder.File("Vantor\\Logs\\Norvik\\norvik-doctor-"))) << path;
    return original(path, arguments...);
  });
  ExpectCheck("log-folder", DoctorStatus::Ok, "'" + folder.File("Vantor\\Logs\\Norvik") + "'", CheckLogFolder());
  EXPECT_EQ(1, files);
  EXPECT_EQ("", NamesIn(folder.File("Vantor\\Logs\\Norvik")));
}

TEST(LogFolderCheckTest, AFolderThatCannotBeWrittenFails) {
  const TemporaryFolder folder;
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder(folder.Path()));
  PATCH_IMPORT(denied, CreateFileA, FailWith(INVALID_HANDLE_VALUE, ERROR_ACCESS_DENIED));
  ExpectCheck("log-folder", DoctorStatus::Failed, CannotBeWritten(folder.File("Vantor\\Logs\\Norvik"), E_ACCESSDENIED),
              CheckLogFolder());
}

TEST(LogFolderCheckTest, ADiskThatIsFullFails) {
  const TemporaryFolder folder;
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder(folder.Path()));
  PATCH_IMPORT(full, WriteFile, FailWith(FALSE, ERROR_DISK_FULL));
  ExpectCheck("log-folder", DoctorStatus::Failed,
              CannotBeWritten(folder.File("Vantor\\Logs\\Norvik"), HRESULT_FROM_WIN32(ERROR_DISK_FULL)), CheckLogFolder());
  EXPECT_EQ("", NamesIn(folder.File("Vantor\\Logs\\Norvik")));
}

TEST(LogFolderCheckTest, LogsInTheDrivesRootAreAWarning) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("Vantor"), "in the way");
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder(folder.Path()));
  ExpectCheck("log-folder", DoctorStatus::Warning,
              "Logs go to 'C:\\': the folder below the user's local application data cannot be made.", CheckLogFolder());
}

TEST(FolderCheckTest, AFolderThatIsThereIsOk) {
  const TemporaryFolder folder;
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder(folder.Path()));
  ExpectCheck("folder-Personal", DoctorStatus::Ok, "'" + folder.Path() + "'", CheckFolder(FolderKind::Personal));
}

TEST(FolderCheckTest, AFolderThatIsNotThereIsMadeLater) {
  const TemporaryFolder folder;
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder(folder.Path()));
  ExpectCheck("folder-VantorUser", DoctorStatus::Ok,
              "'" + folder.File("Vantor") + "', not there yet: it is made when a file goes there.",
              CheckFolder(FolderKind::VantorUser));
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST(FolderCheckTest, AFileInTheFoldersPlaceFails) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("Vantor"), "");
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder(folder.Path()));
  ExpectCheck("folder-VantorUser", DoctorStatus::Failed,
              "'" + folder.File("Vantor") + "' is a file, so no file can go there. Move it away.",
              CheckFolder(FolderKind::VantorUser));
}

TEST(FolderCheckTest, AFolderOnAnotherMachineIsNotAskedFor) {
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder("\\\\server.invalid\\home"));
  PATCH_IMPORT(files, GetFileAttributesA, [](auto, LPCSTR path) -> DWORD {
    ADD_FAILURE() << path;
    return INVALID_FILE_ATTRIBUTES;
  });
  ExpectCheck("folder-Personal", DoctorStatus::Ok, "'\\\\server.invalid\\home' lies on another machine, which is not asked.",
              CheckFolder(FolderKind::Personal));
}

TEST(FolderCheckTest, ANameThatTheCodePageLacksFails) {
  PATCH_IMPORT(special, SHGetFolderPathA, SpecialFolder("C:\\users\\?????\\Documents"));
  ExpectCheck(
      "folder-Personal", DoctorStatus::Failed,
      "'C:\\users\\?????\\Documents' is what the module sees: the folder's name has characters that the code page of "
      "this machine lacks.",
      CheckFolder(FolderKind::Personal));
}

TEST(FolderCheckTest, AFolderThatCannotBeFoundOutIsAWarning) {
  const LogCapture log;
  PATCH_IMPORT(none, SHGetFolderPathA, [](auto, auto...) -> HRESULT { return E_FAIL; });
  ExpectCheck("folder-Personal", DoctorStatus::Warning,
              "It cannot be found out (" + CodeAndText(E_FAIL) +
                  "). A manifest's file for it goes to the Internet cache, if that is permitted.",
              CheckFolder(FolderKind::Personal));
  PATCH_IMPORT(noTemp, GetTempPathA, FailWith(DWORD{0}, ERROR_ACCESS_DENIED));
  ExpectCheck("folder-Personal", DoctorStatus::Warning, "It cannot be found out. 'C:\\' stands in for it.",
              CheckFolder(FolderKind::Personal));
  EXPECT_EQ("", log.Text());
}

TEST(FolderCheckTest, WithoutAModuleThereIsNoFolderOfIts) {
  ExpectCheck("folder-Path", DoctorStatus::Warning, "The module's folder is not known.", CheckFolder(FolderKind::Path));
}

TEST(FolderCheckTest, AllThirteenAreChecked) {
  const PermitFile permit;
  const DoctorChecks checks = CheckFolders();
  EXPECT_EQ(13u, checks.size());
  ExpectCheck("folder-Path", DoctorStatus::Ok, "'" + permit.ModuleFolder() + "'", CheckNamed("folder-Path", checks));
  for (const char* const name :
       {"Cookie", "InternetCache", "Temp", "VantorUser", "Personal", "Documents", "LocalApplicationData", "LocalVantorData",
        "CommonApplicationData", "CommonVantorData", "ApplicationData", "VantorData"})
    EXPECT_EQ(DoctorStatus::Ok, CheckNamed(std::string("folder-") + name, checks).status) << name;
}

}  // namespace
