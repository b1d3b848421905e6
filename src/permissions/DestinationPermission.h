#pragma once

#include "common/Windows.h"

#include <cstddef>
#include <memory>

#include "transfer/DestinationFolder.h"
#include "xml/XMLUtilities.h"

// A folder kind and the element that is named after it.
struct FolderKindName {
  const wchar_t* name;
  FolderKind kind;
};

constexpr std::size_t kFolderKinds = 13;
extern const FolderKindName kFolderKindNames[kFolderKinds];

// The `Destination` half of the permission file: the folders into which files may be written, resolved when the file is
// read, for the user under whom the control runs.
class CDestinationPermission {
 public:
  // Reads the entries of a loaded permission document, kind by kind in a fixed order, `Path` entries last. `result` (may be
  // null): S_OK, also when entries could not be resolved and were left out; E_INVALIDARG without a document; the lookup's
  // code when there is no `Destination`.
  CDestinationPermission(IXMLDOMDocument2* document, HRESULT* result);

  // The entries that could be resolved, kind by kind.
  CListIterator Folders() const { return CListIterator(folderList.get()); }

  // The entry that permits the folder; null when none does. Nothing is logged.
  const CListItem* FindFolder(const CDestinationFolder& folder) const;

  // S_OK when the folder's path begins with a permitted path, whatever the kinds; E_ACCESSDENIED when not, which is logged
  // with the whole list; E_UNEXPECTED when nothing is permitted, E_INVALIDARG without a folder.
  [[nodiscard]] HRESULT IsFolderPermitted(const CDestinationFolder* folder) const;

 private:
  HRESULT Read(IXMLDOMDocument2* document);

  std::unique_ptr<CListItem> folderList;
};
