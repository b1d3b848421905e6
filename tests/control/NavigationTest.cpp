// How the control sends the browser that hosts it somewhere.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"
#include "host/HostDoubles.h"

namespace {

constexpr HRESULT kStepFailure = static_cast<HRESULT>(0x80041234);

class NavigationTest : public ControlTest {
 protected:
  void TearDown() override {
    control.Reset();
    EXPECT_EQ(0, site.References());
    ControlTest::TearDown();
  }

  HRESULT SetSite(IUnknown* newSite) { return As<IObjectWithSite>()->SetSite(newSite); }

  Lines NavigationFailure(HRESULT code) {
    char text[16];
    wsprintfA(text, "0x%08x", code);
    return {std::string("ERROR ") + text + " ActiveX control failed to navigate browser to URL '" + FileUrl("page.htm") +
            "'."};
  }

  FakeBrowser browser;
  FakeSite site{&browser};
};

TEST_F(NavigationTest, ExecuteSendsTheBrowserToTheFile) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
  EXPECT_EQ(Lines{}, Messages(kRunLog));
}

TEST_F(NavigationTest, TheOptionalArgumentsAreEmptyVariants) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ(Lines{"0 0 0 0"}, browser.argumentTypes);
}

TEST_F(NavigationTest, ExecuteNavigateLeavesTheBrowserWhereItIs) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  BString url;
  EXPECT_HRESULT(S_OK, control->ExecuteNavigate(Serve(OpenInBrowser("page.htm")).Get(), url.Receive()));
  EXPECT_EQ(FileUrl("page.htm"), Narrow(url));
  EXPECT_EQ(Lines{}, browser.urls);
}

TEST_F(NavigationTest, ARunWithoutABrowsersFileLeavesTheBrowserWhereItIs) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  EXPECT_EQ(Lines{}, browser.urls);
}

TEST_F(NavigationTest, OnceTheBrowserWasSentAFailedCommandIsNotPassedOn) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, Execute(CopyRefused() + OpenInBrowser("page.htm")));
  EXPECT_EQ(Lines{FileUrl("page.htm")}, browser.urls);
  EXPECT_EQ("ERROR At least one command failed during the 'Execute' or 'ExecuteNavigate' method.", LastMessage(kRunLog));
}

TEST_F(NavigationTest, ASuccessOfTheBrowserIsPassedOnAsItIs) {
  browser.Answer("Navigate", S_FALSE);
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_FALSE, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ(Lines{}, Messages(kRunLog));
}

TEST_F(NavigationTest, EveryRunSendsTheBrowserAgain) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, Execute(OpenInBrowser("page.htm")));
  EXPECT_HRESULT(S_OK, Execute(OpenInBrowser("other.htm")));
  EXPECT_EQ((Lines{FileUrl("page.htm"), FileUrl("other.htm")}), browser.urls);
}

TEST_F(NavigationTest, WithoutASiteThereIsNoBrowser) {
  EXPECT_HRESULT(E_FAIL, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ("page.htm", NamesIn(destination.Path()));
  EXPECT_EQ(NavigationFailure(E_FAIL), Messages(kRunLog));
}

TEST_F(NavigationTest, ASiteThatWasTakenAwayIsNotAskedAgain) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, SetSite(nullptr));
  EXPECT_EQ(0, site.References());
  EXPECT_HRESULT(E_FAIL, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ(Lines{}, browser.urls);
}

TEST_F(NavigationTest, ANewSiteTakesThePlaceOfTheOldOne) {
  FakeBrowser otherBrowser;
  FakeSite other(&otherBrowser);
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, SetSite(other.Unknown()));
  EXPECT_EQ(0, site.References());
  EXPECT_HRESULT(S_OK, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ(Lines{}, browser.urls);
  EXPECT_EQ(Lines{FileUrl("page.htm")}, otherBrowser.urls);
  EXPECT_HRESULT(S_OK, SetSite(nullptr));
}

TEST_F(NavigationTest, TheSameSiteMayBeSetAgain) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_EQ(1, site.References());
}

TEST_F(NavigationTest, TheSiteIsHandedOutAsTheInterfaceThatIsAskedFor) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  Microsoft::WRL::ComPtr<IServiceProvider> provider;
  EXPECT_HRESULT(
      S_OK, As<IObjectWithSite>()->GetSite(IID_IServiceProvider, reinterpret_cast<void**>(provider.GetAddressOf())));
  EXPECT_EQ(static_cast<IServiceProvider*>(&site), provider.Get());
}

