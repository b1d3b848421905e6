#include "permissions/Permissions.h"

#include <gtest/gtest.h>

#include "support/HResult.h"
#include "support/LogCapture.h"
#include "support/PermitFile.h"

namespace {

TEST(PermissionsTest, ReadsTheFileBesideTheModule) {
  PermitFile permit;
  permit.URL("http://host/apps/").Extension("exe").Folder("InternetCache").Folder("Temp").Folder("Path", "C:\\Apps");
  LogCapture log(true);
  const auto permissions = permit.Read();
  EXPECT_HRESULT(S_OK, permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml"));
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsManifestURLPermitted(L"http://host/other/setup.xml"));
}

}  // namespace
