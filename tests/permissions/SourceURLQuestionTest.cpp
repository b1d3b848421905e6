#include <gtest/gtest.h>

#include "common/ModulePath.h"
#include "permissions/SourceDocument.h"
#include "permissions/SourcePermission.h"
#include "support/HResult.h"
#include "support/LogCapture.h"

namespace {

using Lines = std::vector<std::string>;

HRESULT Ask(const CSourcePermission& permission, const std::wstring& url) {
  const CSourceURL candidate(url.c_str(), SourceRole::Command, nullptr);
  return permission.IsURLPermitted(&candidate);
}

struct URLRow {
  const char* name;
  const char* entry;
  const wchar_t* candidate;
  bool isPermitted;
};

// Bare names lie in C:\Prog\Mod.
class SourceURLQuestionRowTest : public testing::TestWithParam<URLRow> {
 protected:
  SourceURLQuestionRowTest() { SetModulePath("C:\\Prog\\Mod\\norvik.dll"); }
  ~SourceURLQuestionRowTest() override { SetModulePath(pathBefore.c_str()); }

 private:
  const std::string pathBefore = GetModulePath();
};

TEST_P(SourceURLQuestionRowTest, TheFolderOfTheEntryIsAPrefixOfTheCandidates) {
  const URLRow& row = GetParam();
  const CSourcePermission permission(SourceDocument({row.entry}, {"exe"}).Get(), nullptr);
  EXPECT_HRESULT(row.isPermitted ? S_OK : E_ACCESSDENIED, Ask(permission, row.candidate));
}

const URLRow kWebRows[] = {
    {"SameFolder", "http://host/apps/", L"http://host/apps/tool.exe", true},
    {"FolderBelow", "http://host/apps/", L"http://host/apps/sub/tool.exe", true},
    {"TheFolderItself", "http://host/apps/", L"http://host/apps/", true},
    {"OtherFolder", "http://host/apps/", L"http://host/applications/tool.exe", false},
    {"NoBoundaryBehindTheFolder", "http://host/app/", L"http://host/apps/tool.exe", true},
    {"NoBoundaryBehindTheHost", "http://host/", L"http://host.elsewhere.example/tool.exe", true},
    {"FolderAbove", "http://host/apps/sub/", L"http://host/apps/tool.exe", false},
    {"CandidateNamesTheFolderAsAFile", "http://host/apps/", L"http://host/apps", false},
    {"WithoutTrailingSeparator", "http://host/apps", L"http://host/other/tool.exe", true},
    {"WithoutTrailingSeparatorOtherHost", "http://host/apps", L"http://other/apps/tool.exe", false},
    {"HostOnly", "http://host", L"http://other/tool.exe", true},
    {"HostOnlySchemeOnly", "http://host", L"http:", true},
    {"HostOnlyOtherScheme", "http://host", L"https://host/tool.exe", false},
    {"HostOnlyLocal", "http://host", L"C:\\host\\tool.exe", false},
    {"SecureHostOnly", "https://host", L"https://other/tool.exe", true},
    {"SecureHostOnlyOtherScheme", "https://host", L"http://host/tool.exe", false},
    {"SchemeOnly", "http:", L"http://host/apps/tool.exe", true},
    {"SchemeInUpperCase", "http://host/apps/", L"HTTP://host/apps/tool.exe", true},
    {"EntrysSchemeInUpperCase", "HTTP://host/apps/", L"http://host/apps/tool.exe", true},
    {"HostInUpperCase", "http://host/apps/", L"http://HOST/apps/tool.exe", false},
    {"FolderInUpperCase", "http://host/apps/", L"http://host/Apps/tool.exe", false},
    {"SecureCandidate", "http://host/apps/", L"https://host/apps/tool.exe", false},
    {"SecureEntry", "https://host/apps/", L"http://host/apps/tool.exe", false},
    {"BothSecure", "https://host/apps/", L"HTTPS://host/apps/tool.exe", true},
    {"SeparatorInTheQuery", "http://host/apps/", L"http://host/apps/get.asp?f=a/b.exe", true},
    {"PermittedURLInTheQuery", "http://host/apps/", L"http://other/get.asp?u=http://host/apps/tool.exe", false},
    {"QueryOfTheEntry", "http://host/apps/get.asp?f=a", L"http://host/apps/tool.exe", true},
    {"DotsAreText", "http://host/apps/", L"http://host/apps/../secret/tool.exe", true},
    {"EscapesAreText", "http://host/apps/", L"http://host/%61pps/tool.exe", false},
    {"BackslashIsNoSlash", "http://host/apps/", L"http://host\\apps\\tool.exe", false},
    {"OneTrailingSeparatorIsRemoved", "http://host/apps//", L"http://host/apps/tool.exe", false},
    {"OneTrailingSeparatorOnly", "http://host/apps//", L"http://host/apps//tool.exe", true},
    {"PortWithoutSeparator", "http://host:80", L"http://host:8080/apps/tool.exe", true},
    {"PortWithSeparator", "http://host:80/", L"http://host:8080/apps/tool.exe", true},
    {"OtherPort", "http://host:80/", L"http://host:443/apps/tool.exe", false},
    {"Wildcard", "http://*/", L"http://host/tool.exe", false},
    {"UserInformation", "http://host/", L"http://host@elsewhere.example/tool.exe", true},
};

const URLRow kLocalRows[] = {
    {"CaseIsIgnored", "C:\\Apps\\", L"c:\\apps\\tool.exe", true},
    {"CaseOfTheCodePageIsIgnored", "C:\\caf\xe9\\", L"C:\\CAF\x00c9\\tool.exe", true},
    {"FolderBelow", "C:\\Apps\\", L"C:\\Apps\\Sub\\tool.exe", true},
    {"NoBoundary", "C:\\Apps\\", L"C:\\AppsOfOthers\\tool.exe", true},
    {"OtherFolder", "C:\\Apps\\", L"C:\\Other\\tool.exe", false},
    {"WithoutTrailingSeparator", "C:\\Apps", L"C:\\Other\\tool.exe", true},
    {"OtherDrive", "C:\\Apps", L"D:\\Apps\\tool.exe", false},
    {"WebCandidate", "C:\\Apps\\", L"http://host/C:/Apps/tool.exe", false},
    {"LocalCandidateOfAWebEntry", "http://host/apps/", L"file://http://host/apps/tool.exe", false},
    {"FileURLOfTheEntry", "file://C:\\Apps\\", L"c:\\apps\\tool.exe", true},
    {"FileURLOfTheCandidate", "C:\\Apps\\", L"FILE://c:\\apps\\tool.exe", true},
    {"ForwardSlashesAreNoBackslashes", "C:\\Apps\\", L"C:/Apps/tool.exe", false},
    {"ForwardSlashes", "C:/Apps/", L"c:/APPS/tool.exe", true},
    {"DotsAreText", "C:\\Apps\\", L"C:\\Apps\\..\\Windows\\tool.exe", true},
    {"NetworkFolder", "\\\\server\\share\\", L"\\\\SERVER\\Share\\tool.exe", true},
    {"OtherNetworkFolder", "\\\\server\\share\\", L"\\\\server\\other\\tool.exe", false},
    {"BareNamesOfBoth", "any.exe", L"tool.exe", true},
    {"BareNameOfTheEntry", "any.exe", L"c:\\prog\\mod\\tool.exe", true},
    {"BareNameOutsideOfTheEntry", "C:\\Apps\\", L"tool.exe", false},
    {"EmptyEntryPermitsAllThatIsLocal", "", L"C:\\Apps\\tool.exe", true},
    {"EmptyEntryPermitsNothingFromTheWeb", "", L"http://host/apps/tool.exe", false},
    {"EmptyCandidate", "C:\\Apps\\", L"", false},
};

std::string RowName(const testing::TestParamInfo<URLRow>& row) {
  return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(Web, SourceURLQuestionRowTest, testing::ValuesIn(kWebRows), RowName);
INSTANTIATE_TEST_SUITE_P(Local, SourceURLQuestionRowTest, testing::ValuesIn(kLocalRows), RowName);

// Two web folders, a local one that is a bare path, and another that is a file URL.
class SourceURLQuestionTest : public testing::Test {
 protected:
  SourceURLQuestionTest()
      : permission(
            SourceDocument({"HTTP://host/apps/", "https://host/50%25/?a&b", "C:\\Apps\\", "file://D:\\Tools\\"}, {"exe"})
                .Get(),
            nullptr) {}

  const CSourcePermission permission;
};

constexpr char kList[] =
    "\tPermitted source URLs:\r\n"
    "\t\thttp://host/apps/\r\n"
    "\t\thttps://host/50%25/?a&b\r\n"
    "\t\tfile://C:\\Apps\\\r\n"
    "\t\tfile://D:\\Tools\\\r\n";

// The log from the message line on: what stands before it are the level, the time and the system's words.
std::string Message(const LogCapture& log) {
  const std::string text = log.Text();
  const std::size_t start = text.find("\r\n\t");
  return start == std::string::npos ? text : text.substr(start + 2);
}

TEST_F(SourceURLQuestionTest, AnyEntryPermits) {
  LogCapture log;
  EXPECT_HRESULT(S_OK, Ask(permission, L"http://host/apps/tool.exe"));
  EXPECT_HRESULT(S_OK, Ask(permission, L"https://host/50%25/tool.exe"));
  EXPECT_HRESULT(S_OK, Ask(permission, L"c:\\apps\\tool.exe"));
  EXPECT_HRESULT(S_OK, Ask(permission, L"d:\\tools\\tool.exe"));
  EXPECT_EQ("", log.Text());
}

TEST_F(SourceURLQuestionTest, ARefusalShowsTheWholeList) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Ask(permission, L"http://host/other/tool.exe?q=1"));
  EXPECT_EQ(std::string("\tURL 'http://host/other/tool.exe?q=1' is not permitted.\r\n") + kList, Message(log));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("ERROR", log.Entries()[0].level);
  EXPECT_HRESULT(E_ACCESSDENIED, log.Entries()[0].code);
}

