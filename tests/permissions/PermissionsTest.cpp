#include "permissions/Permissions.h"

#include <gtest/gtest.h>

#include "permissions/DestinationDocument.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/PermitFile.h"

namespace {

using Lines = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

// Permissions that were read from a file: a web folder, two extensions, a path and the Internet cache.
class PermissionsTest : public testing::Test {
 protected:
  PermissionsTest() {
    permit.URL("http://host/apps/").Extension("exe").Extension("dll").Folder("Path", "C:\\Apps").Folder("InternetCache");
    permissions = permit.Read();
  }

  HRESULT AskSource(const wchar_t* url) const {
    const CSourceURL candidate(url, SourceRole::Command, nullptr);
    return permissions->IsSourceURLPermitted(&candidate);
  }

  HRESULT AskFolder(const char* path) const {
    const CDestinationFolder candidate(path, nullptr);
    return permissions->IsDestinationPermitted(&candidate);
  }

  PermitFile permit;
  std::unique_ptr<CPermissions> permissions;
};

// A refusal has one message, and the trace of this class behind it: with the code for a manifest, without one for the
// others.
void ExpectRefusal(const LogCapture& log, const std::string& message, HRESULT traced = S_OK) {
  EXPECT_EQ(Lines{"ERROR 0x80070005 " + message}, log.Messages());
  const auto entries = log.Entries();
  ASSERT_EQ(2u, entries.size());
  EXPECT_EQ("ERROR", entries[1].level);
  EXPECT_EQ("Permissions", entries[1].file);
  EXPECT_HRESULT(traced, entries[1].code);
}

// An answer that could not be given has one message by this class, and nothing else.
void ExpectNoAnswer(const LogCapture& log, const std::string& message) {
  EXPECT_EQ(Lines{message}, log.Messages());
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("Permissions", log.Entries()[0].file);
}

TEST_F(PermissionsTest, PermittedThingsLeaveNoLine) {
  LogCapture log(false);
  EXPECT_HRESULT(S_OK, permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml"));
  EXPECT_HRESULT(S_OK, AskSource(L"http://host/apps/tool.exe"));
  EXPECT_HRESULT(S_OK, permissions->IsExtensionPermitted("EXE"));
  EXPECT_HRESULT(S_OK, AskFolder("C:\\Apps\\Sub"));
  EXPECT_EQ("", log.Text());
}

TEST_F(PermissionsTest, AManifestsExtensionIsNotChecked) {
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsExtensionPermitted("xml"));
  EXPECT_HRESULT(S_OK, permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml"));
}

TEST_F(PermissionsTest, AManifestElsewhereIsRefused) {
  LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsManifestURLPermitted(L"http://host/other/setup.xml"));
  ExpectRefusal(
      log, "URL 'http://host/other/setup.xml' is not permitted.\r\n\tPermitted source URLs:\r\n\t\thttp://host/apps/",
      E_ACCESSDENIED);
}

TEST_F(PermissionsTest, AnEmptyManifestURLIsRefused) {
  LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsManifestURLPermitted(L""));
  ExpectRefusal(log, "URL '' is not permitted.\r\n\tPermitted source URLs:\r\n\t\thttp://host/apps/", E_ACCESSDENIED);
}

TEST_F(PermissionsTest, ABareManifestNameLiesBesideTheModule) {
  LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsManifestURLPermitted(L"setup.xml"));
  ExpectRefusal(log,
                "URL '" + permit.ModuleFolder() +
                    "\\setup.xml' is not permitted.\r\n\tPermitted source URLs:\r\n\t\thttp://host/apps/",
                E_ACCESSDENIED);
}

TEST_F(PermissionsTest, AManifestURLOfAnyLengthIsAnswered) {
  EXPECT_HRESULT(S_OK, permissions->IsManifestURLPermitted((L"http://host/apps/" + std::wstring(1000000, L'/')).c_str()));
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsManifestURLPermitted(std::wstring(1000000, L':').c_str()));
}

TEST_F(PermissionsTest, ASourceElsewhereIsRefused) {
  LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, AskSource(L"http://other/apps/tool.exe"));
  ExpectRefusal(
      log, "URL 'http://other/apps/tool.exe' is not permitted.\r\n\tPermitted source URLs:\r\n\t\thttp://host/apps/");
}

TEST_F(PermissionsTest, AnotherExtensionIsRefused) {
  LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsExtensionPermitted("vbs"));
  ExpectRefusal(log, "Extension 'vbs' is not permitted.\r\n\tPermitted source extensions:\r\n\t\texe\r\n\t\tdll");
}

TEST_F(PermissionsTest, AnotherFolderIsRefused) {
  LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, AskFolder("C:\\Windows"));
  ExpectRefusal(
      log, "Destination folder 'C:\\Windows' doesn't have permission.\r\n\tPermitted destination folders:\r\n\t\t" +
               SpecialFolderPath(CSIDL_INTERNET_CACHE) + "\r\n\t\tC:\\Apps");
}

