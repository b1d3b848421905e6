// What stands in the way of a run on a real machine: files in use, files and folders of the wrong kind, full disks, no log.

#include <gtest/gtest.h>
#include <shlobj.h>

#include <algorithm>

#include "host/ControlFixture.h"
#include "machine/ChildProcess.h"
#include "support/ImportPatch.h"

namespace {

constexpr char kCommandFailed[] = "ERROR At least one command failed during the 'Execute' or 'ExecuteNavigate' method.";

// A file is copied twice: onto what stands in the way, and behind it to where nothing does.
class FilesTest : public ControlTest {
 protected:
  FilesTest() { server.Answer("/new.txt", Response().Body("new")); }

  std::string CopyNew(const std::string& name, const std::string& folder, const std::string& policy = "") {
    server.Answer("/" + name, Response().Body("new"));
    return "<Copy><Source>" + server.Url("/" + name) + "</Source><Destination><Path>" + folder + "</Path>" +
           (policy.empty() ? "" : "<IfFileExists>" + policy + "</IfFileExists>") + "</Destination></Copy>\r\n";
  }

  // The command fails with `code`, the one behind it is carried out, and the file is what it was.
  void ExpectOneFails(const std::string& command, const std::string& code) {
    EXPECT_HRESULT(S_FALSE, Execute(command + CopyNew("behind.txt", destination.Path())));
    EXPECT_EQ("new", ReadWholeFile(destination.File("behind.txt")));
    const Lines told = Heads(kRunLog);
    EXPECT_EQ(kCommandFailed, told.back());
    EXPECT_NE(told.end(), std::find(told.begin(), told.end(), "ERROR " + code + " 'Copy' command failed."));
  }
};

TEST_F(FilesTest, AFileInThePlaceOfTheFolderIsLeftAlone) {
  WriteWholeFile(destination.File("folder"), "a file");
  ExpectOneFails(CopyNew("a.txt", destination.File("folder")), "0x80070003");
  EXPECT_EQ("a file", ReadWholeFile(destination.File("folder")));
}

TEST_F(FilesTest, AFileInThePlaceOfAFolderAboveIsLeftAlone) {
  WriteWholeFile(destination.File("folder"), "a file");
  ExpectOneFails(CopyNew("a.txt", destination.File("folder\\below")), "0x80070003");
  EXPECT_EQ("a file", ReadWholeFile(destination.File("folder")));
}

TEST_F(FilesTest, AFolderInThePlaceOfTheFileIsLeftAlone) {
  for (const char* policy : {"", "<Overwrite force=\"true\"/>", "<Rename/>"}) {
    CreateDirectoryA(destination.File("a.txt").c_str(), nullptr);
    WriteWholeFile(destination.File("a.txt\\inside"), "kept");
    ExpectOneFails(CopyNew("a.txt", destination.Path(), policy), "0x80070005");
    EXPECT_EQ("kept", ReadWholeFile(destination.File("a.txt\\inside"))) << policy;
  }
}

TEST_F(FilesTest, AReadOnlyFileIsOnlyReplacedByForce) {
  WriteWholeFile(destination.File("a.txt"), "old");
  SetFileAttributesA(destination.File("a.txt").c_str(), FILE_ATTRIBUTE_READONLY);
  ExpectOneFails(CopyNew("a.txt", destination.Path()), "0x80070005");
  EXPECT_EQ("old", ReadWholeFile(destination.File("a.txt")));
  EXPECT_HRESULT(S_OK, Execute(CopyNew("a.txt", destination.Path(), "<Overwrite force=\"true\"/>")));
  EXPECT_EQ("new", ReadWholeFile(destination.File("a.txt")));
}

// A folder is not write-protected by this attribute.
TEST_F(FilesTest, AReadOnlyFolderIsWrittenInto) {
  const std::string folder = destination.File("protected");
  CreateDirectoryA(folder.c_str(), nullptr);
  SetFileAttributesA(folder.c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_HRESULT(S_OK, Execute(CopyNew("a.txt", folder)));
  EXPECT_EQ("new", ReadWholeFile(folder + "\\a.txt"));
  SetFileAttributesA(folder.c_str(), FILE_ATTRIBUTE_NORMAL);
}

struct HeldRow {
  const char* name;
  const char* policy;
  const char* code;  // null where the command succeeds
  DWORD sharing;
};

class HeldFileTest : public FilesTest, public testing::WithParamInterface<HeldRow> {};

TEST_P(HeldFileTest, StaysAsItIs) {
  WriteWholeFile(destination.File("a.txt"), "old");
  {
    const HeldFile held(destination.File("a.txt"), GetParam().sharing);
    const std::string command = CopyNew("a.txt", destination.Path(), GetParam().policy);
    if (GetParam().code) {
      ExpectOneFails(command, GetParam().code);
    } else {
      EXPECT_HRESULT(S_OK, Execute(command));
    }
  }
  EXPECT_EQ("old", ReadWholeFile(destination.File("a.txt")));
}

INSTANTIATE_TEST_SUITE_P(
    Policies, HeldFileTest,
    testing::Values(HeldRow{"Overwrite", "<Overwrite/>", "0x80070020", 0},
                    HeldRow{"OverwriteByForce", "<Overwrite force=\"true\"/>", "0x80070020", 0},
                    HeldRow{"OverwriteOfOneThatIsOnlyRead", "<Overwrite/>", "0x80070020", FILE_SHARE_READ},
                    HeldRow{"Skip", "<Skip/>", nullptr, 0}, HeldRow{"Update", "<Update/>", "0x80070020", 0},
                    HeldRow{"Rename", "<Rename/>", "0x80070020", 0}),
    [](const auto& row) { return row.param.name; });

TEST_F(FilesTest, ALogThatIsHeldCostsItsLinesAndNothingElse) {
  EXPECT_HRESULT(S_FALSE, Execute(CopyRefused()));
  const std::string before = ReadWholeFile(LogCapture::PathOf(kRunLog));
  {
    const HeldFile held(LogCapture::PathOf(kRunLog), FILE_SHARE_READ);
    EXPECT_HRESULT(S_FALSE, Execute(CopyRefused() + CopyNew("a.txt", destination.Path())));
  }
  EXPECT_EQ("new", ReadWholeFile(destination.File("a.txt")));
  EXPECT_EQ(before, ReadWholeFile(LogCapture::PathOf(kRunLog)));
  EXPECT_HRESULT(S_FALSE, Execute(CopyRefused()));
  EXPECT_EQ(kCommandFailed, LastMessage(kRunLog));
}

TEST_F(FilesTest, WithoutALocalDataFolderTheLogsStandBelowTheRootOfTheDrive) {
  const std::string fallback = std::string("C:\\Vantor\\Logs\\Norvik\\") + kRunLog + ".log";
  ImportedFunction<struct NoLocalData, decltype(&::SHGetFolderPathA)> noFolder(
      "SHGetFolderPathA",
      [](auto original, HWND owner, int folder, auto... rest) -> HRESULT {
        return folder == CSIDL_LOCAL_APPDATA ? E_FAIL : original(owner, folder, rest...);
      },
      module.Handle());
  EXPECT_HRESULT(S_FALSE, Execute(CopyRefused() + CopyNew("a.txt", destination.Path())));
  EXPECT_EQ("new", ReadWholeFile(destination.File("a.txt")));
  const Lines told = LogCapture::MessagesOf(LogCapture::Parse(ReadWholeFile(fallback)));
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(kCommandFailed, told.back());
  RemoveTree("C:\\Vantor");
}

TEST_F(FilesTest, AFullDiskLeavesNoPartOfAFile) {
  const std::string large(100000, 'x');
  server.Answer("/large.txt", Response().Body(large));
  int room = 50000;
  ImportedFunction<struct FullDisk, decltype(&::WriteFile)> full(
      "WriteFile",
      [&](auto original, HANDLE file, const void* bytes, DWORD count, DWORD* written, auto rest) -> BOOL {
        if (count != 4096 || (room -= 4096) > 0)
          return original(file, bytes, count, written, rest);
        *written = 0;
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
      },
      module.Handle());
  ExpectOneFails(Command("Copy", server.Url("/large.txt"), destination.Path()), "0x80070070");
  EXPECT_EQ("behind.txt", NamesIn(destination.Path()));
}

}  // namespace
