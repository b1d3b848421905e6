// How the parts of a `Copy` element are read that say what becomes of the file: attributes, policy and times.

#include <gtest/gtest.h>

#include "engine/CopyCommand.h"
#include "engine/EngineFixture.h"
#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

// A command whose destination is read from `destination`.
std::unique_ptr<CCopyCommand> ReadFrom(const std::string& destination, const std::string& source = kWebSource) {
  HRESULT hr = E_UNEXPECTED;
  auto command = std::make_unique<CCopyCommand>(ParseElement(CopyElement(source, destination)).Get(), &hr);
  EXPECT_HRESULT(S_OK, hr);
  return command;
}

struct AttributesRow {
  const char* name;
  const char* destination;
  DWORD attributes;
};

class CopyCommandAttributesTest : public testing::TestWithParam<AttributesRow> {};

TEST_P(CopyCommandAttributesTest, AreRead) {
  EXPECT_EQ(GetParam().attributes, ReadFrom(GetParam().destination)->GetFileAttributes());
}

INSTANTIATE_TEST_SUITE_P(
    , CopyCommandAttributesTest,
    testing::Values(AttributesRow{"None", "<Temp/>", 128}, AttributesRow{"Empty", "<Temp/><Attributes/>", 128},
                    AttributesRow{"Normal", "<Temp/><Attributes><Normal/></Attributes>", 128},
                    AttributesRow{"ReadOnly", "<Temp/><Attributes><ReadOnly/></Attributes>", 129},
                    AttributesRow{"Hidden", "<Temp/><Attributes><Hidden/></Attributes>", 130},
                    AttributesRow{"Both", "<Temp/><Attributes><ReadOnly/><Hidden/></Attributes>", 131},
                    AttributesRow{"AllThree", "<Temp/><Attributes><Normal/><ReadOnly/><Hidden/></Attributes>", 131},
                    AttributesRow{"OtherCase", "<Temp/><Attributes><readonly/><HIDDEN/></Attributes>", 128},
                    AttributesRow{"OfACacheEntryAreNotRead", "<InternetCache/><Attributes><ReadOnly/></Attributes>", 128},
                    AttributesRow{"OfACookieAreNotRead", "<Cookie/><Attributes><Hidden/></Attributes>", 128}),
    [](const auto& row) { return row.param.name; });

struct PolicyRow {
  const char* name;
  const char* destination;
  IfFileExists policy;
  bool force;
};

class CopyCommandPolicyTest : public testing::TestWithParam<PolicyRow> {};

TEST_P(CopyCommandPolicyTest, IsRead) {
  const auto command = ReadFrom(GetParam().destination);
  EXPECT_EQ(GetParam().policy, command->GetPolicy());
  EXPECT_EQ(GetParam().force, command->IsForced());
}

