#pragma once

#include "engine/CopyCommand.h"

// The `Open` element of a manifest: a file that is copied as by a `Copy` element and then opened, by the shell or by the
// browser that hosts the control.
class COpenCommand : public CCopyCommand {
 public:
  // `result` (may be null): the code of the copy portion; E_INVALIDARG without an element; E_FAIL when the `browser`
  // attribute is missing, or the failure of reading it.
  COpenCommand(IXMLDOMNode* node, HRESULT* result);

  void Dump() const override;
  const char* GetElementName() const override { return "Open"; }

  // Copies the file and opens it. For a browser, "file://" and the file's full name are stored in `*navigateURL`; else the
  // shell starts the file. A cookie is only copied, which is no failure.
  // The copy's own result; E_INVALIDARG when a browser is meant and there is no place for the URL (nothing is copied then);
  // E_OUTOFMEMORY; E_FAIL when the shell cannot start the file.
  [[nodiscard]] HRESULT Execute(DWORD context, const CPermissions* permissions, BSTR* navigateURL) override;

  bool IsForBrowser() const { return browser; }

 private:
  HRESULT ReadBrowser(IXMLDOMNode* node);
  HRESULT StoreNavigateURL(BSTR* navigateURL) const;
  HRESULT Start() const;

  bool browser = false;
};

// Makes a command of each `Open` element of a manifest, in document order. `chain` is the first one, null when there is
// none. E_INVALIDARG without a document or a place for the chain, else the code of the first failure; the chain ends with
// the command that failed.
[[nodiscard]] HRESULT CollectOpenCommands(IXMLDOMDocument2* document, std::unique_ptr<CListItem>* chain);
