#include <gtest/gtest.h>

#include "permissions/DestinationDocument.h"
#include "permissions/DestinationPermission.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "transfer/SourceURL.h"

namespace {

using Lines = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

struct FolderRow {
  const char* name;
  const char* entryElement;
  const char* entryText;
  FolderKind candidateKind;
  const wchar_t* candidateText;
  bool isPermitted;
};

class FolderQuestionRowTest : public testing::TestWithParam<FolderRow> {};

TEST_P(FolderQuestionRowTest, ThePathOfTheEntryIsAPrefixOfTheCandidates) {
  const FolderRow& row = GetParam();
  const CDestinationPermission permission(DestinationDocument({{row.entryElement, row.entryText}}).Get(), nullptr);
  HRESULT hr = E_UNEXPECTED;
  const CDestinationFolder candidate(row.candidateKind, row.candidateText, &hr);
  ASSERT_HRESULT(S_OK, hr);
  EXPECT_HRESULT(row.isPermitted ? S_OK : E_ACCESSDENIED, permission.IsFolderPermitted(&candidate));
}

const FolderRow kFolderRows[] = {
    {"TemporaryFolder", "Temp", "", FolderKind::Temp, L"", true},
    {"BelowTheTemporaryFolder", "Temp", "", FolderKind::Temp, L"Apps\\Sub", true},
    {"AboveTheEntry", "Temp", "Apps", FolderKind::Temp, L"", false},
    {"TheEntryItself", "Temp", "Apps", FolderKind::Temp, L"apps", true},
    {"NextToTheEntry", "Temp", "Apps", FolderKind::Temp, L"Tools", false},
    {"CaseIsIgnored", "Path", "C:\\Data", FolderKind::Path, L"C:\\DATA\\Sub", true},
    {"CaseOfTheCodePageIsIgnored", "Path", "C:\\caf\xe9", FolderKind::Path, L"C:\\CAF\x00c9\\Sub", true},
    {"NoBoundary", "Path", "C:\\Data", FolderKind::Path, L"C:\\Database", true},
    {"NoBoundaryWithATrailingSeparator", "Path", "C:\\Data\\", FolderKind::Path, L"C:\\Database", true},
    {"OtherFolder", "Path", "C:\\Data", FolderKind::Path, L"C:\\Other", false},
    {"OtherDrive", "Path", "C:\\Data", FolderKind::Path, L"D:\\Data", false},
    {"FolderAbove", "Path", "C:\\Data\\Sub", FolderKind::Path, L"C:\\Data", false},
    {"DriveRoot", "Path", "C:\\", FolderKind::Path, L"C:\\Windows", true},
    {"DotsAreText", "Path", "C:\\Data", FolderKind::Path, L"C:\\Data\\..\\Windows", true},
    {"ForwardSlashesAreNoBackslashes", "Path", "C:\\Data", FolderKind::Path, L"C:/Data", false},
    {"NetworkFolder", "Path", "\\\\server\\share", FolderKind::Path, L"\\\\SERVER\\Share\\Sub", true},
    {"OtherKindBelowTheEntry", "Personal", "", FolderKind::VantorUser, L"", true},
    {"OtherKindAboveTheEntry", "VantorUser", "", FolderKind::Personal, L"", false},
    {"SubfolderNamedLikeAKind", "Personal", "Vantor", FolderKind::VantorUser, L"Apps", true},
    {"OtherKindElsewhere", "Personal", "", FolderKind::Temp, L"", false},
    {"InternetCache", "InternetCache", "", FolderKind::InternetCache, L"", true},
    {"InternetCacheOfAnotherEntry", "Temp", "", FolderKind::InternetCache, L"", false},
    {"InternetCacheBelowTheLocalData", "LocalApplicationData", "", FolderKind::InternetCache, L"", true},
    {"Cookie", "Cookie", "", FolderKind::Cookie, L"", true},
    {"CookieOfAnotherEntry", "Temp", "", FolderKind::Cookie, L"", false},
    {"VantorDataBelowTheApplicationData", "ApplicationData", "ignored", FolderKind::VantorData, L"Apps", true},
    {"CommonDataIsNotTheUsers", "ApplicationData", "", FolderKind::CommonApplicationData, L"", false},
    {"CommonVantorData", "CommonVantorData", "Apps", FolderKind::CommonVantorData, L"Apps\\Sub", true},
    {"LocalVantorData", "LocalVantorData", "Apps", FolderKind::LocalVantorData, L"Tools", false},
    {"Documents", "Documents", "", FolderKind::Documents, L"Sub", true},
    {"DocumentsAreNotPersonal", "Documents", "", FolderKind::Personal, L"", false},
};

INSTANTIATE_TEST_SUITE_P(Rows, FolderQuestionRowTest, testing::ValuesIn(kFolderRows), [](const auto& row) {
  return std::string(row.param.name);
});

TEST(FolderQuestionTest, APathPermitsAnyKindBelowIt) {
  const std::string temp = TemporaryPath();
  const CDestinationPermission permission(DestinationDocument({{"Path", temp}}).Get(), nullptr);
  const CDestinationFolder candidate(FolderKind::Temp, L"Sub", nullptr);
  EXPECT_HRESULT(S_OK, permission.IsFolderPermitted(&candidate));
}

class DestinationQuestionTest : public testing::Test {
 protected:
  DestinationQuestionTest() : permission(DestinationDocument({{"Path", "C:\\100%s"}, {"Temp", ""}}).Get(), nullptr) {}

