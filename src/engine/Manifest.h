#pragma once

#include "common/Windows.h"

#include <wrl/client.h>

#include <memory>

#include "common/ListItem.h"
#include "engine/Machine.h"
#include "permissions/Permissions.h"
#include "transfer/SourceURL.h"
#include "xml/XMLUtilities.h"

// One manifest on its way from a URL to a chain of commands: every `Copy` in document order, then the `Open`.
class CManifest {
 public:
  // `result` (may be null): S_OK; E_INVALIDARG without a URL; E_OUTOFMEMORY; the failure of the URL or of the XML parser.
  // After a failure the object is of no use and its maker deletes it.
  CManifest(DWORD executerContext, const wchar_t* manifestURL, HRESULT* result);

  // Checks the URL once more, fetches the manifest into the Internet cache, validates it against the module's own document
  // type and makes its commands. The first failure; commands that were already made are not run by anybody.
  [[nodiscard]] HRESULT Read(const CPermissions* permissions, Machine& machine = ThisMachine());

  // A cursor on the first command; on nothing before Read and for a manifest without commands.
  CListIterator CommandIterator() const { return CListIterator(commands.get()); }

 private:
  HRESULT Initialize(const wchar_t* manifestURL);
  HRESULT CheckURL(const CPermissions& permissions) const;
  HRESULT Fetch(Machine& machine, OwnedText& localFile) const;
  HRESULT Load(const CPermissions& permissions, const char* localFile);
  HRESULT BuildCommands();

  std::unique_ptr<CSourceURL> sourceURL;
  Microsoft::WRL::ComPtr<IXMLDOMDocument2> document;
  std::unique_ptr<CListItem> commands;
  [[maybe_unused]] DWORD context;  // for commands that would be made with one
};
