#pragma once

#include "common/Windows.h"

#include "common/ListItem.h"
#include "common/Text.h"
#include "transfer/FileUtilities.h"
#include "transfer/SourceURL.h"

// Where a file goes: a folder on disk, resolved when the object is made, or one of the two stores that the system keeps
// itself, the cookie store and the Internet cache. In the chain of permitted destinations, Compare tells whether this path
// is a prefix of another's; the kinds are not compared.
class CDestinationFolder : public CListItem {
 public:
  // `result` (may be null) is the code of the resolution (FileUtilities.h), or E_OUTOFMEMORY. After a failure the object is
  // of no use and its maker deletes it.
  CDestinationFolder(FolderKind folderKind, const wchar_t* text, HRESULT* result);
  CDestinationFolder(FolderKind folderKind, HRESULT* result);

  // A folder of kind Path.
  CDestinationFolder(const char* folderPath, HRESULT* result);
  CDestinationFolder(const wchar_t* folderPath, HRESULT* result);

  int Compare(const CListItem* other) const override;
  bool IsKindOf(const char* name) const override;
  void Dump() const override;

  FolderKind GetKind() const { return kind; }

  // The resolved folder, without a trailing backslash; null after a failed construction.
  const char* GetPath() const { return path.get(); }

  // True when there is a file or folder of that name; never for the two stores.
  bool FileExists(const char* fileName, const FileSystem& files = SystemFiles()) const;

  // Creates the folder and all above it; nothing for the two stores.
  [[nodiscard]] HRESULT CreateFolder(FileSystem& files = SystemFiles()) const;

  // The full name under which a file from `source` is to be stored: in a folder, the source's own file name (the folder
  // itself when it has none); in the Internet cache, a new file of the cache's choosing; as a cookie, the source's URL.
  // S_OK, E_UNEXPECTED, E_INVALIDARG, E_OUTOFMEMORY or the cache's code; `fileName` is null after a failure, and when the
  // name that the cache chose could not be copied (S_OK).
  [[nodiscard]] HRESULT GetDestinationFile(const CSourceURL* source, OwnedText* fileName) const;

  // Registers `localFile` in the Internet cache for `source`, to expire after one hour. S_OK without doing anything unless
  // the kind is InternetCache; E_UNEXPECTED, E_INVALIDARG or the cache's code.
  [[nodiscard]] HRESULT CommitToCache(const CSourceURL* source, const char* localFile) const;

  // Deletes the file that the Internet cache made for GetDestinationFile, when nothing came into it or it was not committed:
  // the cache does not know it, and nobody would ever remove it. Nothing happens for other kinds. Null is allowed.
  void DiscardCacheFile(const char* localFile) const;

 private:
  bool IsStore() const { return kind == FolderKind::Cookie || kind == FolderKind::InternetCache; }
  HRESULT Resolve(const wchar_t* text);

  FolderKind kind;
  OwnedText path;
};