  const CDestinationPermission permission;
  const CDestinationFolder permitted{"C:\\100%S\\Sub", nullptr};
  const CDestinationFolder refused{"C:\\%n%s", nullptr};
  const std::string list = "\tPermitted destination folders:\r\n\t\t" + TemporaryPath() + "\r\n\t\tC:\\100%s\r\n";
};

TEST_F(DestinationQuestionTest, AFolderUnderAnyEntryIsPermitted) {
  LogCapture log(false);
  const CDestinationFolder temp(FolderKind::Temp, L"Sub", nullptr);
  EXPECT_HRESULT(S_OK, permission.IsFolderPermitted(&permitted));
  EXPECT_HRESULT(S_OK, permission.IsFolderPermitted(&temp));
  EXPECT_EQ("", log.Text());
}

TEST_F(DestinationQuestionTest, ACheckIsShownWhileDebugLoggingIsOn) {
  LogCapture log(true);
  EXPECT_HRESULT(S_OK, permission.IsFolderPermitted(&permitted));
  EXPECT_EQ("Checking Destination: C:\\100%S\\Sub\r\n", log.Text());
}

TEST_F(DestinationQuestionTest, ARefusalShowsTheWholeList) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsFolderPermitted(&refused));
  const std::string text = log.Text();
  EXPECT_EQ("\tDestination folder 'C:\\%n%s' doesn't have permission.\r\n" + list, text.substr(text.find("\r\n\t") + 2));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("ERROR", log.Entries()[0].level);
  EXPECT_HRESULT(E_ACCESSDENIED, log.Entries()[0].code);
}

TEST_F(DestinationQuestionTest, ARefusalWithDebugLoggingShowsTheCheckFirst) {
  LogCapture log(true);
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsFolderPermitted(&refused));
  const std::string text = log.Text();
  const std::string check = "Checking Destination: C:\\%n%s\r\n";
  EXPECT_EQ(check, text.substr(0, check.size()));
  const std::string rest = text.substr(check.size());
  EXPECT_EQ("\tDestination folder 'C:\\%n%s' doesn't have permission.\r\n" + list, rest.substr(rest.find("\r\n\t") + 2));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("DestinationPermission", log.Entries()[0].file);
}

TEST_F(DestinationQuestionTest, OtherKindsThanPersonalDoNotPermitPersonal) {
  const CDestinationPermission others(
      DestinationDocument({{"Temp", ""}, {"Documents", ""}, {"VantorUser", ""}, {"ApplicationData", ""}}).Get(), nullptr);
  const CDestinationFolder personal(FolderKind::Personal, L"", nullptr);
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, others.IsFolderPermitted(&personal));
  const std::string home = SpecialFolderPath(CSIDL_PERSONAL);
  EXPECT_EQ(Lines{"ERROR 0x80070005 Destination folder '" + home +
                  "' doesn't have permission.\r\n\tPermitted destination folders:" + "\r\n\t\t" +
                  SpecialFolderPath(CSIDL_COMMON_DOCUMENTS) + "\r\n\t\t" + home + "\\Vantor\r\n\t\t" + TemporaryPath() +
                  "\r\n\t\t" + SpecialFolderPath(CSIDL_APPDATA)},
            log.Messages());
}

TEST_F(DestinationQuestionTest, WithoutACandidateThereIsOnlyATrace) {
  LogCapture log(true);
  EXPECT_HRESULT(E_INVALIDARG, permission.IsFolderPermitted(nullptr));
  EXPECT_EQ(Lines(), log.Messages());
  EXPECT_EQ(Codes{E_INVALIDARG}, log.ErrorTraces());
  EXPECT_EQ("DestinationPermission", log.Entries()[0].file);
}

TEST_F(DestinationQuestionTest, WithoutAListThereIsOnlyATrace) {
  const CDestinationPermission empty(DestinationDocument({}).Get(), nullptr);
  LogCapture log(true);
  EXPECT_HRESULT(E_UNEXPECTED, empty.IsFolderPermitted(&permitted));
  EXPECT_HRESULT(E_UNEXPECTED, empty.IsFolderPermitted(nullptr));
  EXPECT_EQ(Lines(), log.Messages());
  EXPECT_EQ((Codes{E_UNEXPECTED, E_UNEXPECTED}), log.ErrorTraces());
}

TEST_F(DestinationQuestionTest, TracesAreNotWrittenWithoutDebugLogging) {
  LogCapture log(false);
  EXPECT_HRESULT(E_INVALIDARG, permission.IsFolderPermitted(nullptr));
  EXPECT_EQ("", log.Text());
}

TEST_F(DestinationQuestionTest, ACandidateWithoutAPathIsRefused) {
  const CDestinationFolder unresolved(static_cast<FolderKind>(14), nullptr);
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsFolderPermitted(&unresolved));
}

}  // namespace
