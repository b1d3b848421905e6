// What a `Copy` command does with a file that is already there, and what it makes of its own file's attributes and times.

#include <gtest/gtest.h>

#include "common/Handles.h"
#include "engine/CopyCommand.h"
#include "engine/EngineFixture.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;

constexpr char kOverwrite[] = "<IfFileExists><Overwrite force='false'/></IfFileExists>";
constexpr char kOverwriteByForce[] = "<IfFileExists><Overwrite force='true'/></IfFileExists>";
constexpr char kSkip[] = "<IfFileExists><Skip/></IfFileExists>";
constexpr char kCancel[] = "<IfFileExists><Cancel/></IfFileExists>";
constexpr char kRename[] = "<IfFileExists><Rename/></IfFileExists>";
constexpr char kUpdate[] = "<IfFileExists><Update force='false'/></IfFileExists>";
constexpr char kReadOnly[] = "<Attributes><ReadOnly/></Attributes>";

// A command from a.txt with the content "new", and a file a.txt with the content "old" at its destination.
class CopyCommandExistingFileTest : public testing::Test {
 protected:
  CopyCommandExistingFileTest()
      : source(fixture.WriteSource("a.txt", "new")), destination(fixture.WriteDestination("a.txt", "old")) {}

  void Read(const std::string& options) {
    command =
        std::make_unique<CCopyCommand>(ParseElement(CopyElement(source, fixture.PathElement() + options)).Get(), nullptr);
  }

  HRESULT Run() { return command->Execute(0, fixture.permissions.get(), nullptr); }

  HRESULT ReadAndRun(const std::string& options) {
    Read(options);
    return Run();
  }

  std::string Names() const { return NamesIn(fixture.destination.Path()); }

  const CopyFixture fixture;
  const std::string source;
  const std::string destination;
  std::unique_ptr<CCopyCommand> command;
};

TEST_F(CopyCommandExistingFileTest, IsOverwrittenWithoutAPolicy) {
  EXPECT_HRESULT(S_OK, ReadAndRun(""));
  EXPECT_EQ("a.txt", Names());
  EXPECT_EQ("new", ReadWholeFile(destination));
}

TEST_F(CopyCommandExistingFileTest, IsOverwrittenAndEmptiedFirst) {
  WriteWholeFile(destination, "something longer than the new content");
  EXPECT_HRESULT(S_OK, ReadAndRun(kOverwrite));
  EXPECT_EQ("new", ReadWholeFile(destination));
}

TEST_F(CopyCommandExistingFileTest, IsKeptWhenItIsReadOnly) {
  ASSERT_TRUE(SetFileAttributesA(destination.c_str(), FILE_ATTRIBUTE_READONLY));
  const LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, ReadAndRun(kOverwrite));
  EXPECT_EQ("ERROR 0x80070005 'Copy' command failed.", log.Messages().back());
  EXPECT_EQ("old", ReadWholeFile(destination));
  EXPECT_STREQ("a.txt", command->GetFileName());
  EXPECT_EQ(nullptr, command->GetSourceText());
  EXPECT_EQ(nullptr, command->GetFolder());
}

