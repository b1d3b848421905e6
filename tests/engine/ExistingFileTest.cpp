#include "engine/ExistingFile.h"

#include <gtest/gtest.h>

#include "common/Handles.h"
#include "engine/EngineFixture.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

const CXMLFileTime kNoTime;

// A folder with the file a.txt, whose content is "old".
class ExistingFileTest : public testing::Test {
 protected:
  ExistingFileTest() : path(folder.File("a.txt")) { WriteWholeFile(path, "old"); }

  HRESULT Handle(IfFileExists policy, bool force = false, const CXMLFileTime& time = kNoTime) {
    return HandleExistingFile(policy, path.c_str(), force, time);
  }

  void Protect() { ASSERT_TRUE(SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY)); }

  TemporaryFolder folder;
  std::string path;
};

TEST_F(ExistingFileTest, OverwriteLetsAnOrdinaryFileBeWritten) {
  const LogCapture log;
  EXPECT_HRESULT(S_OK, Handle(IfFileExists::Overwrite));
  EXPECT_EQ("old", ReadWholeFile(path));
  EXPECT_EQ("", log.Text());
}

TEST_F(ExistingFileTest, OverwriteRefusesAReadOnlyFile) {
  Protect();
  const LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, Handle(IfFileExists::Overwrite));
  EXPECT_EQ(Codes{E_ACCESSDENIED}, log.ErrorTraces());
  EXPECT_TRUE(log.Messages().empty());
  EXPECT_EQ("CopyCommand", log.Entries().at(0).file);
  EXPECT_TRUE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(ExistingFileTest, OverwriteByForceTakesTheProtectionAway) {
  Protect();
  const LogCapture log;
  EXPECT_HRESULT(S_OK, Handle(IfFileExists::Overwrite, true));
  EXPECT_FALSE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ("", log.Text());
}

TEST_F(ExistingFileTest, AnUnknownPolicyIsOverwrite) {
  for (const LONG policy : {-1L, 5L, 2147483647L}) {
    EXPECT_HRESULT(S_OK, Handle(static_cast<IfFileExists>(policy))) << policy;
    Protect();
    EXPECT_HRESULT(E_ACCESSDENIED, Handle(static_cast<IfFileExists>(policy))) << policy;
    EXPECT_HRESULT(S_OK, Handle(static_cast<IfFileExists>(policy), true)) << policy;
  }
  EXPECT_EQ("a.txt", NamesIn(folder.Path()));
}

TEST_F(ExistingFileTest, SkipTouchesNothing) {
  Protect();
  const LogCapture log;
  EXPECT_HRESULT(S_FALSE, Handle(IfFileExists::Skip, true));
  EXPECT_TRUE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ("", log.Text());
}

TEST_F(ExistingFileTest, CancelWarnsAndTouchesNothing) {
  Protect();
  const LogCapture log;
  EXPECT_HRESULT(static_cast<HRESULT>(0x800704C7), Handle(IfFileExists::Cancel, true));
  EXPECT_EQ(Texts{"WARNING 0x800704c7 '" + path + "' exists, canceling operation."}, log.Messages());
  EXPECT_EQ(1u, log.Entries().size());
  EXPECT_TRUE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(ExistingFileTest, RenameMovesTheFileAside) {
  const LogCapture log;
  EXPECT_HRESULT(S_OK, Handle(IfFileExists::Rename));
  EXPECT_EQ("a.000", NamesIn(folder.Path()));
  EXPECT_EQ("old", ReadWholeFile(folder.File("a.000")));
  EXPECT_EQ("", log.Text());
}

TEST_F(ExistingFileTest, RenameRefusesAReadOnlyFile) {
  Protect();
  const LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, Handle(IfFileExists::Rename));
  EXPECT_EQ((Codes{E_ACCESSDENIED, E_ACCESSDENIED}), log.ErrorTraces());
  EXPECT_EQ("a.txt", NamesIn(folder.Path()));
}

