#include "engine/OpenCommand.h"

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shellapi.h>
#include <wininet.h>

#include <set>

#include "engine/EngineFixture.h"
#include "support/AllocationFailure.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;

// A call of ShellExecuteExA, with copies of its texts.
struct ShellStart {
  SHELLEXECUTEINFOA info = {};
  std::string verb;
  std::string file;
  std::string directory;
};

class OpenCommandTest : public testing::Test {
 protected:
  OpenCommandTest() : source(fixture.WriteSource("a.htm", "page")) {}

  void Read(const std::string& browser, const std::string& options = "") {
    ReadFrom(browser, source, fixture.PathElement() + options);
  }

  void ReadFrom(const std::string& browser, const std::string& url, const std::string& destination) {
    const std::string xml = OpenElement("browser='" + browser + "'", url, destination);
    command = std::make_unique<COpenCommand>(ParseElement(xml).Get(), nullptr);
  }

  // Runs the command; what it starts is recorded, and started by nobody.
  HRESULT Run(BSTR* navigateURL = nullptr) { return Run(fixture.permissions.get(), navigateURL); }

  HRESULT Run(const CPermissions* permissions, BSTR* navigateURL) {
    PATCH_IMPORT(shell, ShellExecuteExA, [this](auto, SHELLEXECUTEINFOA* info) {
      starts.push_back({*info, info->lpVerb, info->lpFile, info->lpDirectory});
      return TRUE;
    });
    return command->Execute(0, permissions, navigateURL);
  }

  std::wstring UrlOf(const std::string& name) const { return Wide("file://" + fixture.Destination(name)); }

  const CopyFixture fixture;
  const std::string source;
  std::unique_ptr<COpenCommand> command;
  std::vector<ShellStart> starts;
};

TEST_F(OpenCommandTest, TheShellOpensTheCopiedFile) {
  Read("false");
  const LogCapture log(false);
  EXPECT_HRESULT(S_OK, Run());
  EXPECT_EQ("page", ReadWholeFile(fixture.Destination("a.htm")));
  ASSERT_EQ(1u, starts.size());
  const SHELLEXECUTEINFOA& info = starts[0].info;
  EXPECT_EQ(sizeof(SHELLEXECUTEINFOA), info.cbSize);
  EXPECT_EQ(0x400u, info.fMask);
  EXPECT_EQ(nullptr, info.hwnd);
  EXPECT_EQ("open", starts[0].verb);
  EXPECT_EQ("a.htm", starts[0].file);
  EXPECT_EQ(nullptr, info.lpParameters);
  EXPECT_EQ(fixture.destination.Path(), starts[0].directory);
  EXPECT_EQ(1, info.nShow);
  EXPECT_EQ(nullptr, info.hInstApp);
  EXPECT_EQ(nullptr, info.lpIDList);
  EXPECT_EQ(nullptr, info.lpClass);
  EXPECT_EQ(nullptr, info.hkeyClass);
  EXPECT_EQ(0u, info.dwHotKey);
  EXPECT_EQ("", log.Text());
}

TEST_F(OpenCommandTest, WithoutABrowserTheNavigateURLStaysEmpty) {
  Read("false");
  ReceivedText navigateURL;
  EXPECT_HRESULT(S_OK, Run(navigateURL.Receive()));
  EXPECT_EQ(nullptr, navigateURL.Get());
  EXPECT_EQ(1u, starts.size());
}

TEST_F(OpenCommandTest, ABrowserGetsTheURLOfTheCopiedFile) {
  Read("true");
  ReceivedText navigateURL;
  EXPECT_HRESULT(S_OK, Run(navigateURL.Receive()));
  EXPECT_EQ(UrlOf("a.htm"), navigateURL.Text());
  EXPECT_EQ("page", ReadWholeFile(fixture.Destination("a.htm")));
  EXPECT_TRUE(starts.empty());
}

TEST_F(OpenCommandTest, TheURLKeepsItsBackslashes) {
  Read("true");
  ReceivedText navigateURL;
  ASSERT_HRESULT(S_OK, Run(navigateURL.Receive()));
  EXPECT_EQ(L"file://C:\\", navigateURL.Text().substr(0, 10));
  EXPECT_EQ(std::wstring::npos, navigateURL.Text().find(L'/', 7));
}

TEST_F(OpenCommandTest, ABrowserNeedsAPlaceForTheURL) {
  Read("true");
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, Run());
  EXPECT_EQ(Texts{"ERROR 0x80070057 Need navigate URL parameter if launched in a browser."}, log.Messages());
  EXPECT_EQ("OpenCommand", log.Entries().at(0).file);
  EXPECT_EQ("", NamesIn(fixture.destination.Path()));
  EXPECT_EQ(nullptr, command->GetSourceText());
}

TEST_F(OpenCommandTest, TheMissingPlaceIsReportedBeforeMissingPermissions) {
  Read("true");
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, Run(nullptr, nullptr));
  EXPECT_EQ(Texts{"ERROR 0x80070057 Need navigate URL parameter if launched in a browser."}, log.Messages());
}