TEST_F(CopyCommandExistingFileTest, IsOverwrittenByForceWhenItIsReadOnly) {
  ASSERT_TRUE(SetFileAttributesA(destination.c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_HRESULT(S_OK, ReadAndRun(kOverwriteByForce));
  EXPECT_EQ("new", ReadWholeFile(destination));
  EXPECT_FALSE(AttributesOf(destination) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(CopyCommandExistingFileTest, IsLeftAloneBySkip) {
  ASSERT_TRUE(SetFileAttributesA(destination.c_str(), FILE_ATTRIBUTE_READONLY));
  const LogCapture log(false);
  EXPECT_HRESULT(S_FALSE, ReadAndRun(kSkip));
  EXPECT_EQ("old", ReadWholeFile(destination));
  EXPECT_EQ("", log.Text());
}

TEST_F(CopyCommandExistingFileTest, IsRecordedBySkipAllTheSame) {
  ASSERT_HRESULT(S_FALSE, ReadAndRun(kSkip));
  EXPECT_EQ("file://" + source, command->GetSourceText());
  EXPECT_STREQ("a.txt", command->GetFileName());
  EXPECT_EQ(fixture.destination.Path(), command->GetFolder());
}

TEST_F(CopyCommandExistingFileTest, IsLeftAloneBySkipWithoutLookingAtTheSource) {
  Read(kSkip);
  ASSERT_TRUE(DeleteFileA(source.c_str()));
  EXPECT_HRESULT(S_FALSE, Run());
}

TEST_F(CopyCommandExistingFileTest, StopsTheCommandUnderCancel) {
  const LogCapture log(false);
  EXPECT_HRESULT(static_cast<HRESULT>(0x800704C7), ReadAndRun(kCancel));
  EXPECT_EQ((Texts{"WARNING 0x800704c7 '" + destination + "' exists, canceling operation.",
                   "ERROR 0x800704c7 File exists. 'Copy' command canceled."}),
            log.Messages());
  EXPECT_EQ("old", ReadWholeFile(destination));
  EXPECT_EQ(nullptr, command->GetSourceText());
  EXPECT_EQ(nullptr, command->GetFolder());
}

TEST_F(CopyCommandExistingFileTest, IsMovedAsideByRename) {
  fixture.WriteDestination("a.000", "0");
  fixture.WriteDestination("a.001", "1");
  EXPECT_HRESULT(S_OK, ReadAndRun(kRename));
  EXPECT_EQ("a.000 a.001 a.002 a.txt", Names());
  EXPECT_EQ("old", ReadWholeFile(fixture.Destination("a.002")));
  EXPECT_EQ("new", ReadWholeFile(destination));
  EXPECT_STREQ("a.txt", command->GetFileName());
}

TEST_F(CopyCommandExistingFileTest, IsMovedAsideByRenameEveryTime) {
  Read(kRename);
  EXPECT_HRESULT(S_OK, Run());
  EXPECT_HRESULT(S_OK, Run());
  EXPECT_EQ("a.000 a.001 a.txt", Names());
  EXPECT_EQ("new", ReadWholeFile(fixture.Destination("a.001")));
}

TEST_F(CopyCommandExistingFileTest, ThatCannotBeMovedFailsTheCommand) {
  const LogCapture log(false);
  PATCH_IMPORT(moves, MoveFileA, FailWith(FALSE, ERROR_SHARING_VIOLATION));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070020), ReadAndRun(kRename));
  EXPECT_EQ((Texts{"ERROR 0x80070020 Rename from '" + destination + "' to '" + fixture.Destination("a.000") + "' failed.",
                   "ERROR 0x80070020 'Copy' command failed."}),
            log.Messages());
  EXPECT_EQ("old", ReadWholeFile(destination));
}

struct UpdateRow {
  const char* name;
  const char* fileTime;  // of the command; null for none
  HRESULT result;
};

class CopyCommandUpdateTest : public CopyCommandExistingFileTest, public testing::WithParamInterface<UpdateRow> {};

TEST_P(CopyCommandUpdateTest, ReplacesAnOlderFile) {
  SetFileWriteTime(destination, FileTimeOf(2002, 6, 25, 12));
  SetFileWriteTime(source, FileTimeOf(2002, 6, 25, 12, 0, 1));
  const std::string time =
      GetParam().fileTime ? std::string("<Attributes><FileTime>") + GetParam().fileTime + "</FileTime></Attributes>" : "";
  EXPECT_HRESULT(GetParam().result, ReadAndRun(time + kUpdate));
  EXPECT_EQ(GetParam().result == S_OK ? "new" : "old", ReadWholeFile(destination));
  EXPECT_EQ(fixture.destination.Path(), command->GetFolder());
}

INSTANTIATE_TEST_SUITE_P(
    , CopyCommandUpdateTest,
    testing::Values(UpdateRow{"Equal", "2002-06-25T12:00:00Z", S_FALSE},
                    UpdateRow{"ASecondLater", "2002-06-25T12:00:01Z", S_OK},
                    UpdateRow{"ASecondEarlier", "2002-06-25T11:59:59Z", S_FALSE}, UpdateRow{"NoTimeAtAll", "", S_OK},
                    UpdateRow{"ByTheSourceFilesOwnTime", nullptr, S_OK}),
    [](const auto& row) { return row.param.name; });

TEST_F(CopyCommandExistingFileTest, WhoseTimeCannotBeReadFailsUpdate) {
  Read(kUpdate);
  const FileHandle held(CreateFileA(
      destination.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  const LogCapture log(false);
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070020), Run());
  EXPECT_EQ((Texts{"ERROR 0x80070020 Unable to read '" + destination + "'.",
                   "ERROR 0x80070020 Unable to retrieve file time from '" + destination + "'.",
                   "ERROR 0x80070020 'Copy' command failed."}),
            log.Messages());
}

TEST_F(CopyCommandExistingFileTest, ThatIsAFolderIsNeverReplaced) {
  ASSERT_TRUE(DeleteFileA(destination.c_str()));
  ASSERT_TRUE(CreateDirectoryA(destination.c_str(), nullptr));
  for (const char* policy : {kOverwrite, kOverwriteByForce, kRename}) {
    EXPECT_HRESULT(E_ACCESSDENIED, ReadAndRun(policy)) << policy;
    EXPECT_EQ("a.txt", Names()) << policy;
    EXPECT_TRUE(AttributesOf(destination) & FILE_ATTRIBUTE_DIRECTORY) << policy;
  }
}

TEST_F(CopyCommandExistingFileTest, IsKeptWhenTheSourceCannotBeOpened) {
  Read(kOverwrite);
  ASSERT_TRUE(DeleteFileA(source.c_str()));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), Run());
  EXPECT_EQ("old", ReadWholeFile(destination));
}

