#pragma once

#include "common/Windows.h"

#include <memory>

#include "permissions/DestinationPermission.h"
#include "permissions/SourcePermission.h"
#include "transfer/DestinationFolder.h"
#include "transfer/SourceURL.h"
#include "xml/XMLUtilities.h"

// The permission file: the local white-list that decides what any manifest may do on this machine. It lies in the folder
// from which the module was loaded, belongs to whoever installed the module, and is read once, when the object is made.
//
// Answers: S_OK means permitted; E_ACCESSDENIED means not permitted; any other failure means that the question could not be
// answered. Callers take every failure for a refusal.
class CPermissions {
 public:
  // `fileName` without a folder lies beside the module. `context` is not used. `result` (may be null) is the first failure
  // of fetching, validating or reading the file; after one the object answers nothing and its maker deletes it.
  CPermissions(DWORD context, const wchar_t* fileName, HRESULT* result);

  // Asks about the URL only: a manifest's extension is not checked.
  [[nodiscard]] HRESULT IsManifestURLPermitted(const wchar_t* url) const;
  [[nodiscard]] HRESULT IsSourceURLPermitted(const CSourceURL* url) const;
  [[nodiscard]] HRESULT IsExtensionPermitted(const char* extension) const;
  [[nodiscard]] HRESULT IsDestinationPermitted(const CDestinationFolder* folder) const;

  // The two halves; null after a failure.
  const CSourcePermission* GetSources() const { return sourcePermissions.get(); }
  const CDestinationPermission* GetDestinations() const { return destinationPermissions.get(); }

  // Places for checks that do not exist yet: of the signature of a manifest that was fetched (E_ACCESSDENIED would mean that
  // it is invalid), and of a file that a command has written. Both accept everything.
  [[nodiscard]] HRESULT CheckSignature(const char* localFile) const;
  [[nodiscard]] HRESULT CheckWrittenFile(const char* localFile) const;

 private:
  HRESULT Read(const wchar_t* fileName);
  HRESULT ReadPermitFile(const CSourceURL* permitURL, IXMLDOMDocument2* document);
  HRESULT BuildPermissions(IXMLDOMDocument2* document);

  std::unique_ptr<CSourcePermission> sourcePermissions;
  std::unique_ptr<CDestinationPermission> destinationPermissions;
};
