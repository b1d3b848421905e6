// The manifest that a page names in its parameters: it runs when they are loaded, and the browser goes where the run says as
// soon as the control has a site.

#include <gtest/gtest.h>

#include <functional>

#include "host/ControlFixture.h"
#include "host/HostDoubles.h"

namespace {

constexpr char kStartFailed[] = "ERROR At least one command failed executing <PARAM> manifest failed on ActiveX startup.";

class PageParametersTest : public ControlTest {
 protected:
  HRESULT Load() { return As<IPersistPropertyBag>()->Load(&bag, nullptr); }

  HRESULT LoadManifest(const std::string& commands) {
    bag.properties[L"ManifestURL"] = Variant::Text(Narrow(Serve(commands)));
    return Load();
  }

  HRESULT SetSite(IUnknown* newSite) { return As<IObjectWithSite>()->SetSite(newSite); }

  FakeBag bag;
  FakeBrowser browser;
  FakeSite site{&browser};
};

TEST_F(PageParametersTest, TheManifestRunsWhenTheParametersAreLoaded) {
  EXPECT_HRESULT(S_OK, LoadManifest(Copy("a.txt")));
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
  EXPECT_EQ(Lines{}, Messages(kRunLog));
}

TEST_F(PageParametersTest, WithoutAManifestNothingRuns) {
  EXPECT_HRESULT(S_OK, Load());
  bag.properties[L"ManifestURL"] = Variant::Text("");
  EXPECT_HRESULT(S_OK, Load());
  EXPECT_EQ(Lines{}, server.Asked());
}

TEST_F(PageParametersTest, AManifestSetByScriptRunsWhenParametersWithoutOneAreLoaded) {
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Serve(Copy("a.txt")).Get()));
  EXPECT_HRESULT(S_OK, Load());
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
}

TEST_F(PageParametersTest, AFailedCommandIsLoggedAsAnErrorOfTheStart) {
  EXPECT_HRESULT(S_FALSE, LoadManifest(CopyRefused() + Copy("b.txt")));
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
  EXPECT_EQ(kStartFailed, LastMessage(kRunLog));
  EXPECT_EQ("axNorvik", LastEntry(kRunLog).file);
}

TEST_F(PageParametersTest, ARunThatFailsIsLoggedAndItsCodeReturned) {
  bag.properties[L"ManifestURL"] = Variant::Text("http://127.0.0.1/control-run.xml");
  EXPECT_HRESULT(E_ACCESSDENIED, Load());
  EXPECT_EQ((Lines{"ERROR 0x80070005 URL 'http://127.0.0.1/control-run.xml' is not permitted.",
                   "ERROR 0x80070005 Manifest URL 'http://127.0.0.1/control-run.xml' is not permitted.",
                   "ERROR 0x80070005 Executing <PARAM> manifest failed on ActiveX startup."}),
            Heads(kRunLog));
}

TEST_F(PageParametersTest, TheBrowserGoesToTheFileWhenTheControlGetsItsSite) {
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_EQ("page.htm", NamesIn(destination.Path()));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
}

TEST_F(PageParametersTest, TheBrowserGoesToTheFileAfterAFailedCommandToo) {
  EXPECT_HRESULT(S_FALSE, LoadManifest(CopyRefused() + OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
}

TEST_F(PageParametersTest, ALaterSiteFindsNothingLeft) {
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, SetSite(nullptr));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
}

// A browser that gives the control its site again while it navigates.
class ReturningBrowser : public FakeBrowser {
 public:
  HRESULT WINAPI Navigate(BSTR url, VARIANT* flags, VARIANT* targetFrame, VARIANT* postData, VARIANT* headers) override {
    const HRESULT hr = FakeBrowser::Navigate(url, flags, targetFrame, postData, headers);
    if (urls.size() < 3)
      comeBack();
    return hr;
  }
  std::function<void()> comeBack;
};

TEST_F(PageParametersTest, ABrowserThatComesBackWhileItNavigatesIsSentOnce) {
  ReturningBrowser returning;
  FakeSite returningSite(&returning);
  int returns = 0;
  returning.comeBack = [&] {
    ++returns;
    EXPECT_HRESULT(S_OK, SetSite(returningSite.Unknown()));
  };
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, SetSite(returningSite.Unknown()));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, returning.urls);
  EXPECT_EQ(1, returns);
  EXPECT_HRESULT(S_OK, SetSite(nullptr));
}

TEST_F(PageParametersTest, ASiteThatWasThereBeforeTheLoadIsNotUsed) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_EQ(Lines{}, browser.urls);
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
}

TEST_F(PageParametersTest, AFailedNavigationIsLoggedAndTheSiteIsTaken) {
  browser.Answer("Navigate", E_ACCESSDENIED);
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{"ERROR 0x80070005 ActiveX control failed to navigate browser to URL '" + FileUrl("page.htm") + "'."},
            Messages(kRunLog));
  EXPECT_EQ(Codes{E_ACCESSDENIED}, ErrorTraces(kRunLog));
  EXPECT_EQ(1, site.References());
}

TEST_F(PageParametersTest, WhatFailedOnceIsNotTriedAgain) {
  browser.Answer("Navigate", E_ACCESSDENIED);
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  browser.Answer("Navigate", S_OK);
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(1u, browser.urls.size());
}

TEST_F(PageParametersTest, TakingTheSiteAwayDropsWhatIsPending) {
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, SetSite(nullptr));
  EXPECT_EQ(Lines{"ERROR 0x80004005 ActiveX control failed to navigate browser to URL '" + FileUrl("page.htm") + "'."},
            Messages(kRunLog));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{}, browser.urls);
}

TEST_F(PageParametersTest, ALaterRunByScriptLeavesThePendingFileAlone) {
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
}

TEST_F(PageParametersTest, ALaterLoadWithoutAFileToShowLeavesThePendingOne) {
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, LoadManifest(Copy("a.txt")));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
}

TEST_F(PageParametersTest, ALaterLoadWithAFileToShowTakesThePlaceOfThePendingOne) {
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("other.htm")));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(Lines{FileUrl("other.htm")}, browser.urls);
}

TEST_F(PageParametersTest, AControlMayGoAwayWithSomethingPending) {
  EXPECT_HRESULT(S_OK, LoadManifest(OpenInBrowser("page.htm")));
  control.Reset();
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(PageParametersTest, DebugLoggingIsSwitchedOffBeforeTheManifestRuns) {
  bag.properties[L"LogDebug"] = Variant::Text("false");
  EXPECT_HRESULT(S_FALSE, LoadManifest(CopyRefused()));
  EXPECT_EQ(kStartFailed, LastMessage(kRunLog));
  EXPECT_EQ(Codes{}, ErrorTraces(kRunLog));
  for (const LogEntry& entry : Entries(kRunLog))
    EXPECT_EQ(0, entry.line);
}

TEST_F(PageParametersTest, DebugLoggingIsSwitchedOnBeforeTheManifestRuns) {
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_FALSE));
  bag.properties[L"LogDebug"] = Variant::Text("true");
  EXPECT_HRESULT(S_FALSE, LoadManifest(CopyRefused()));
  EXPECT_NE(Codes{}, ErrorTraces(kRunLog));
  EXPECT_NE(0, Entries(kRunLog).at(0).line);
}

}  // namespace