TEST_F(PermissionsTest, ACookieIsNeverPermitted) {
  const CDestinationFolder cookies(FolderKind::Cookie, nullptr);
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsDestinationPermitted(&cookies));
}

TEST_F(PermissionsTest, ARefusalHasNoTraceWithoutDebugLogging) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsExtensionPermitted("vbs"));
  EXPECT_EQ(1u, log.Entries().size());
}

TEST_F(PermissionsTest, AMissingManifestURLGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, permissions->IsManifestURLPermitted(nullptr));
  ExpectNoAnswer(log, "ERROR 0x80070057 Missing manifest URL parameter.");
}

TEST_F(PermissionsTest, AMissingSourceGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, permissions->IsSourceURLPermitted(nullptr));
  ExpectNoAnswer(log, "ERROR 0x80070057 Missing source URL parameter.");
}

// Administrators know this line by the words of the URL question.
TEST_F(PermissionsTest, AMissingExtensionGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, permissions->IsExtensionPermitted(nullptr));
  ExpectNoAnswer(log, "ERROR 0x80070057 Missing source URL parameter.");
}

TEST_F(PermissionsTest, AMissingFolderGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, permissions->IsDestinationPermitted(nullptr));
  ExpectNoAnswer(log, "ERROR 0x80070057 Missing destination folder parameter.");
}

TEST_F(PermissionsTest, AManifestURLWithoutMemoryGetsNoAnswer) {
  LogCapture log;
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailCall(1, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    hr = permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml");
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  ExpectNoAnswer(log, "ERROR 0x8007000e Failed to create a 'SourceURL' class instance from 'http://host/apps/setup.xml'.");
}

TEST_F(PermissionsTest, AManifestURLThatCannotBeConvertedGetsNoAnswer) {
  LogCapture log;
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailCall(2, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    hr = permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml");
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Lines{"ERROR 0x8007000e http://host/apps/setup.xml"}, log.Messages());
  EXPECT_EQ(Codes{E_OUTOFMEMORY}, log.ErrorTraces());
  EXPECT_EQ("Permissions", log.Entries().back().file);
}

TEST_F(PermissionsTest, AnExtensionWithoutMemoryGetsNoAnswer) {
  LogCapture log;
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailCall(1, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    hr = permissions->IsExtensionPermitted("exe");
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Lines{"ERROR 0x8007000e Failed to create source extension"}, log.Messages());
  EXPECT_EQ(Codes{S_OK}, log.ErrorTraces());
}

TEST_F(PermissionsTest, FilesAreNotLookedInto) {
  LogCapture log;
  EXPECT_HRESULT(S_OK, permissions->CheckSignature("C:\\missing.xml"));
  EXPECT_HRESULT(S_OK, permissions->CheckWrittenFile("C:\\missing.exe"));
  EXPECT_EQ("", log.Text());
}

// Permissions that could not be read have neither half.
class NoPermissionsTest : public testing::Test {
 protected:
  const CPermissions permissions{0, nullptr, nullptr};
  const CSourceURL url{L"http://host/apps/tool.exe", SourceRole::Command, nullptr};
  const CDestinationFolder folder{"C:\\Apps", nullptr};
};

TEST_F(NoPermissionsTest, AManifestGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsManifestURLPermitted(L"http://host/apps/setup.xml"));
  ExpectNoAnswer(log, "ERROR 0x8000ffff Missing source permissions.");
}

TEST_F(NoPermissionsTest, ASourceGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsSourceURLPermitted(&url));
  ExpectNoAnswer(log, "ERROR 0x8000ffff Missing source permissions.");
}

TEST_F(NoPermissionsTest, AnExtensionGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsExtensionPermitted("exe"));
  ExpectNoAnswer(log, "ERROR 0x8000ffff Missing source permissions.");
}

TEST_F(NoPermissionsTest, AFolderGetsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsDestinationPermitted(&folder));
  ExpectNoAnswer(log, "ERROR 0x8000ffff Missing destination permissions.");
}

TEST_F(NoPermissionsTest, MissingPermissionsAreNoticedBeforeMissingArguments) {
  LogCapture log(false);
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsManifestURLPermitted(nullptr));
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsSourceURLPermitted(nullptr));
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsExtensionPermitted(nullptr));
  EXPECT_HRESULT(E_UNEXPECTED, permissions.IsDestinationPermitted(nullptr));
  EXPECT_EQ((Lines{"ERROR 0x8000ffff Missing source permissions.", "ERROR 0x8000ffff Missing source permissions.",
                   "ERROR 0x8000ffff Missing source permissions.", "ERROR 0x8000ffff Missing destination permissions."}),
            log.Messages());
}

}  // namespace
