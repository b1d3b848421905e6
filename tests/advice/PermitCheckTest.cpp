#include "advice/PermitCheck.h"

#include <gtest/gtest.h>

#include "advice/DoctorExpectations.h"
#include "advice/Words.h"
#include "support/PermitFile.h"

namespace {

const Finding kError = {FindingLevel::Error, "url-everything", 4, "http://host", "This permits everything."};
const Finding kOtherError = {FindingLevel::Error, "folder-everything", 9, "C:\\", "This permits the drive."};
const Finding kWarning = {FindingLevel::Warning, "url-plain-http", 3, "http://host/a/", "This can be read on the way."};
const Finding kNote = {FindingLevel::Note, "folder-no-boundary", 7, "C:\\Data", "This permits neighbours."};
const Finding kWritable = {FindingLevel::Error, "file-writable", 0, "", "Users may write the file."};

class PermitCheckTest : public testing::Test {
 protected:
  PermitCheckTest() { permit.URL("http://host/a/").Extension("txt").Folder("Temp").Write(); }

  DoctorChecks Check(const Findings& findings) const {
    return CheckPermit(WideFromAnsi(permit.Path().c_str()), [=](const PermitDocument&) { return findings; });
  }

  const std::string kSafe = "Only administrators and the system may write the file, its folder and the module.";
  PermitFile permit;
};

TEST_F(PermitCheckTest, AFileWithoutFindingsIsWell) {
  const DoctorChecks checks = Check({});
  ASSERT_EQ(3u, checks.size());
  ExpectCheck("permit-valid", DoctorStatus::Ok, "'" + permit.Path() + "' has 3 entries.", checks[0]);
  ExpectCheck("permit-sound", DoctorStatus::Ok, "Nothing to mend.", checks[1]);
  ExpectCheck("permit-safe", DoctorStatus::Ok, kSafe, checks[2]);
}

TEST_F(PermitCheckTest, TheWorstFindingDecidesAndIsShown) {
  ExpectCheck("permit-sound", DoctorStatus::Ok, "Nothing to mend.", CheckNamed("permit-sound", Check({kNote})));
  ExpectCheck("permit-sound", DoctorStatus::Warning,
              "0 errors, 1 warning. Line 3: This can be read on the way. 'norvik check' shows all.",
              CheckNamed("permit-sound", Check({kNote, kWarning})));
  ExpectCheck("permit-sound", DoctorStatus::Failed,
              "2 errors, 1 warning. Line 4: This permits everything. 'norvik check' shows all.",
              CheckNamed("permit-sound", Check({kWarning, kNote, kError, kOtherError})));
}

TEST_F(PermitCheckTest, TheFirstLineIsALineAndAFileHasNone) {
  Finding finding = kWarning;
  finding.line = 1;
  ExpectCheck("permit-sound", DoctorStatus::Warning,
              "0 errors, 1 warning. Line 1: This can be read on the way. 'norvik check' shows all.",
              CheckNamed("permit-sound", Check({finding})));
  finding.line = 0;
  ExpectCheck(
      "permit-sound", DoctorStatus::Warning, "0 errors, 1 warning. This can be read on the way. 'norvik check' shows all.",
      CheckNamed("permit-sound", Check({finding})));
}

TEST_F(PermitCheckTest, AFileThatUsersMayWriteIsSoundAndNotSafe) {
  const DoctorChecks checks = Check({kNote, kWritable});
  ExpectCheck("permit-sound", DoctorStatus::Ok, "Nothing to mend.", CheckNamed("permit-sound", checks));
  ExpectCheck("permit-safe", DoctorStatus::Failed, "Users may write the file.", CheckNamed("permit-safe", checks));
}

TEST_F(PermitCheckTest, AnUnsoundFileIsSafe) {
  ExpectCheck("permit-safe", DoctorStatus::Ok, kSafe, CheckNamed("permit-safe", Check({kError})));
}

TEST_F(PermitCheckTest, TheExaminerSeesTheFile) {
  std::size_t entries = 0;
  CheckPermit(WideFromAnsi(permit.Path().c_str()), [&](const PermitDocument& document) {
    entries = document.Entries().size();
    return Findings();
  });
  EXPECT_EQ(3u, entries);
}

TEST_F(PermitCheckTest, WithoutAnExaminerValidityIsAllThatIsKnown) {
  const DoctorChecks checks = CheckPermit(WideFromAnsi(permit.Path().c_str()), nullptr);
  ASSERT_EQ(3u, checks.size());
  ExpectCheck("permit-valid", DoctorStatus::Ok, "'" + permit.Path() + "' has 3 entries.", checks[0]);
  ExpectCheck("permit-sound", DoctorStatus::Skipped, "Nobody looked.", checks[1]);
  ExpectCheck("permit-safe", DoctorStatus::Skipped, "Nobody looked.", checks[2]);
}

TEST_F(PermitCheckTest, AnInvalidFileFailsAndMayStillBeUnsafe) {
  permit.Write("<?xml version=\"1.0\"?><!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\"><VantorPermissions/>");
  const DoctorChecks checks = Check({kError, kWritable});
  ASSERT_EQ(3u, checks.size());
  const std::string start =
      "'" + permit.Path() +
      "' is not valid, so every run is refused. XML Parsing Error in '";  // in the copy that was parsed
  EXPECT_EQ(DoctorStatus::Failed, checks[0].status);
  EXPECT_EQ(start, checks[0].detail.substr(0, start.size()));
  ExpectCheck("permit-sound", DoctorStatus::Skipped, "The permission file is not valid.", checks[1]);
  ExpectCheck("permit-safe", DoctorStatus::Failed, "Users may write the file.", checks[2]);
}

TEST_F(PermitCheckTest, AMissingFileFails) {
  const DoctorChecks checks =
      CheckPermit(WideFromAnsi((permit.ModuleFolder() + "\\none.xml").c_str()), [](const PermitDocument&) -> Findings {
        ADD_FAILURE() << "there is nothing to look at";
        return {};
      });
  ASSERT_EQ(3u, checks.size());
  ExpectCheck("permit-valid", DoctorStatus::Failed,
              "Without a permission file every run is refused. '" + permit.ModuleFolder() +
                  "\\none.xml' cannot be read: " + SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)),
              checks[0]);
  ExpectCheck("permit-sound", DoctorStatus::Skipped, "The permission file cannot be read.", checks[1]);
  ExpectCheck("permit-safe", DoctorStatus::Skipped, "The permission file cannot be read.", checks[2]);
}

}  // namespace