TEST_F(NavigationTest, TheSitesOwnRefusalIsPassedOn) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  void* object = this;
  EXPECT_HRESULT(E_NOINTERFACE, As<IObjectWithSite>()->GetSite(IID_IOleObject, &object));
  EXPECT_EQ(nullptr, object);
}

TEST_F(NavigationTest, WithoutASiteNoneIsHandedOut) {
  void* object = this;
  EXPECT_HRESULT(E_FAIL, As<IObjectWithSite>()->GetSite(IID_IUnknown, &object));
  EXPECT_EQ(nullptr, object);
  EXPECT_HRESULT(E_POINTER, As<IObjectWithSite>()->GetSite(IID_IUnknown, nullptr));
}

struct FailingStep {
  const char* name;
  void (*fail)(FakeSite& site, FakeBrowser& browser);
  HRESULT code;
};

class FailingStepTest : public NavigationTest, public testing::WithParamInterface<FailingStep> {
 protected:
  void SetUp() override { GetParam().fail(site, browser); }
};

TEST_P(FailingStepTest, IsLoggedWithTheUrlAndReturned) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(GetParam().code, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ(NavigationFailure(GetParam().code), Messages(kRunLog));
  EXPECT_EQ(Codes{GetParam().code}, ErrorTraces(kRunLog));
}

TEST_P(FailingStepTest, LeavesOnlyTheReferenceToTheSite) {
  EXPECT_HRESULT(S_OK, SetSite(site.Unknown()));
  EXPECT_HRESULT(GetParam().code, Execute(OpenInBrowser("page.htm")));
  EXPECT_EQ(1, site.References());
}

const FailingStep kFailingSteps[] = {
    {"NoClientSite", [](FakeSite& site, FakeBrowser&) { site.clientSiteCode = E_NOINTERFACE; }, E_NOINTERFACE},
    {"TheClientSiteFails", [](FakeSite& site, FakeBrowser&) { site.clientSiteCode = kStepFailure; }, kStepFailure},
    {"NoServices", [](FakeSite& site, FakeBrowser&) { site.providerCode = E_NOINTERFACE; }, E_NOINTERFACE},
    {"TheServicesFail", [](FakeSite& site, FakeBrowser&) { site.providerCode = kStepFailure; }, kStepFailure},
    {"NoBrowserService", [](FakeSite& site, FakeBrowser&) { site.serviceCode = E_NOINTERFACE; }, E_NOINTERFACE},
    {"TheBrowserServiceFails", [](FakeSite& site, FakeBrowser&) { site.serviceCode = kStepFailure; }, kStepFailure},
    {"TheBrowserServiceIsNothing", [](FakeSite& site, FakeBrowser&) { site.isServiceNull = true; }, E_NOINTERFACE},
    // Nothing, called a success of another kind.
    {"TheClientSiteIsNothing", [](FakeSite& site, FakeBrowser&) { site.clientSiteCode = S_FALSE; }, E_NOINTERFACE},
    {"TheServicesAreNothing", [](FakeSite& site, FakeBrowser&) { site.providerCode = S_FALSE; }, E_NOINTERFACE},
    {"TheBrowserServiceIsFalse", [](FakeSite& site, FakeBrowser&) { site.serviceCode = S_FALSE; }, E_NOINTERFACE},
    {"TheBrowserIsNothing", [](FakeSite&, FakeBrowser& browser) { browser.queryCode = S_FALSE; }, E_NOINTERFACE},
    {"NotABrowser", [](FakeSite&, FakeBrowser& browser) { browser.queryCode = E_NOINTERFACE; }, E_NOINTERFACE},
    {"TheBrowserFailsToShowItself", [](FakeSite&, FakeBrowser& browser) { browser.queryCode = kStepFailure; }, kStepFailure},
    {"TheBrowserRefusesToGo", [](FakeSite&, FakeBrowser& browser) { browser.Answer("Navigate", kStepFailure); },
     kStepFailure},
};
INSTANTIATE_TEST_SUITE_P(Rows, FailingStepTest, testing::ValuesIn(kFailingSteps), [](const auto& row) {
  return row.param.name;
});

}  // namespace