INSTANTIATE_TEST_SUITE_P(
    , CopyCommandPolicyTest,
    testing::Values(
        PolicyRow{"None", "<Temp/>", IfFileExists::Overwrite, false},
        PolicyRow{"Empty", "<Temp/><IfFileExists/>", IfFileExists::Overwrite, false},
        PolicyRow{
            "Overwrite", "<Temp/><IfFileExists><Overwrite force='false'/></IfFileExists>", IfFileExists::Overwrite, false},
        PolicyRow{"Skip", "<Temp/><IfFileExists><Skip/></IfFileExists>", IfFileExists::Skip, false},
        PolicyRow{"Cancel", "<Temp/><IfFileExists><Cancel/></IfFileExists>", IfFileExists::Cancel, false},
        PolicyRow{"Rename", "<Temp/><IfFileExists><Rename/></IfFileExists>", IfFileExists::Rename, false},
        PolicyRow{"Update", "<Temp/><IfFileExists><Update force='false'/></IfFileExists>", IfFileExists::Update, false},
        PolicyRow{"OverwriteByForce", "<Temp/><IfFileExists><Overwrite force='true'/></IfFileExists>",
                  IfFileExists::Overwrite, true},
        PolicyRow{"UpdateByForce", "<Temp/><IfFileExists><Update force='true'/></IfFileExists>", IfFileExists::Update, true},
        PolicyRow{"SkipKnowsNoForce", "<Temp/><IfFileExists><Skip force='true'/></IfFileExists>", IfFileExists::Skip, false},
        PolicyRow{
            "CancelKnowsNoForce", "<Temp/><IfFileExists><Cancel force='true'/></IfFileExists>", IfFileExists::Cancel, false},
        PolicyRow{
            "RenameKnowsNoForce", "<Temp/><IfFileExists><Rename force='true'/></IfFileExists>", IfFileExists::Rename, false},
        PolicyRow{"ForceInCapitals", "<Temp/><IfFileExists><Overwrite force='TRUE'/></IfFileExists>",
                  IfFileExists::Overwrite, true},
        PolicyRow{
            "ForceInMixedCase", "<Temp/><IfFileExists><Update force='tRuE'/></IfFileExists>", IfFileExists::Update, true},
        PolicyRow{
            "ForceYes", "<Temp/><IfFileExists><Overwrite force='yes'/></IfFileExists>", IfFileExists::Overwrite, false},
        PolicyRow{"ForceOne", "<Temp/><IfFileExists><Overwrite force='1'/></IfFileExists>", IfFileExists::Overwrite, false},
        PolicyRow{"ForceEmpty", "<Temp/><IfFileExists><Overwrite force=''/></IfFileExists>", IfFileExists::Overwrite, false},
        PolicyRow{"ForceLonger", "<Temp/><IfFileExists><Overwrite force='trueish'/></IfFileExists>", IfFileExists::Overwrite,
                  false},
        PolicyRow{"ForceUnderAnotherName", "<Temp/><IfFileExists><Overwrite Force='true'/></IfFileExists>",
                  IfFileExists::Overwrite, false},
        PolicyRow{"OverwriteBeforeUpdate",
                  "<Temp/><IfFileExists><Update force='true'/><Overwrite force='false'/></IfFileExists>",
                  IfFileExists::Overwrite, false},
        PolicyRow{"SkipBeforeCancel", "<Temp/><IfFileExists><Cancel/><Skip/></IfFileExists>", IfFileExists::Skip, false},
        PolicyRow{
            "CancelBeforeRename", "<Temp/><IfFileExists><Rename/><Cancel/></IfFileExists>", IfFileExists::Cancel, false},
        PolicyRow{"RenameBeforeUpdate", "<Temp/><IfFileExists><Update force='true'/><Rename/></IfFileExists>",
                  IfFileExists::Rename, false},
        PolicyRow{"OfACacheEntryIsNotRead", "<InternetCache/><IfFileExists><Cancel/></IfFileExists>",
                  IfFileExists::Overwrite, false},
        PolicyRow{"OfACookieIsNotRead", "<Cookie/><IfFileExists><Cancel/></IfFileExists>", IfFileExists::Overwrite, false}),
    [](const auto& row) { return row.param.name; });

TEST(CopyCommandForceTest, AMissingAttributeIsTracedAndFalse) {
  const LogCapture log;
  const auto command = ReadFrom("<Temp/><IfFileExists><Update/></IfFileExists>");
  EXPECT_EQ(IfFileExists::Update, command->GetPolicy());
  EXPECT_FALSE(command->IsForced());
  EXPECT_EQ(std::vector<HRESULT>{E_FAIL}, log.ErrorTraces());
  EXPECT_EQ("CopyCommand", log.Entries().at(0).file);
}

TEST(CopyCommandForceTest, AnUnreadableAttributeIsTracedAndFalse) {
  FakeNode force(L"true");
  force.Answer("get_text", kAnyFailure);
  FakeAttributes attributes;
  attributes.named[L"force"] = &force;
  FakeNode overwrite;
  overwrite.attributes = &attributes;
  FakeNode temp(L"");
  FakeNode source(L"http://server/d/setup.exe");
  FakeNode copy;
  copy.children = {{L"Source", &source}, {L"Destination/Temp", &temp}, {L"Destination/IfFileExists/Overwrite", &overwrite}};
  const LogCapture log;
  HRESULT hr = E_UNEXPECTED;
  const CCopyCommand command(&copy, &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_FALSE(command.IsForced());
  EXPECT_EQ((std::vector<HRESULT>{kAnyFailure, kAnyFailure}), log.ErrorTraces());
}

void ExpectTime(const FILETIME& expected, const CCopyCommand& command) {
  ASSERT_NE(nullptr, command.GetTime().AsFileTime());
  EXPECT_EQ(0, CompareFileTime(&expected, command.GetTime().AsFileTime()));
}

std::string WithFileTime(const std::string& time) {
  return "<Temp/><Attributes><FileTime>" + time + "</FileTime></Attributes>";
}

TEST(CopyCommandTimeTest, IsReadFromItsText) {
  const LogCapture log;
  const auto command = ReadFrom(WithFileTime("2002-06-25T23:45:00Z"));
  ExpectTime(FileTimeOf(2002, 6, 25, 23, 45), *command);
  EXPECT_EQ("", log.Text());
}

TEST(CopyCommandTimeTest, IsEmptyForAWebSourceWithoutText) {
  EXPECT_TRUE(ReadFrom("<Temp/>")->GetTime().IsEmpty());
}

TEST(CopyCommandTimeTest, IsTheSourceFilesOwnWithoutText) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "x");
  SetFileWriteTime(folder.File("a.txt"), FileTimeOf(1999, 12, 31, 23, 59, 59));
  ExpectTime(FileTimeOf(1999, 12, 31, 23, 59, 59), *ReadFrom("<Temp/>", folder.File("a.txt")));
  ExpectTime(FileTimeOf(1999, 12, 31, 23, 59, 59), *ReadFrom("<Temp/>", "file://" + folder.File("a.txt")));
}