TEST_F(ExistingFileTest, RenameByForceMovesAReadOnlyFile) {
  Protect();
  EXPECT_HRESULT(S_OK, Handle(IfFileExists::Rename, true));
  EXPECT_EQ("a.000", NamesIn(folder.Path()));
  EXPECT_FALSE(AttributesOf(folder.File("a.000")) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(ExistingFileTest, AFailedRenameIsReportedAndTraced) {
  const LogCapture log;
  PATCH_IMPORT(moves, MoveFileA, FailWith(FALSE, ERROR_SHARING_VIOLATION));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070020), Handle(IfFileExists::Rename));
  EXPECT_EQ(Texts{"ERROR 0x80070020 Rename from '" + path + "' to '" + folder.File("a.000") + "' failed."}, log.Messages());
  EXPECT_EQ(Codes{static_cast<HRESULT>(0x80070020)}, log.ErrorTraces());
}

struct UpdateRow {
  const char* name;
  LONGLONG laterBy;  // by how many units of 100 nanoseconds the command's time is later than the file's
  HRESULT result;
};

class ExistingFileUpdateTest : public ExistingFileTest, public testing::WithParamInterface<UpdateRow> {};

TEST_P(ExistingFileUpdateTest, ComparesTheTimes) {
  const FILETIME existing = FileTimeOf(2002, 6, 25, 23, 45);
  SetFileWriteTime(path, existing);
  ULARGE_INTEGER units = {{existing.dwLowDateTime, existing.dwHighDateTime}};
  units.QuadPart += static_cast<ULONGLONG>(GetParam().laterBy);
  const FILETIME own = {units.LowPart, units.HighPart};
  const LogCapture log;
  EXPECT_HRESULT(GetParam().result, Handle(IfFileExists::Update, false, CXMLFileTime(&own)));
  EXPECT_EQ("", log.Text());
  EXPECT_TRUE(existing == GetFileWriteTimeOf(path));
}

INSTANTIATE_TEST_SUITE_P(
    , ExistingFileUpdateTest,
    testing::Values(UpdateRow{"Equal", 0, S_FALSE}, UpdateRow{"OneUnitLater", 1, S_OK},
                    UpdateRow{"OneUnitEarlier", -1, S_FALSE}, UpdateRow{"YearsLater", 10000000LL * 86400 * 1000, S_OK},
                    UpdateRow{"YearsEarlier", -10000000LL * 86400 * 1000, S_FALSE}),
    [](const auto& row) { return row.param.name; });

TEST_F(ExistingFileTest, UpdateWithoutATimeAlwaysReplaces) {
  SetFileWriteTime(path, FileTimeOf(2999, 1, 1));
  EXPECT_HRESULT(S_OK, Handle(IfFileExists::Update));
}

TEST_F(ExistingFileTest, UpdateRefusesAReadOnlyFileOnlyWhenItIsOlder) {
  const FILETIME existing = FileTimeOf(2002, 6, 25);
  const FILETIME later = FileTimeOf(2002, 6, 26);
  SetFileWriteTime(path, existing);
  Protect();
  EXPECT_HRESULT(S_FALSE, Handle(IfFileExists::Update, false, CXMLFileTime(&existing)));
  EXPECT_HRESULT(E_ACCESSDENIED, Handle(IfFileExists::Update, false, CXMLFileTime(&later)));
  EXPECT_TRUE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
  EXPECT_HRESULT(S_FALSE, Handle(IfFileExists::Update, true, CXMLFileTime(&existing)));
  EXPECT_TRUE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
  EXPECT_HRESULT(S_OK, Handle(IfFileExists::Update, true, CXMLFileTime(&later)));
  EXPECT_FALSE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
}

TEST_F(ExistingFileTest, UpdateNeedsToOpenTheFileAlone) {
  const FileHandle held(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  ASSERT_TRUE(held);
  const LogCapture log;
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070020), Handle(IfFileExists::Update));
  EXPECT_EQ((Texts{"ERROR 0x80070020 Unable to read '" + path + "'.",
                   "ERROR 0x80070020 Unable to retrieve file time from '" + path + "'."}),
            log.Messages());
}

TEST_F(ExistingFileTest, UpdateNeedsTheFilesTime) {
  const LogCapture log;
  PATCH_IMPORT(times, GetFileTime, FailWith(FALSE, ERROR_NOT_SUPPORTED));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070032), Handle(IfFileExists::Update, true));
  EXPECT_EQ((Texts{"ERROR 0x80070032 File Time for '" + path + "' failed.",
                   "ERROR 0x80070032 Unable to retrieve file time from '" + path + "'."}),
            log.Messages());
}

