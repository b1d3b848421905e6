// Controls and the module come and go, and leave nothing behind.

#include <gtest/gtest.h>

#include "common/Handles.h"
#include "host/ControlFixture.h"
#include "host/HostDoubles.h"

namespace {

using LifetimeTest = ControlTest;

// Whether nobody else has the file open.
bool IsFree(const std::string& path) {
  return static_cast<bool>(FileHandle(
      CreateFileA(path.c_str(), GENERIC_READ | DELETE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)));
}

TEST_F(LifetimeTest, TheModuleIsNeededAsLongAsAControlLives) {
  EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
  const auto sited = As<IObjectWithSite>();
  control.Reset();
  EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
}

TEST_F(LifetimeTest, TheModuleGoesWithItsLastUser) {
  control.Reset();
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
  EXPECT_TRUE(module.Free());
}

TEST_F(LifetimeTest, AModuleThatIsLoadedAgainStartsAnew) {
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_FALSE));
  control.Reset();
  ASSERT_TRUE(module.Free());
  LoadedModule again(installed.Path());
  control = again.CreateControl();
  VARIANT_BOOL debug = VARIANT_FALSE;
  EXPECT_HRESULT(S_OK, control->get_LogDebug(&debug));
  EXPECT_EQ(1, debug);
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  control.Reset();
  EXPECT_HRESULT(S_OK, again.CanUnloadNow());
}

TEST_F(LifetimeTest, TheFirstControlOutlivesTheSecond) {
  auto second = module.CreateControl();
  EXPECT_HRESULT(S_OK, second->Execute(Serve(Copy("a.txt")).Get()));
  second.Reset();
  EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
  EXPECT_HRESULT(S_OK, Execute(Copy("b.txt")));
  EXPECT_EQ("a.txt b.txt", NamesIn(destination.Path()));
}

TEST_F(LifetimeTest, TheSecondControlOutlivesTheFirst) {
  const auto second = module.CreateControl();
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  control.Reset();
  EXPECT_HRESULT(S_OK, second->Execute(Serve(Copy("b.txt")).Get()));
  EXPECT_EQ("a.txt b.txt", NamesIn(destination.Path()));
}

TEST_F(LifetimeTest, ControlsHavePropertiesOfTheirOwnAndShareDebugLogging) {
  const auto second = module.CreateControl();
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(Automation("the first's").Get()));
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_FALSE));
  BString url;
  EXPECT_HRESULT(S_OK, second->get_ManifestURL(url.Receive()));
  EXPECT_EQ("", Narrow(url));
  VARIANT_BOOL debug = VARIANT_TRUE;
  EXPECT_HRESULT(S_OK, second->get_LogDebug(&debug));
  EXPECT_EQ(VARIANT_FALSE, debug);
}

TEST_F(LifetimeTest, PermissionsAreReadOnceForEachControl) {
  installed.WritePermit("http://127.0.0.1:1/", "C:\\Apps\\");
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  const auto newer = module.CreateControl();
  EXPECT_HRESULT(E_ACCESSDENIED, newer->Execute(Serve("").Get()));
  EXPECT_HRESULT(S_OK, Execute(Copy("b.txt")));
  EXPECT_HRESULT(E_ACCESSDENIED, newer->Execute(Serve("").Get()));
  EXPECT_EQ("a.txt b.txt", NamesIn(destination.Path()));
}

TEST_F(LifetimeTest, TheSiteIsGivenBackWithTheControl) {
  FakeBrowser browser;
  FakeSite site(&browser);
  EXPECT_HRESULT(S_OK, As<IObjectWithSite>()->SetSite(site.Unknown()));
  EXPECT_EQ(1, site.References());
  control.Reset();
  EXPECT_EQ(0, site.References());
}

// A site that takes and gives back a reference to the control while the control goes away, as a page does that is closed.
class ClingingSite : public FakeSite {
 public:
  using FakeSite::FakeSite;
  ULONG WINAPI Release() override {
    // Where the count begins anew, the reference given back would destroy the control again, in the middle of its end.
    if (clinging && (countSeen = clinging->AddRef()) > 1)
      clinging->Release();
    return FakeSite::Release();
  }
  IUnknown* clinging = nullptr;
  ULONG countSeen = 0;
};

TEST_F(LifetimeTest, AReferenceTakenWhileTheControlGoesAwayDoesNotDestroyItTwice) {
  FakeBrowser browser;
  ClingingSite site(&browser);
  EXPECT_HRESULT(S_OK, As<IObjectWithSite>()->SetSite(site.Unknown()));
  site.clinging = control.Get();
  control.Reset();
  EXPECT_EQ(2u, site.countSeen);
  EXPECT_EQ(0, site.References());
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(LifetimeTest, BetweenTwoRunsNoFileIsHeldOpen) {
  EXPECT_HRESULT(S_FALSE, Execute(CopyRefused() + Copy("a.txt")));
  EXPECT_TRUE(IsFree(destination.File("a.txt")));
  EXPECT_TRUE(IsFree(LogCapture::PathOf(kRunLog)));
  EXPECT_TRUE(IsFree(LogCapture::PathOf("permit")));
  EXPECT_TRUE(IsFree(installed.PermitPath()));
}

TEST_F(LifetimeTest, AnUnloadedModuleCanBeDeleted) {
  UINT count = 0;
  EXPECT_HRESULT(S_OK, control->GetTypeInfoCount(&count));
  Microsoft::WRL::ComPtr<ITypeInfo> information;
  EXPECT_HRESULT(S_OK, control->GetTypeInfo(0, LOCALE_NEUTRAL, &information));
  EXPECT_HRESULT(S_OK, Execute(Copy("a.txt")));
  information.Reset();
  control.Reset();
  EXPECT_TRUE(module.Free());
  EXPECT_TRUE(DeleteFileA(installed.Path().c_str())) << GetLastError();
  EXPECT_FALSE(FileExistsAt(installed.Path()));
}

}  // namespace
