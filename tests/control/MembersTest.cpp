// The members of IAXNorvik, called through its table of functions.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"

namespace {

constexpr char kMissingURL[] =
    "ERROR 0x80070057 ActiveX 'Execute' or 'ExecuteNavigate' method missing manifest URL argument.";
constexpr char kCommandFailed[] = "ERROR At least one command failed during the 'Execute' or 'ExecuteNavigate' method.";

class MembersTest : public ControlTest {
 protected:
  HRESULT ExecuteNavigate(const std::string& commands) {
    return control->ExecuteNavigate(Serve(commands).Get(), url.Receive());
  }

  VARIANT_BOOL LogDebug() {
    VARIANT_BOOL value = 0x55;
    EXPECT_HRESULT(S_OK, control->get_LogDebug(&value));
    return value;
  }

  std::string ManifestURL() {
    BString value;
    EXPECT_HRESULT(S_OK, control->get_ManifestURL(value.Receive()));
    return Narrow(value);
  }

  BString url;
};

TEST_F(MembersTest, ExecuteCarriesOutTheManifest) {
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt") + Copy("b.txt")));
  EXPECT_EQ("a.txt b.txt", NamesIn(destination.Path()));
  EXPECT_EQ("b.txt", ReadWholeFile(destination.File("b.txt")));
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt", "GET /b.txt"}), server.Asked());
}

TEST_F(MembersTest, AManifestWithoutCommandsIsASuccess) {
  EXPECT_HRESULT(S_OK, Execute(""));
  EXPECT_EQ("", NamesIn(destination.Path()));
}

TEST_F(MembersTest, ExecuteNavigateCarriesOutTheManifest) {
  EXPECT_HRESULT(S_OK, ExecuteNavigate(Copy("a.txt")));
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
  EXPECT_EQ("(null)", Narrow(url));
}

TEST_F(MembersTest, ExecuteNavigateHandsOutTheUrlOfABrowsersFile) {
  EXPECT_HRESULT(S_OK, ExecuteNavigate(OpenInBrowser("page.htm")));
  EXPECT_EQ(FileUrl("page.htm"), Narrow(url));
  EXPECT_EQ("page.htm", ReadWholeFile(destination.File("page.htm")));
}

TEST_F(MembersTest, ExecuteNavigateHandsOutTheUrlAfterAFailedCommandToo) {
  EXPECT_HRESULT(S_FALSE, ExecuteNavigate(CopyRefused() + OpenInBrowser("page.htm")));
  EXPECT_EQ(FileUrl("page.htm"), Narrow(url));
}

TEST_F(MembersTest, ABrowsersFileNeedsAPlaceForItsUrl) {
  EXPECT_HRESULT(S_FALSE, control->ExecuteNavigate(Serve(OpenInBrowser("page.htm")).Get(), nullptr));
  EXPECT_EQ("", NamesIn(destination.Path()));
  EXPECT_EQ(
      (Lines{"ERROR 0x80070057 Need navigate URL parameter if launched in a browser.", kCommandFailed}), Messages(kRunLog));
}

TEST_F(MembersTest, AFailedCommandIsLoggedAsAnErrorOfTheRun) {
  EXPECT_HRESULT(S_FALSE, ExecuteNavigate(CopyRefused() + Copy("b.txt")));
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
  const LogEntry last = LastEntry(kRunLog);
  EXPECT_EQ(kCommandFailed, LogCapture::MessagesOf({last}).at(0));
  EXPECT_EQ("axNorvik", last.file);
}

TEST_F(MembersTest, ExecutePassesOnThatACommandFailed) {
  EXPECT_HRESULT(S_FALSE, Execute(CopyRefused() + Copy("b.txt")));
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
  EXPECT_EQ(kCommandFailed, LastMessage(kRunLog));
}

TEST_F(MembersTest, AManifestThatIsNotPermittedIsNeverAskedFor) {
  const std::string refused = "http://127.0.0.1/control-run.xml";
  EXPECT_HRESULT(E_ACCESSDENIED, control->Execute(Automation(refused).Get()));
  EXPECT_EQ((Lines{"ERROR 0x80070005 URL '" + refused + "' is not permitted.",
                   "ERROR 0x80070005 Manifest URL '" + refused + "' is not permitted.",
                   "ERROR 0x80070005 The 'Execute' or 'ExecuteNavigate' method failed."}),
            Heads(kRunLog));
  EXPECT_EQ(Lines{}, server.Asked());
}

TEST_F(MembersTest, ExecuteAddsATraceToTheFailureThatItPassesOn) {
  const BString refused = Automation("http://127.0.0.1/control-run.xml");
  EXPECT_HRESULT(E_ACCESSDENIED, control->ExecuteNavigate(refused.Get(), url.Receive()));
  const std::size_t traces = ErrorTraces(kRunLog).size();
  EXPECT_EQ("(null)", Narrow(url));
  EXPECT_HRESULT(E_ACCESSDENIED, control->Execute(refused.Get()));
  EXPECT_EQ(traces + 1, ErrorTraces(kRunLog).size());
  const LogEntry last = LastEntry(kRunLog);
  EXPECT_EQ("axNorvik", last.file);
  EXPECT_EQ("", last.message);
  EXPECT_HRESULT(E_ACCESSDENIED, last.code);
}

TEST_F(MembersTest, ExecuteNeedsAManifestUrl) {
  EXPECT_HRESULT(E_INVALIDARG, control->Execute(nullptr));
  EXPECT_HRESULT(E_INVALIDARG, control->Execute(Automation("").Get()));
  EXPECT_EQ(kMissingURL, Messages("permit").at(1));
  EXPECT_EQ(kMissingURL, Messages("permit").at(2));
  EXPECT_EQ(3u, Messages("permit").size());
}

TEST_F(MembersTest, ExecuteNavigateNeedsAManifestUrl) {
  EXPECT_HRESULT(E_INVALIDARG, control->ExecuteNavigate(nullptr, url.Receive()));
  EXPECT_EQ("(null)", Narrow(url));
  EXPECT_HRESULT(E_INVALIDARG, control->ExecuteNavigate(Automation("").Get(), url.Receive()));
  EXPECT_EQ("(null)", Narrow(url));
  EXPECT_EQ(kMissingURL, LastMessage("permit"));
  EXPECT_EQ("axNorvik", LastEntry("permit").file);
}

TEST_F(MembersTest, AMissingManifestUrlIsLoggedWhereTheRunBeforeItWas) {
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  EXPECT_EQ(Lines{}, Messages(kRunLog));
  EXPECT_HRESULT(E_INVALIDARG, control->Execute(Automation("").Get()));
  EXPECT_EQ(Lines{kMissingURL}, Messages(kRunLog));
}

TEST_F(MembersTest, BeforeTheFirstRunTheLogIsThatOfThePermissionFile) {
  EXPECT_EQ(Lines{"INFO Permit File: " + installed.PermitPath()}, Heads("permit"));
  EXPECT_FALSE(FileExistsAt(LogCapture::PathOf("ActiveX")));
}

TEST_F(MembersTest, TheManifestUrlIsAnEmptyTextAtFirst) {
  EXPECT_EQ("", ManifestURL());
}

TEST_F(MembersTest, TheManifestUrlIsKeptAsItIsGiven) {
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Automation("any text").Get()));
  EXPECT_EQ("any text", ManifestURL());
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Automation("another").Get()));
  EXPECT_EQ("another", ManifestURL());
}