TEST_F(SourceURLQuestionTest, ARefusalShowsTheSameWithDebugLogging) {
  LogCapture log(true);
  EXPECT_HRESULT(E_ACCESSDENIED, Ask(permission, L"http://host/other/tool.exe"));
  EXPECT_EQ(std::string("\tURL 'http://host/other/tool.exe' is not permitted.\r\n") + kList, Message(log));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("SourcePermission", log.Entries()[0].file);
}

TEST_F(SourceURLQuestionTest, ALocalURLIsShownAsItsPath) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Ask(permission, L"file://E:\\tool.exe"));
  EXPECT_EQ(std::string("\tURL 'E:\\tool.exe' is not permitted.\r\n") + kList, Message(log));
}

TEST_F(SourceURLQuestionTest, AURLIsNoFormat) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Ask(permission, L"http://other/%s%n%d/100%.exe"));
  EXPECT_EQ(std::string("\tURL 'http://other/%s%n%d/100%.exe' is not permitted.\r\n") + kList, Message(log));
}

TEST_F(SourceURLQuestionTest, AMessageIsCutButTheListIsWhole) {
  LogCapture log(false);
  const std::string url = "http://other/" + std::string(5000, 'x') + "/tool.exe";
  EXPECT_HRESULT(E_ACCESSDENIED, Ask(permission, Wide(url)));
  EXPECT_EQ("\t" + ("URL '" + url).substr(0, 1023) + "\r\n" + kList, Message(log));
}

TEST_F(SourceURLQuestionTest, WithoutACandidateThereIsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, permission.IsURLPermitted(nullptr));
  EXPECT_EQ(Lines{"ERROR 0x80070057 Missing source URL parameter."}, log.Messages());
  EXPECT_EQ(1u, log.Entries().size());
}

TEST_F(SourceURLQuestionTest, WithoutAListThereIsNoAnswer) {
  const CSourcePermission empty(SourceDocument({}, {"exe"}).Get(), nullptr);
  LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, Ask(empty, L"http://host/apps/tool.exe"));
  EXPECT_HRESULT(E_UNEXPECTED, empty.IsURLPermitted(nullptr));
  EXPECT_EQ(Lines(2, "ERROR 0x8000ffff Missing permitted URL list."), log.Messages());
  EXPECT_EQ(2u, log.Entries().size());
  EXPECT_HRESULT(S_OK, empty.IsExtensionPermitted("exe"));
}

}  // namespace