TEST_F(OpenCommandTest, AFailedCopyOpensNothing) {
  for (const char* browser : {"false", "true"}) {
    ReadFrom(browser, fixture.Source("missing.htm"), fixture.PathElement());
    const LogCapture log(false);
    ReceivedText navigateURL;
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), Run(navigateURL.Receive()));
    EXPECT_EQ(
        (Texts{"ERROR 0x80070002 Opening '" + fixture.Source("missing.htm") + "' failed.",
               "ERROR 0x80070002 'Copy' command failed.", "ERROR 0x80070002 'Copy' portion of 'Open' command failed."}),
        log.Messages());
    EXPECT_EQ(nullptr, navigateURL.Get());
    EXPECT_TRUE(starts.empty());
  }
}

TEST_F(OpenCommandTest, ARefusedFileIsNotOpened) {
  fixture.WriteSource("a.bat", "x");
  ReadFrom("false", fixture.Source("a.bat"), fixture.PathElement());
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Run());
  EXPECT_EQ("ERROR 0x80070005 'Copy' portion of 'Open' command failed.", log.Messages().back());
  EXPECT_TRUE(starts.empty());
}

TEST_F(OpenCommandTest, WithoutPermissionsNothingIsOpened) {
  Read("false");
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, Run(nullptr, nullptr));
  EXPECT_EQ((Texts{"ERROR 0x80070057 'Copy' command missing 'Permissions' parameter.",
                   "ERROR 0x80070057 'Copy' portion of 'Open' command failed."}),
            log.Messages());
  EXPECT_TRUE(starts.empty());
}

TEST_F(OpenCommandTest, AFileThatWasLeftAloneIsOpenedAllTheSame) {
  fixture.WriteDestination("a.htm", "old");
  Read("false", "<IfFileExists><Skip/></IfFileExists>");
  EXPECT_HRESULT(S_FALSE, Run());
  ASSERT_EQ(1u, starts.size());
  EXPECT_EQ("a.htm", starts[0].file);
  EXPECT_EQ(fixture.destination.Path(), starts[0].directory);
  EXPECT_EQ("old", ReadWholeFile(fixture.Destination("a.htm")));
}

TEST_F(OpenCommandTest, ABrowserGetsTheURLOfAFileThatWasLeftAlone) {
  fixture.WriteDestination("a.htm", "old");
  Read("true", "<IfFileExists><Skip/></IfFileExists>");
  ReceivedText navigateURL;
  EXPECT_HRESULT(S_FALSE, Run(navigateURL.Receive()));
  EXPECT_EQ(UrlOf("a.htm"), navigateURL.Text());
}

TEST_F(OpenCommandTest, AnExistingFileThatCancelsTheCopyIsNotOpened) {
  fixture.WriteDestination("a.htm", "old");
  Read("false", "<IfFileExists><Cancel/></IfFileExists>");
  const LogCapture log(false);
  EXPECT_HRESULT(static_cast<HRESULT>(0x800704C7), Run());
  EXPECT_EQ("ERROR 0x800704c7 'Copy' portion of 'Open' command failed.", log.Messages().back());
  EXPECT_TRUE(starts.empty());
}

TEST_F(OpenCommandTest, TheNewFileIsOpenedWhenTheOldOneWasRenamed) {
  fixture.WriteDestination("a.htm", "old");
  Read("false", "<IfFileExists><Rename/></IfFileExists>");
  EXPECT_HRESULT(S_OK, Run());
  ASSERT_EQ(1u, starts.size());
  EXPECT_EQ("a.htm", starts[0].file);
  EXPECT_EQ("a.000 a.htm", NamesIn(fixture.destination.Path()));
}

TEST_F(OpenCommandTest, TheFileNameElementDoesNotNameTheFileThatIsOpened) {
  ReadFrom("false", source, "<FileName>other.exe</FileName>" + fixture.PathElement());
  EXPECT_HRESULT(S_OK, Run());
  ASSERT_EQ(1u, starts.size());
  EXPECT_EQ("a.htm", starts[0].file);
}

TEST_F(OpenCommandTest, AFileOfTheInternetCacheIsOpenedThere) {
  ReadFrom("false", source, "<InternetCache/>");
  EXPECT_HRESULT(S_OK, Run());
  ASSERT_EQ(1u, starts.size());
  EXPECT_EQ("page", ReadWholeFile(starts[0].directory + "\\" + starts[0].file));
  DeleteUrlCacheEntryA(source.c_str());
}

TEST_F(OpenCommandTest, EveryRunOpensTheFile) {
  Read("false");
  EXPECT_HRESULT(S_OK, Run());
  EXPECT_HRESULT(S_OK, Run());
  ASSERT_EQ(2u, starts.size());
  EXPECT_EQ(starts[0].file, starts[1].file);
  EXPECT_EQ(starts[0].directory, starts[1].directory);
}

