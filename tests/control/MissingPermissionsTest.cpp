// A control without a permission file that it could read: it stays in the page and refuses every run.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"
#include "host/HostDoubles.h"

namespace {

constexpr char kNoExecuter[] = "ERROR 0x8000ffff ActiveX control missing executer.";
constexpr char kNoCommandExecuter[] = "ERROR 0x8000ffff ActiveX control missing command executer.";
const std::string kNotFound = "ERROR 0x80070002 ";

class MissingPermissionsTest : public ModuleTest {
 protected:
  void TearDown() override {
    control.Reset();
    ModuleTest::TearDown();
  }

  // The messages behind those of the creation.
  Lines LaterMessages() const {
    const Lines all = Messages("permit");
    return Lines(all.begin() + static_cast<std::ptrdiff_t>(creationMessages.size()), all.end());
  }

  BString manifest = Automation("http://127.0.0.1/control-run.xml");
  Microsoft::WRL::ComPtr<IAXNorvik> control = module.CreateControl();
  Lines creationMessages = Messages("permit");
};

TEST_F(MissingPermissionsTest, TheControlIsMadeAndTheLogTellsWhy) {
  ASSERT_TRUE(control);
  ASSERT_EQ(6u, creationMessages.size());
  const std::string path = installed.PermitPath();
  EXPECT_EQ("INFO Permit File: " + path, creationMessages[0]);
  EXPECT_EQ(kNotFound + "Opening '" + path + "' failed.", creationMessages[1]);
  EXPECT_EQ(0u, creationMessages[2].find(kNotFound + "Failed to copy '" + path + "' to '"));
  EXPECT_EQ(kNotFound + "Failed to read permissions.", creationMessages[3]);
  EXPECT_EQ(kNotFound + "An error occured while reading permissions from 'permit.xml'.  Destroying permissions.",
            creationMessages[4]);
  EXPECT_EQ(kNotFound + "An error occured while the ActiveX control was creating executer.  Destroying executer.",
            creationMessages[5]);
  EXPECT_EQ("axNorvik", LastEntry("permit").file);
}

TEST_F(MissingPermissionsTest, NothingIsWrittenIntoTheLogOfTheTimeBefore) {
  EXPECT_FALSE(FileExistsAt(LogCapture::PathOf("ActiveX")));
}

TEST_F(MissingPermissionsTest, EveryExecuteIsUnexpected) {
  EXPECT_HRESULT(E_UNEXPECTED, control->Execute(manifest.Get()));
  EXPECT_HRESULT(E_UNEXPECTED, control->Execute(manifest.Get()));
  EXPECT_EQ((Lines{kNoExecuter, kNoExecuter}), LaterMessages());
  EXPECT_FALSE(FileExistsAt(LogCapture::PathOf(kRunLog)));
}

TEST_F(MissingPermissionsTest, EveryExecuteNavigateIsUnexpected) {
  BString url;
  EXPECT_HRESULT(E_UNEXPECTED, control->ExecuteNavigate(manifest.Get(), url.Receive()));
  EXPECT_EQ("(null)", Narrow(url));
  EXPECT_EQ(Lines{kNoExecuter}, LaterMessages());
}

TEST_F(MissingPermissionsTest, AMissingManifestUrlIsToldFirst) {
  EXPECT_HRESULT(E_INVALIDARG, control->Execute(nullptr));
  EXPECT_EQ(Lines{"ERROR 0x80070057 ActiveX 'Execute' or 'ExecuteNavigate' method missing manifest URL argument."},
            LaterMessages());
}

TEST_F(MissingPermissionsTest, PageParametersAreNotEvenRead) {
  Microsoft::WRL::ComPtr<IPersistPropertyBag> page;
  ASSERT_HRESULT(S_OK, control.As(&page));
  FakeBag bag;
  EXPECT_HRESULT(E_UNEXPECTED, page->Load(&bag, nullptr));
  EXPECT_HRESULT(E_UNEXPECTED, page->Load(nullptr, nullptr));
  EXPECT_EQ(Lines{}, bag.asked);
  EXPECT_EQ((Lines{kNoCommandExecuter, kNoCommandExecuter}), LaterMessages());
}

TEST_F(MissingPermissionsTest, PropertiesAndSiteWorkAsEver) {
  EXPECT_HRESULT(S_OK, control->put_ManifestURL(manifest.Get()));
  BString value;
  EXPECT_HRESULT(S_OK, control->get_ManifestURL(value.Receive()));
  EXPECT_EQ("http://127.0.0.1/control-run.xml", Narrow(value));
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_FALSE));
  FakeBrowser browser;
  FakeSite site(&browser);
  Microsoft::WRL::ComPtr<IObjectWithSite> sited;
  ASSERT_HRESULT(S_OK, control.As(&sited));
  EXPECT_HRESULT(S_OK, sited->SetSite(site.Unknown()));
  EXPECT_HRESULT(S_OK, sited->SetSite(nullptr));
  EXPECT_EQ(Lines{}, LaterMessages());
}

TEST_F(MissingPermissionsTest, APermissionFileServesTheControlsMadeAfterIt) {
  installed.WritePermit("http://127.0.0.1:1/", "C:\\Apps\\");
  EXPECT_HRESULT(E_UNEXPECTED, control->Execute(manifest.Get()));
  EXPECT_HRESULT(E_ACCESSDENIED, module.CreateControl()->Execute(manifest.Get()));
  EXPECT_HRESULT(E_UNEXPECTED, control->Execute(manifest.Get()));
}

TEST_F(MissingPermissionsTest, AnInvalidPermissionFileIsAsGoodAsNone) {
  WriteWholeFile(
      installed.PermitPath(),
      "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">\r\n<VantorPermissions/>\r\n");
  const auto refused = module.CreateControl();
  EXPECT_EQ("ERROR 0x80004005 An error occured while the ActiveX control was creating executer.  Destroying executer.",
            LastMessage("permit"));
  EXPECT_HRESULT(E_UNEXPECTED, refused->Execute(manifest.Get()));
}

}  // namespace
