#include "advice/Surroundings.h"

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>
#include <cwchar>

#include "advice/Words.h"
#include "support/Files.h"
#include "support/ImportPatch.h"

namespace {

const Surroundings& machine = ThisMachinesSurroundings();

TEST(SurroundingsTest, ANeighboursNameBeginsWithTheFolders) {
  const TemporaryFolder folder;
  const std::wstring data = WideFromAnsi(folder.File("Data").c_str());
  EXPECT_EQ("", machine.NeighbourOf(data));
  CreateDirectoryW(data.c_str(), nullptr);
  WriteWholeFile(folder.File("Data.txt"), "");
  CreateDirectoryA(folder.File("MyData").c_str(), nullptr);
  EXPECT_EQ("", machine.NeighbourOf(data));
  CreateDirectoryA(folder.File("DATABASE").c_str(), nullptr);
  EXPECT_EQ("DATABASE", machine.NeighbourOf(data));
  EXPECT_EQ("", machine.NeighbourOf(data + L"base"));
}

TEST(SurroundingsTest, NothingIsSearchedOnServersAndForPatterns) {
  for (const wchar_t* const folder : {L"", L"C:", L"C:\\", L"C:\\?", L"C:\\*", L"\\\\server.invalid\\share\\a", L"relative"})
    EXPECT_EQ("", machine.NeighbourOf(folder)) << Utf8(folder);
}

TEST(SurroundingsTest, ProgramsAreWhatTheSystemRunsInAnyCase) {
  wchar_t before[1024] = L"";
  GetEnvironmentVariableW(L"PATHEXT", before, 1024);
  SetEnvironmentVariableW(L"PATHEXT", nullptr);
  for (const char* const extension :
       {"appref-ms", "bat", "chm", "cmd", "com", "cpl", "dll", "exe", "gadget", "hta",  "inf", "iso",  "jar", "js",  "jse",
        "lnk",       "msc", "msi", "msp", "mst", "ocx", "pif", "ps1", "ps2",    "psc1", "reg", "scf",  "scr", "sct", "shb",
        "shs",       "sys", "url", "vb",  "vbe", "vbs", "vhd", "ws",  "wsc",    "wsf",  "wsh", "xbap", "xll", "EXE", "Cmd"})
    EXPECT_TRUE(machine.IsProgram(extension)) << extension;
  for (const char* const extension : {"", "txt", "xml", "ex", ".exe", "exe;"})
    EXPECT_FALSE(machine.IsProgram(extension)) << extension;
  SetEnvironmentVariableW(L"PATHEXT", *before ? before : nullptr);
}

TEST(SurroundingsTest, ProgramsAreWhatTheListOfTheSystemHasToo) {
  wchar_t before[1024] = L"";
  GetEnvironmentVariableW(L"PATHEXT", before, 1024);
  SetEnvironmentVariableW(L"PATHEXT", L".COM;.Zzy;;.QQ");
  EXPECT_TRUE(machine.IsProgram("zzY"));
  EXPECT_TRUE(machine.IsProgram("qq"));
  EXPECT_FALSE(machine.IsProgram("q"));
  EXPECT_FALSE(machine.IsProgram(""));
  SetEnvironmentVariableW(L"PATHEXT", nullptr);
  EXPECT_FALSE(machine.IsProgram("qq"));
  SetEnvironmentVariableW(L"PATHEXT", before);
}

TEST(SurroundingsTest, AllGuardedFoldersHaveTheirWords) {
  PATCH_IMPORT(folders, SHGetFolderPathW, [](auto, HWND, int id, HANDLE, DWORD, wchar_t* path) -> HRESULT {
    wcscpy(path, (L"C:\\" + std::to_wstring(id & ~CSIDL_FLAG_DONT_VERIFY)).c_str());
    return S_OK;
  });
  wchar_t before[1024] = L"";
  GetEnvironmentVariableW(L"ProgramW6432", before, 1024);
  SetEnvironmentVariableW(L"ProgramW6432", L"C:\\64");
  std::string guarded;
  for (const NamedFolder& folder : machine.GuardedFolders())
    guarded += Utf8(folder.path) + " " + folder.words + "\n";
  SetEnvironmentVariableW(L"ProgramW6432", *before ? before : nullptr);
  const auto place = [](int id) { return "C:\\" + std::to_string(id); };
  EXPECT_EQ(place(CSIDL_WINDOWS) + " the Windows folder\n" + place(CSIDL_SYSTEM) + " the system folder\n" +
                place(CSIDL_SYSTEMX86) + " the system folder\n" + place(CSIDL_PROGRAM_FILES) +
                " the folder of all programs\nC:\\64 the folder of all programs\n" + place(CSIDL_PROGRAM_FILESX86) +
                " the folder of all programs\n" + place(CSIDL_PROFILE) + " a user's whole profile\n",
            guarded);
}

TEST(SurroundingsTest, ADriveIsAskedForByItsRoot) {
  std::wstring asked;
  PATCH_IMPORT(drives, GetDriveTypeW, [&asked](auto, const wchar_t* root) -> UINT {
    asked = root;
    return DRIVE_REMOTE;
  });
  EXPECT_EQ("", machine.NeighbourOf(L"C:\\Data"));
  EXPECT_EQ(L"C:\\", asked);
}

TEST(SurroundingsTest, TheFoldersOfTheMachineAreKnown) {
  wchar_t windows[MAX_PATH];
  GetWindowsDirectoryW(windows, MAX_PATH);
  const std::vector<NamedFolder> guarded = machine.GuardedFolders();
  const auto isWindows = [&windows](const NamedFolder& folder) { return _wcsicmp(folder.path.c_str(), windows) == 0; };
  EXPECT_TRUE(std::any_of(guarded.begin(), guarded.end(), isWindows));
  EXPECT_GE(guarded.size(), 4u);
  const std::vector<NamedFolder> startup = machine.StartupFolders();
  ASSERT_EQ(2u, startup.size());
  EXPECT_EQ("the user's startup folder", startup[0].words);
  EXPECT_EQ("the startup folder of all users", startup[1].words);
  const std::wstring profiles = machine.ProfilesFolder();
  const auto isProfile = [&profiles](const NamedFolder& folder) { return folder.path.rfind(profiles + L"\\", 0) == 0; };
  EXPECT_FALSE(profiles.empty());
  EXPECT_TRUE(std::any_of(guarded.begin(), guarded.end(), isProfile));
}

}  // namespace