TEST_F(OpenCommandTest, ACookieIsSetAndNotOpened) {
  const CDestinationFolder cookies(FolderKind::Cookie, nullptr);
  PermitFile permit;
  permit.URL(fixture.source.Path() + "\\").Extension("htm").Folder("Path", cookies.GetPath());
  const auto permissions = permit.Read();
  for (const char* browser : {"false", "true"}) {
    ReadFrom(browser, source, "<Cookie/>");
    int count = 0;
    PATCH_IMPORT(setCookies, InternetSetCookieA, [&](auto, auto...) {
      ++count;
      return TRUE;
    });
    const LogCapture log(false);
    ReceivedText navigateURL;
    EXPECT_HRESULT(S_OK, Run(permissions.get(), navigateURL.Receive()));
    EXPECT_EQ(1, count);
    EXPECT_EQ(Texts{"WARNING 0x80004005 Cannot OPEN \"Cookie\" folder destination file.  Only COPY allowed to this folder."},
              log.Messages());
    EXPECT_EQ(nullptr, navigateURL.Get());
    EXPECT_TRUE(starts.empty());
  }
}

struct StartErrorRow {
  const char* name;
  DWORD error;
  HRESULT logged;
};

class OpenCommandStartErrorTest : public OpenCommandTest, public testing::WithParamInterface<StartErrorRow> {};

TEST_P(OpenCommandStartErrorTest, IsLoggedAndAnsweredAsAPlainFailure) {
  Read("false");
  const LogCapture log(false);
  PATCH_IMPORT(shell, ShellExecuteExA, FailWith(FALSE, GetParam().error));
  EXPECT_HRESULT(E_FAIL, command->Execute(0, fixture.permissions.get(), nullptr));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("ERROR", log.Entries()[0].level);
  EXPECT_EQ("Failed to start 'a.htm'.", log.Entries()[0].message);
  EXPECT_HRESULT(GetParam().logged, log.Entries()[0].code);
  EXPECT_EQ("page", ReadWholeFile(fixture.Destination("a.htm")));
}

INSTANTIATE_TEST_SUITE_P(
    , OpenCommandStartErrorTest,
    testing::Values(StartErrorRow{"NoAssociation", ERROR_NO_ASSOCIATION, static_cast<HRESULT>(0x80070483)},
                    StartErrorRow{"AccessDenied", ERROR_ACCESS_DENIED, E_ACCESSDENIED},
                    StartErrorRow{"Cancelled", ERROR_CANCELLED, static_cast<HRESULT>(0x800704C7)},
                    StartErrorRow{"AResultCode", 0x80042222, static_cast<HRESULT>(0x80042222)},
                    StartErrorRow{"NoNumber", 0, E_FAIL}),
    [](const auto& row) { return row.param.name; });

TEST_F(OpenCommandTest, AnyStringOfTheURLThatCannotBeMadeIsOutOfMemory) {
  Read("true");
  int call = 0;
  for (HRESULT hr = E_OUTOFMEMORY; hr == E_OUTOFMEMORY && call < 100;) {
    const LogCapture log;
    ReceivedText navigateURL;
    ++call;
    {
      PATCH_IMPORT(strings, SysAllocStringLen, FailCall(call, BSTR{nullptr}, ERROR_OUTOFMEMORY));
      hr = Run(navigateURL.Receive());
    }
    if (FAILED(hr)) {
      EXPECT_HRESULT(E_OUTOFMEMORY, hr);
      EXPECT_EQ(nullptr, navigateURL.Get());
      EXPECT_EQ(std::vector<HRESULT>{E_OUTOFMEMORY}, log.ErrorTraces());
    } else {
      EXPECT_EQ(UrlOf("a.htm"), navigateURL.Text());
    }
  }
  EXPECT_LT(5, call);
  EXPECT_GT(100, call);
}

TEST_F(OpenCommandTest, EveryAllocationThatFailsIsAFailureOrAnOpenedFile) {
  const LogCapture log(false);
  HRESULT hr = E_UNEXPECTED;
  int shellCalls = 0;
  PATCH_IMPORT(shell, ShellExecuteExA, [&](auto, SHELLEXECUTEINFOA* info) {
    shellCalls += info->lpFile && info->lpDirectory ? 1 : 0;
    return TRUE;
  });
  const auto prepare = [&] {
    Read("false");
    shellCalls = 0;
  };
  const auto run = [&] { hr = command->Execute(0, fixture.permissions.get(), nullptr); };
  std::set<HRESULT> results;
  const int failures = ForEachFailedAllocation(prepare, run, [&] {
    results.insert(hr);
    EXPECT_EQ(hr == S_OK ? 1 : 0, shellCalls);
  });
  EXPECT_LT(3, failures);
  EXPECT_EQ((std::set<HRESULT>{S_OK, E_OUTOFMEMORY}), results);
  EXPECT_HRESULT(S_OK, hr);
}

}  // namespace
