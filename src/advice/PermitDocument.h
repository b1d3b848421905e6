#pragma once

#include "common/Windows.h"

#include <memory>
#include <string>
#include <vector>

#include "advice/LocalDocument.h"
#include "advice/Outline.h"
#include "permissions/Permissions.h"

enum class EntryKind { URL, Extension, Folder };

// An entry of a permission file, in the file and in the module's list.
struct PermitEntry {
  EntryKind kind;
  std::string element;  // "URL", "Extension", "Personal", "Path", ...
  std::string text;     // as it stands in the file, without white space around it; UTF-8
  int line;
  const CListItem* item;  // what the module made of it; null when it left the entry out

  // For a folder: its kind, whatever the module made of it.
  FolderKind folderKind = FolderKind::Path;
};

// A permission file as the module reads it, and as it stands. The module's side is asked through Permissions, which answers
// as a run's does.
class PermitDocument {
 public:
  // Reads the file. One that the module refuses is no failure: IsUsable tells. Unanswered when it cannot be opened, or as
  // LocalDocument is.
  explicit PermitDocument(const LocalDocument& document);
  explicit PermitDocument(const std::wstring& place);

  // The full path, or the URL of one that is on the web.
  const std::wstring& Location() const { return location; }

  // Whether the module takes it; if not, the code and the first thing that it complains about.
  bool IsUsable() const { return permissions != nullptr; }
  HRESULT Code() const { return code; }
  const std::string& Complaint() const { return complaint; }

  // Null when it is not usable.
  const CPermissions* Permissions() const { return permissions.get(); }

  // As it stands, and its bytes.
  const Outline& Text() const { return outline; }
  const std::string& Bytes() const { return bytes; }

  // In document order.
  const std::vector<PermitEntry>& Entries() const { return entries; }

  // The entry of an item of the module's lists; null without one.
  const PermitEntry* EntryOf(const CListItem* item) const;

 private:
  void Read(const std::wstring& path);
  void PairEntries();

  std::wstring location;
  std::string bytes;
  Outline outline;
  std::unique_ptr<CPermissions> permissions;
  HRESULT code = S_OK;
  std::string complaint;
  std::vector<PermitEntry> entries;
};

// The permission file beside the program.
std::wstring DefaultPermitPath();

// The element name of a folder kind in a permission file; and the other way round, nothing for a name that is none.
const char* ElementNameOf(FolderKind kind);
bool FindFolderKind(const std::string& element, FolderKind& kind);