// A file's attributes as the code under test sees and sets them.
class FileAttributes {
 public:
  explicit FileAttributes(DWORD initial)
      : attributes(initial),
        reads("GetFileAttributesA", [this](auto, LPCSTR) { return attributes; }),
        writes("SetFileAttributesA", [this](auto, LPCSTR, DWORD newAttributes) {
          attributes = newAttributes;
          ++changes;
          return TRUE;
        }) {}

  DWORD attributes;
  int changes = 0;

 private:
  ImportedFunction<struct GetFileAttributesAImport, decltype(&::GetFileAttributesA)> reads;
  ImportedFunction<struct SetFileAttributesAImport, decltype(&::SetFileAttributesA)> writes;
};

struct AttributesRow {
  const char* name;
  DWORD before;
  bool force;
  HRESULT result;
  DWORD after;
};

class PrepareOverwriteTest : public testing::TestWithParam<AttributesRow> {};

TEST_P(PrepareOverwriteTest, DecidesByTheAttributes) {
  FileAttributes file(GetParam().before);
  EXPECT_HRESULT(GetParam().result, PrepareOverwrite("C:\\a.txt", GetParam().force));
  EXPECT_EQ(GetParam().after, file.attributes);
  EXPECT_EQ(GetParam().before == GetParam().after ? 0 : 1, file.changes);
}

INSTANTIATE_TEST_SUITE_P(
    , PrepareOverwriteTest,
    testing::Values(
        AttributesRow{"Normal", 0x80, false, S_OK, 0x80}, AttributesRow{"NormalByForce", 0x80, true, S_OK, 0x80},
        AttributesRow{"Archive", 0x20, false, S_OK, 0x20}, AttributesRow{"System", 0x04, false, S_OK, 0x04},
        AttributesRow{"ReadOnly", 0x01, false, E_ACCESSDENIED, 0x01},
        AttributesRow{"Hidden", 0x02, false, E_ACCESSDENIED, 0x02}, AttributesRow{"Both", 0x03, false, E_ACCESSDENIED, 0x03},
        AttributesRow{"ReadOnlyByForce", 0x21, true, S_OK, 0x20}, AttributesRow{"HiddenByForce", 0x22, true, S_OK, 0x20},
        AttributesRow{"BothByForceKeepTheOthers", 0x2827, true, S_OK, 0x2824}),
    [](const auto& row) { return row.param.name; });

TEST_F(ExistingFileTest, AFileWithoutAttributesCannotBeOverwritten) {
  const LogCapture log;
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), PrepareOverwrite(folder.File("missing.txt").c_str(), true));
  EXPECT_EQ(Codes{static_cast<HRESULT>(0x80070002)}, log.ErrorTraces());
}

TEST_F(ExistingFileTest, AFailureWithoutAnErrorNumberIsStillAFailure) {
  PATCH_IMPORT(attributes, GetFileAttributesA, FailWith(INVALID_FILE_ATTRIBUTES, ERROR_SUCCESS));
  EXPECT_HRESULT(E_FAIL, PrepareOverwrite(path.c_str(), false));
}

TEST_F(ExistingFileTest, AttributesThatCannotBeClearedAreTracedOnly) {
  Protect();
  const LogCapture log;
  PATCH_IMPORT(writes, SetFileAttributesA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_HRESULT(S_OK, PrepareOverwrite(path.c_str(), true));
  EXPECT_EQ(Codes{E_ACCESSDENIED}, log.ErrorTraces());
  EXPECT_TRUE(log.Messages().empty());
}

TEST_F(ExistingFileTest, AttributesThatCannotBeReadAgainAreTracedOnly) {
  Protect();
  const LogCapture log;
  {
    PATCH_IMPORT(reads, GetFileAttributesA, FailCall(2, INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND));
    EXPECT_HRESULT(S_OK, PrepareOverwrite(path.c_str(), true));
  }
  EXPECT_EQ(Codes{static_cast<HRESULT>(0x80070002)}, log.ErrorTraces());
  EXPECT_TRUE(AttributesOf(path) & FILE_ATTRIBUTE_READONLY);
}

}  // namespace