TEST_F(CopyCommandExistingFileTest, ThatIsTheSourceItselfStaysWhole) {
  PermitFile permit;
  permit.URL(fixture.source.Path() + "\\").Extension("txt").Folder("Path", fixture.source.Path());
  const auto permissions = permit.Read();
  CCopyCommand itself(ParseElement(CopyElement(source, "<Path>" + fixture.source.Path() + "</Path>")).Get(), nullptr);
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070020), itself.Execute(0, permissions.get(), nullptr));
  EXPECT_EQ("new", ReadWholeFile(source));
}

TEST_F(CopyCommandExistingFileTest, MayBeTheReadOnlyFileOfTheRunBefore) {
  ASSERT_TRUE(DeleteFileA(destination.c_str()));
  Read(std::string(kReadOnly) + kOverwrite);
  EXPECT_HRESULT(S_OK, Run());
  EXPECT_TRUE(AttributesOf(destination) & FILE_ATTRIBUTE_READONLY);
  EXPECT_HRESULT(E_ACCESSDENIED, Run());
  Read(std::string(kReadOnly) + kOverwriteByForce);
  EXPECT_HRESULT(S_OK, Run());
}

TEST_F(CopyCommandExistingFileTest, TheWrittenFileHasTheAttributesOfTheCommand) {
  ASSERT_TRUE(DeleteFileA(destination.c_str()));
  DWORD attributes = 0;
  PATCH_IMPORT(files, CreateFileA,
               [&](auto original, LPCSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD disposition,
                   DWORD flags, HANDLE model) {
    if (name == destination && access == GENERIC_WRITE)
      attributes = flags;
    return original(name, access, share, security, disposition, flags, model);
  });
  EXPECT_HRESULT(S_OK, ReadAndRun("<Attributes><Normal/><ReadOnly/><Hidden/></Attributes>"));
  EXPECT_EQ(131u, attributes);
  EXPECT_TRUE(AttributesOf(destination) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(CopyCommandExistingFileTest, TheWrittenFileHasTheTimeOfTheCommand) {
  EXPECT_HRESULT(S_OK, ReadAndRun("<Attributes><FileTime>1999-12-31T23:59:59Z</FileTime></Attributes>"));
  EXPECT_TRUE(FileTimeOf(1999, 12, 31, 23, 59, 59) == GetFileWriteTimeOf(destination));
}

TEST_F(CopyCommandExistingFileTest, TheWrittenFileHasTheTimeOfALocalSource) {
  SetFileWriteTime(source, FileTimeOf(1999, 12, 31));
  EXPECT_HRESULT(S_OK, ReadAndRun(""));
  EXPECT_TRUE(FileTimeOf(1999, 12, 31) == GetFileWriteTimeOf(destination));
}

TEST_F(CopyCommandExistingFileTest, WithoutATimeTheWrittenFileKeepsItsOwn) {
  PATCH_IMPORT(times, SetFileTime, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "a time was set";
    return TRUE;
  });
  EXPECT_HRESULT(S_OK, ReadAndRun("<Attributes><FileTime/></Attributes>"));
}

}  // namespace