TEST(CopyCommandTimeTest, ATextGoesBeforeTheSourceFilesOwn) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "x");
  ExpectTime(FileTimeOf(2002, 6, 25), *ReadFrom(WithFileTime("2002-06-25"), folder.File("a.txt")));
}

TEST(CopyCommandTimeTest, AnEmptyTextCountsAsPresent) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "x");
  EXPECT_TRUE(ReadFrom(WithFileTime(""), folder.File("a.txt"))->GetTime().IsEmpty());
}

TEST(CopyCommandTimeTest, ATextThatIsNoTimeLeavesItEmpty) {
  const LogCapture log(false);
  EXPECT_TRUE(ReadFrom(WithFileTime("yesterday%s%n"))->GetTime().IsEmpty());
  EXPECT_EQ("yesterday%s%n", log.Entries().back().message);
}

TEST(CopyCommandTimeTest, AMissingSourceFileLeavesItEmpty) {
  const TemporaryFolder folder;
  const LogCapture log(false);
  EXPECT_TRUE(ReadFrom("<Temp/>", folder.File("a.txt"))->GetTime().IsEmpty());
  EXPECT_EQ(std::vector<std::string>{"ERROR 0x80070002 Unable to read '" + folder.File("a.txt") + "'."}, log.Messages());
}

TEST(CopyCommandTimeTest, ASourceFileWithoutATimeLeavesItEmpty) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "x");
  const LogCapture log(false);
  PATCH_IMPORT(times, GetFileTime, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_TRUE(ReadFrom("<Temp/>", folder.File("a.txt"))->GetTime().IsEmpty());
  EXPECT_EQ(
      std::vector<std::string>{"ERROR 0x80070005 File Time for '" + folder.File("a.txt") + "' failed."}, log.Messages());
}

struct ExpiryRow {
  const char* name;
  const char* destination;
  bool isRead;
};

class CopyCommandExpiryTest : public testing::TestWithParam<ExpiryRow> {};

TEST_P(CopyCommandExpiryTest, IsReadFromTheElementOfItsKindOnly) {
  const auto command = ReadFrom(GetParam().destination);
  if (GetParam().isRead)
    ExpectTime(FileTimeOf(2030, 1, 2), *command);
  else
    EXPECT_TRUE(command->GetTime().IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    , CopyCommandExpiryTest,
    testing::Values(
        ExpiryRow{"Cookie", "<Cookie><ExpireTime>2030-01-02</ExpireTime></Cookie>", true},
        ExpiryRow{"Cache", "<InternetCache><ExpireTime>2030-01-02</ExpireTime></InternetCache>", true},
        ExpiryRow{"CookieWithout", "<Cookie/>", false}, ExpiryRow{"CacheWithout", "<InternetCache/>", false},
        ExpiryRow{
            "CookieWithTheCaches", "<Cookie/><InternetCache><ExpireTime>2030-01-02</ExpireTime></InternetCache>", false},
        ExpiryRow{"CookieWithAFileTime", "<Cookie/><Attributes><FileTime>2030-01-02</FileTime></Attributes>", false},
        ExpiryRow{"CacheWithAFileTime", "<InternetCache/><Attributes><FileTime>2030-01-02</FileTime></Attributes>", false},
        ExpiryRow{
            "FolderWithTheCaches", "<Temp/><InternetCache><ExpireTime>2030-01-02</ExpireTime></InternetCache>", false}),
    [](const auto& row) { return row.param.name; });

TEST(CopyCommandTimeTest, ALocalSourceGivesACacheEntryNoTime) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "x");
  EXPECT_TRUE(ReadFrom("<InternetCache/>", folder.File("a.txt"))->GetTime().IsEmpty());
}

}  // namespace
