#include "transfer/FileUtilities.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/Handles.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;

constexpr FILETIME kOther = {1, 2};

bool operator==(const FILETIME& a, const FILETIME& b) {
  return a.dwLowDateTime == b.dwLowDateTime && a.dwHighDateTime == b.dwHighDateTime;
}

bool CanBeOpenedAlone(const std::string& path) {
  return static_cast<bool>(
      FileHandle(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)));
}

TEST(CreatePathTest, AnExistingFolderIsLeftAlone) {
  TemporaryFolder folder;
  PATCH_IMPORT(noFolder, CreateDirectoryA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_HRESULT(S_OK, CreatePath(folder.Path().c_str()));
}

TEST(CreatePathTest, EveryMissingFolderIsMade) {
  TemporaryFolder folder;
  EXPECT_HRESULT(S_OK, CreatePath(folder.File("a\\b/c").c_str()));
  EXPECT_EQ("a", NamesIn(folder.Path()));
  EXPECT_EQ("b", NamesIn(folder.File("a")));
  EXPECT_EQ("c", NamesIn(folder.File("a\\b")));
  EXPECT_HRESULT(S_OK, CreatePath(folder.File("a\\b/c").c_str()));
}

TEST(CreatePathTest, TheFirstFolderThatCannotBeMadeStopsTheWalk) {
  TemporaryFolder folder;
  LogCapture log;
  PATCH_IMPORT(second, CreateDirectoryA, FailCall(2, FALSE, ERROR_DISK_FULL));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_DISK_FULL), CreatePath(folder.File("a\\b\\c").c_str()));
  EXPECT_EQ("a", NamesIn(folder.Path()));
  EXPECT_EQ("", NamesIn(folder.File("a")));
  EXPECT_EQ(Texts{}, log.Messages());
}

TEST(CreatePathTest, APathOverTheLimitIsRefused) {
  TemporaryFolder folder;
  EXPECT_HRESULT(E_OUTOFMEMORY, CreatePath(folder.File(std::string(260, 'a')).c_str()));
  EXPECT_HRESULT(E_OUTOFMEMORY, CreatePath(folder.File("x\\" + std::string(40000, 'a')).c_str()));
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST(CreatePathTest, APathThatCannotBeMadeFullGivesTheSystemsError) {
  PATCH_IMPORT(noPath, GetFullPathNameA, FailWith(DWORD{0}, ERROR_INVALID_NAME));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), CreatePath("no such folder here"));
}

TEST(CreatePathTest, ATrailingBackslashMakesNoDifference) {
  TemporaryFolder folder;
  EXPECT_HRESULT(S_OK, CreatePath(folder.File("a\\b\\").c_str()));
  EXPECT_EQ("b", NamesIn(folder.File("a")));
}

TEST(GetFileWriteTimeTest, TheLastWriteTimeIsRead) {
  TemporaryFolder folder;
  LogCapture log;
  const std::string path = folder.File("a.txt");
  WriteWholeFile(path, "x");
  SetFileWriteTime(path, kAnyTime);
  FILETIME time = kOther;
  EXPECT_HRESULT(S_OK, GetFileWriteTime(path.c_str(), time));
  EXPECT_TRUE(time == kAnyTime);
  EXPECT_EQ("", log.Text());
  EXPECT_TRUE(CanBeOpenedAlone(path));
}

TEST(GetFileWriteTimeTest, TheFileIsOpenedAloneForReading) {
  TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "x");
  FILETIME time;
  int calls = 0;
  PATCH_IMPORT(record, CreateFileA,
               [&](auto original, const char* name, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD attributes, HANDLE model) {
    ++calls;
    EXPECT_EQ(DWORD{GENERIC_READ}, access);
    EXPECT_EQ(0u, sharing);
    EXPECT_EQ(nullptr, security);
    EXPECT_EQ(DWORD{OPEN_EXISTING}, disposition);
    EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL}, attributes);
    EXPECT_EQ(nullptr, model);
    return original(name, access, sharing, security, disposition, attributes, model);
  });
  EXPECT_HRESULT(S_OK, GetFileWriteTime(folder.File("a.txt").c_str(), time));
  EXPECT_EQ(1, calls);
}

TEST(GetFileWriteTimeTest, AMissingFileIsReported) {
  TemporaryFolder folder;
  LogCapture log;
  const std::string path = folder.File("%s.txt");
  FILETIME time = kOther;
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), GetFileWriteTime(path.c_str(), time));
  EXPECT_TRUE(time == FILETIME{});
  EXPECT_EQ(Texts{"ERROR 0x80070002 Unable to read '" + path + "'."}, log.Messages());
  EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
}

TEST(GetFileWriteTimeTest, AFileInUseIsReported) {
  TemporaryFolder folder;
  LogCapture log;
  const std::string path = folder.File("a.txt");
  WriteWholeFile(path, "x");
  const FileHandle user(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  FILETIME time = kOther;
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), GetFileWriteTime(path.c_str(), time));
  EXPECT_TRUE(time == FILETIME{});
  EXPECT_EQ(Texts{"ERROR 0x80070020 Unable to read '" + path + "'."}, log.Messages());
}

TEST(GetFileWriteTimeTest, AFolderIsNoFile) {
  TemporaryFolder folder;
  LogCapture log;
  FILETIME time = kOther;
  EXPECT_HRESULT(E_ACCESSDENIED, GetFileWriteTime(folder.Path().c_str(), time));
  EXPECT_TRUE(time == FILETIME{});
  EXPECT_EQ(Texts{"ERROR 0x80070005 Unable to read '" + folder.Path() + "'."}, log.Messages());
}

TEST(GetFileWriteTimeTest, AnEmptyNameIsReported) {
  LogCapture log;
  FILETIME time = kOther;
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), GetFileWriteTime("", time));
  EXPECT_TRUE(time == FILETIME{});
  EXPECT_EQ(Texts{"ERROR 0x80070003 Unable to read ''."}, log.Messages());
}

TEST(GetFileWriteTimeTest, ATimeThatCannotBeReadIsReported) {
  TemporaryFolder folder;
  LogCapture log;
  const std::string path = folder.File("a.txt");
  WriteWholeFile(path, "x");
  FILETIME time = kOther;
  PATCH_IMPORT(noTime, GetFileTime, [](auto, HANDLE, FILETIME*, FILETIME*, FILETIME* written) {
    *written = kAnyTime;  // a failed call may leave anything
    SetLastError(ERROR_NOT_READY);
    return FALSE;
  });
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_NOT_READY), GetFileWriteTime(path.c_str(), time));
  EXPECT_TRUE(time == FILETIME{});
  EXPECT_EQ(Texts{"ERROR 0x80070015 File Time for '" + path + "' failed."}, log.Messages());
  EXPECT_TRUE(CanBeOpenedAlone(path));
}

}  // namespace
