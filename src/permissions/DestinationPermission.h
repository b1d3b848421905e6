#pragma once

#include "common/Windows.h"

#include <memory>

#include "transfer/DestinationFolder.h"
#include "xml/XMLUtilities.h"

// The `Destination` half of the permission file: the folders into which files may be written, resolved when the file is
// read, for the user under whom the control runs.
class CDestinationPermission {
 public:
  // Reads the entries of a loaded permission document, kind by kind in a fixed order, `Path` entries last. `result` (may be
  // null): S_OK, also when entries could not be resolved and were left out; E_INVALIDARG without a document; the lookup's
  // code when there is no `Destination`.
  CDestinationPermission(IXMLDOMDocument2* document, HRESULT* result);

  // S_OK when the folder's path begins with a permitted path, whatever the kinds; E_ACCESSDENIED when not, which is logged
  // with the whole list; E_UNEXPECTED when nothing is permitted, E_INVALIDARG without a folder.
  [[nodiscard]] HRESULT IsFolderPermitted(const CDestinationFolder* folder) const;

 private:
  HRESULT Read(IXMLDOMDocument2* document);

  std::unique_ptr<CListItem> folderList;
};
