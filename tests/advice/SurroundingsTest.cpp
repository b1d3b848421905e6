#include "advice/Surroundings.h"

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "advice/Words.h"
#include "support/Files.h"

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
  for (const char* const extension : {"exe", "EXE", "cmd", "vbs", "lnk", "msi", "dll"})
    EXPECT_TRUE(machine.IsProgram(extension)) << extension;
  for (const char* const extension : {"", "txt", "xml", "ex", ".exe", "exe;"})
    EXPECT_FALSE(machine.IsProgram(extension)) << extension;
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
