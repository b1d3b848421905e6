#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include "permissions/Permissions.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/InternetCache.h"
#include "support/LogCapture.h"
#include "support/PermitFile.h"

using Lines = std::vector<std::string>;

constexpr char kDeclaration[] = "<?xml version=\"1.0\"?>";
constexpr char kDocumentType[] = "<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">";
constexpr char kBody[] =
    "<VantorPermissions version=\"1.0\"><Source><URL>http://host/apps/</URL><Extension>exe</Extension></Source>"
    "<Destination><Temp/></Destination></VantorPermissions>";

// Reads a permission file, and knows the local copy that the Internet cache chose for it.
class PermitFileReading : public testing::Test {
 protected:
  HRESULT Read(const std::string& bytes) {
    permit.Write(bytes);
    return ReadAgain();
  }

  HRESULT ReadAgain() {
    HRESULT hr = E_UNEXPECTED;
    PATCH_IMPORT(create, CreateUrlCacheEntryA,
                 [this](auto original, const char* url, DWORD bytes, const char* extension, char* file, DWORD reserved) {
      const BOOL isCreated = original(url, bytes, extension, file, reserved);
      copy = isCreated ? file : "";
      return isCreated;
    });
    permissions = std::make_unique<CPermissions>(0, L"permit.xml", &hr);
    return hr;
  }

  bool IsHostPermitted() const { return permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml") == S_OK; }

  // The cache made a file, and it is gone.
  void ExpectNoCopy() const {
    EXPECT_NE("", copy);
    EXPECT_FALSE(FileExistsAt(copy));
    EXPECT_EQ("", CachedFile(permit.Path()));
  }

  // Neither half is there.
  void ExpectNoPermissions() const {
    LogCapture log(false);
    EXPECT_HRESULT(E_UNEXPECTED, permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml"));
    EXPECT_HRESULT(E_UNEXPECTED, permissions->IsExtensionPermitted("exe"));
    const CDestinationFolder folder(FolderKind::Temp, nullptr);
    EXPECT_HRESULT(E_UNEXPECTED, permissions->IsDestinationPermitted(&folder));
    const std::string noSource = "ERROR 0x8000ffff Missing source permissions.";
    EXPECT_EQ((Lines{noSource, noSource, "ERROR 0x8000ffff Missing destination permissions."}), log.Messages());
  }

  // The lines that tell, one level after the other, that the file was of no use.
  std::string NotCopied(const std::string& code) const {
    return "ERROR " + code + " Failed to copy '" + permit.Path() + "' to '" + copy + "'.";
  }
  std::string NotLoaded(const std::string& code) const {
    return "ERROR " + code + " Failed to read XML document '" + copy + "'.";
  }
  std::string NotParsed(const std::string& code) const {
    return "ERROR " + code + " Failed to parse XML document '" + copy + "'.";
  }
  static std::string NotRead(const std::string& code) { return "ERROR " + code + " Failed to read permissions."; }

  PermitFile permit;
  std::unique_ptr<CPermissions> permissions;
  std::string copy;
};
