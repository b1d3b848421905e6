#pragma once

#include "common/Windows.h"

#include "common/ListItem.h"
#include "common/Text.h"

// What a URL was made for. The class keeps it and never looks at it.
enum class SourceRole : DWORD { PermittedEntry = 0, Command = 1, Manifest = 2 };

// A URL as the system uses it: corrected once, when it is made, and split into folder, file name and extension. In the chain
// of permitted URLs, Compare tells whether this one's folder is a prefix of another's.
class CSourceURL : public CListItem {
 public:
  // `result` (may be null): S_OK; S_FALSE when the URL has no separator; E_INVALIDARG for null; E_OUTOFMEMORY. After a
  // failure the object is of no use and its maker deletes it.
  CSourceURL(const wchar_t* url, SourceRole sourceRole, HRESULT* result);

  int Compare(const CListItem* other) const override;
  bool IsKindOf(const char* name) const override;
  void Dump() const override;

  // The corrected URL; null after a failed construction.
  const char* GetURL() const { return correctedURL.get(); }

  // The last component, without a query; empty when the URL ends in a separator, null when it has none.
  const char* GetFileName() const { return fileName.get(); }

  // The text before the last component, less one trailing separator.
  const char* GetFolder() const { return folder.get(); }

  // The text behind the last dot of the file name; empty when there is no dot or no file name.
  const char* GetExtension() const;

  // The text behind the last dot of the last component, its query included; null when there is none.
  const char* GetStoredExtension() const { return extension.get(); }

  bool IsLocal() const;

  // The text by which the Internet cache and the transfer know the resource: a web URL itself, the path of a local one.
  const char* GetLocation() const;

  SourceRole GetRole() const { return role; }

 private:
  HRESULT Initialize(const wchar_t* url);

  OwnedText fileName;
  OwnedText correctedURL;
  OwnedText folder;
  OwnedText extension;
  SourceRole role;
};
