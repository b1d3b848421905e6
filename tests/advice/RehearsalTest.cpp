#include "advice/Rehearsal.h"

#include <gtest/gtest.h>

#include "common/FolderTree.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "support/Seed.h"

namespace {

// A folder on which a rehearsal works, and a copy of it that the system really changes.
class RehearsalTest : public testing::Test {
 protected:
  RehearsalTest() {
    for (const TemporaryFolder* const folder : {&rehearsed, &real}) {
      WriteWholeFile(folder->File("a.txt"), "a");
      WriteWholeFile(folder->File("b.txt"), "b");
      EXPECT_TRUE(CreateDirectoryA(folder->File("folder").c_str(), nullptr));
    }
  }

  // What an operation gives, here and there, as text: the result and, after a failure, the reason.
  template <class Operation>
  std::string Result(FileSystem& files, const TemporaryFolder& folder, Operation operation) {
    SetLastError(ERROR_SUCCESS);
    return operation(files, folder) ? "true" : "false " + std::to_string(GetLastError());
  }

  template <class Operation>
  void ExpectTheSame(const std::string& name, Operation operation) {
    const std::string expected = Result(SystemFiles(), real, operation);
    ASSERT_EQ(expected, Result(machine, rehearsed, operation)) << name;
  }

  TemporaryFolder rehearsed;
  TemporaryFolder real;
  RehearsedMachine machine;
};

// Random deeds in both folders, which have to answer alike; and nothing comes of them in the first one.
TEST_F(RehearsalTest, AnswersAsTheSystemDoes) {
  const std::vector<std::string> names = {
      "a.txt",    "A.TXT",  "b.txt",    "c.txt",       "folder", "folder\\a.txt", "new",        "new\\x",
      "a.txt\\x", "a.txt.", "bad?.txt", "folder\\new", "b|",     "c.txt ",        "none\\x\\y", "folder\\.\\a.txt"};
  const std::vector<DWORD> attributes = {FILE_ATTRIBUTE_NORMAL, FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_HIDDEN};
  Dice dice;
  for (int i = 0; i < 1000; ++i) {
    const std::string name = dice.Choose(names);
    const std::string other = dice.Choose(names);
    const DWORD wanted = dice.Choose(attributes);
    const std::string where = std::to_string(i) + ": " + name + " " + other;
    switch (dice.Roll(5)) {
      case 0:
        ExpectTheSame("exists " + where, [&](FileSystem& files, const TemporaryFolder& folder) {
          const DWORD found = files.GetAttributes(folder.File(name).c_str());
          constexpr DWORD kSeen = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY;
          if (found != INVALID_FILE_ATTRIBUTES)
            SetLastError(found & kSeen);
          return false;
        });
        break;
      case 1:
        ExpectTheSame("set " + where, [&](FileSystem& files, const TemporaryFolder& folder) {
          return (files.GetAttributes(folder.File(name).c_str()) & FILE_ATTRIBUTE_DIRECTORY) ||
                 files.SetAttributes(folder.File(name).c_str(), wanted);
        });
        break;
      case 2:
        ExpectTheSame("create " + where, [&](FileSystem& files, const TemporaryFolder& folder) {
          return files.CreateFolder(folder.File(name).c_str());
        });
        break;
      case 3:
        ExpectTheSame("move " + where, [&](FileSystem& files, const TemporaryFolder& folder) {
          const DWORD found = files.GetAttributes(folder.File(name).c_str());
          return (found & FILE_ATTRIBUTE_DIRECTORY) || files.Move(folder.File(name).c_str(), folder.File(other).c_str());
        });
        break;
      default:
        ExpectTheSame("delete " + where, [&](FileSystem& files, const TemporaryFolder& folder) {
          const DWORD found = files.GetAttributes(folder.File(name).c_str());
          return (found & FILE_ATTRIBUTE_DIRECTORY) || files.Delete(folder.File(name).c_str());
        });
        break;
    }
    if (HasFatalFailure())
      return;
  }
  EXPECT_EQ("a", ReadWholeFile(rehearsed.File("a.txt")));
  EXPECT_EQ("b", ReadWholeFile(rehearsed.File("b.txt")));
}

TEST_F(RehearsalTest, AWrittenFileIsThereWithItsTime) {
  const FILETIME time = {1, 30000000};
  const std::string path = rehearsed.File("new.txt");
  EXPECT_HRESULT(S_OK, machine.Fetch("http://server/a", path.c_str(), FILE_ATTRIBUTE_READONLY, &time, 0, nullptr));
  EXPECT_TRUE(machine.GetAttributes(path.c_str()) & FILE_ATTRIBUTE_READONLY);
  FILETIME found = {};
  EXPECT_HRESULT(S_OK, machine.GetWriteTime(path.c_str(), found));
  EXPECT_EQ(0, CompareFileTime(&time, &found));
  EXPECT_FALSE(FileExistsAt(path));
}

void ExpectNoTimes(Machine& files, const TemporaryFolder& folder) {
  const LogCapture log;
  const std::string made = folder.File("made.txt");
  EXPECT_TRUE(files.CreateFolder(made.c_str()));
  FILETIME time;
  EXPECT_HRESULT(E_ACCESSDENIED, files.GetWriteTime(made.c_str(), time));
  const std::string gone = folder.File("a.txt");
  EXPECT_TRUE(files.Delete(gone.c_str()));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), files.GetWriteTime(gone.c_str(), time));
  EXPECT_EQ((std::vector<std::string>{
                "ERROR 0x80070005 Unable to read '" + made + "'.", "ERROR 0x80070002 Unable to read '" + gone + "'."}),
            log.Messages());
}

TEST_F(RehearsalTest, AFolderThatWasMadeAndAFileThatIsGoneHaveNoTime) {
  ExpectNoTimes(ThisMachine(), real);
  ExpectNoTimes(machine, rehearsed);
  EXPECT_FALSE(FileExistsAt(rehearsed.File("made.txt")));
  EXPECT_EQ("a", ReadWholeFile(rehearsed.File("a.txt")));
}

TEST_F(RehearsalTest, WhatCannotBeCreatedFailsAsATransferDoes) {
  const LogCapture log;
  const auto fetch = [&](const std::string& name) {
    return machine.Fetch("http://server/a", rehearsed.File(name).c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, nullptr);
  };
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED), fetch("folder"));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), fetch("none\\a.txt"));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), fetch("a?.txt"));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), fetch("nul.txt"));
  ASSERT_TRUE(machine.SetAttributes(rehearsed.File("a.txt").c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED), fetch("a.txt"));
  ASSERT_TRUE(machine.SetAttributes(rehearsed.File("b.txt").c_str(), FILE_ATTRIBUTE_HIDDEN));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED), fetch("b.txt"));
  EXPECT_EQ(6u, log.Messages().size());
}

TEST_F(RehearsalTest, FoldersAreMadeOneInTheOther) {
  const std::string path = rehearsed.File("x\\y\\z");
  EXPECT_HRESULT(S_OK, CreateFolderTree(path.c_str(), machine));
  EXPECT_TRUE(machine.Exists(rehearsed.File("X\\Y").c_str()));
  EXPECT_FALSE(FileExistsAt(rehearsed.File("x")));
  EXPECT_HRESULT(S_OK, machine.Fetch("http://server/a", (path + "\\f").c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, nullptr));
}

}  // namespace
