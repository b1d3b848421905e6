#pragma once

#include "common/Windows.h"

#include <memory>

#include "permissions/SourceExtension.h"
#include "transfer/SourceURL.h"
#include "xml/XMLUtilities.h"

// The `Source` half of the permission file: where files may come from, and which extensions they may have. A refusal is
// logged together with the whole list, so that an administrator sees at once why a manifest failed.
class CSourcePermission {
 public:
  // Reads the entries of a loaded permission document. `result` (may be null): S_OK, also when a list ended early at a bad
  // entry; E_INVALIDARG without a document; the lookup's code when there is no `Source`.
  CSourcePermission(IXMLDOMDocument2* document, HRESULT* result);

  // The entries, in document order.
  CListIterator URLs() const { return CListIterator(urlList.get()); }
  CListIterator Extensions() const { return CListIterator(extensionList.get()); }

  // The entry that permits a URL or an extension; null when none does. Nothing is logged.
  const CListItem* FindURL(const CSourceURL& url) const;
  const CListItem* FindExtension(const CSourceExtension& extension) const;

  // S_OK when the URL's folder begins with the folder of a permitted URL; E_ACCESSDENIED when not; another failure when the
  // question cannot be answered: E_UNEXPECTED with an empty list, E_INVALIDARG without a URL.
  [[nodiscard]] HRESULT IsURLPermitted(const CSourceURL* url) const;

  // The same for an extension without its dot, which has to equal a permitted one whatever its case.
  [[nodiscard]] HRESULT IsExtensionPermitted(const char* extension) const;

 private:
  HRESULT Read(IXMLDOMDocument2* document);

  std::unique_ptr<CListItem> urlList;
  std::unique_ptr<CListItem> extensionList;
};