TEST_F(MembersTest, NoManifestUrlIsAnEmptyOne) {
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Automation("any text").Get()));
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(nullptr));
  EXPECT_EQ("", ManifestURL());
}

TEST_F(MembersTest, SettingTheManifestUrlRunsNothing) {
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Serve(Copy("a.txt")).Get()));
  EXPECT_EQ(Lines{}, server.Asked());
  EXPECT_FALSE(FileExistsAt(LogCapture::PathOf(kRunLog)));
}

TEST_F(MembersTest, ARunLeavesTheManifestUrlAlone) {
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Automation("kept").Get()));
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  EXPECT_EQ("kept", ManifestURL());
}

TEST_F(MembersTest, NoPlaceForAPropertyIsRefused) {
  EXPECT_HRESULT(E_POINTER, control->get_ManifestURL(nullptr));
  EXPECT_HRESULT(E_POINTER, control->get_LogDebug(nullptr));
}

TEST_F(MembersTest, DebugLoggingIsOnWithItsFirstValue) {
  EXPECT_EQ(1, LogDebug());
}

TEST_F(MembersTest, DebugLoggingIsAnsweredAsItWasSet) {
  EXPECT_HRESULT(S_OK, control->SetEnableLogDebug(VARIANT_TRUE));
  EXPECT_EQ(VARIANT_TRUE, LogDebug());
  EXPECT_HRESULT(S_OK, control->SetEnableLogDebug(VARIANT_FALSE));
  EXPECT_EQ(VARIANT_FALSE, LogDebug());
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_TRUE));
  EXPECT_EQ(VARIANT_TRUE, LogDebug());
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_FALSE));
  EXPECT_EQ(VARIANT_FALSE, LogDebug());
}

TEST_F(MembersTest, AnyValueOfDebugLoggingIsKept) {
  EXPECT_HRESULT(S_OK, control->put_LogDebug(2));
  EXPECT_EQ(2, LogDebug());
  EXPECT_HRESULT(S_OK, control->SetEnableLogDebug(static_cast<VARIANT_BOOL>(0x8000)));
  EXPECT_EQ(static_cast<VARIANT_BOOL>(0x8000), LogDebug());
}

TEST_F(MembersTest, APageThatNeverSetsDebugLoggingGetsTraces) {
  EXPECT_HRESULT(S_FALSE, Execute(CopyRefused()));
  EXPECT_NE(Codes{}, ErrorTraces(kRunLog));
  for (const LogEntry& entry : Entries(kRunLog))
    EXPECT_NE(0, entry.line);
}

TEST_F(MembersTest, WithoutDebugLoggingThereAreMessagesOnly) {
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_FALSE));
  EXPECT_HRESULT(S_FALSE, Execute(CopyRefused()));
  EXPECT_EQ(Codes{}, ErrorTraces(kRunLog));
  EXPECT_EQ(kCommandFailed, LastMessage(kRunLog));
  for (const LogEntry& entry : Entries(kRunLog))
    EXPECT_EQ(0, entry.line);
}

}  // namespace
