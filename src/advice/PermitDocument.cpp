#include "advice/PermitDocument.h"

#include <algorithm>
#include <map>
#include <new>

#include "advice/Document.h"
#include "advice/KeptLog.h"
#include "advice/Words.h"
#include "common/ModulePath.h"

namespace {

std::vector<const CListItem*> ItemsOf(CListIterator items) {
  std::vector<const CListItem*> list;
  while (items.HasMore())
    list.push_back(items.Next());
  return list;
}

// The number of an item among those of its element's name pairs it with the element.
class Pairs {
 public:
  void Add(const std::string& element, CListIterator items) { lists[element] = {ItemsOf(items), 0}; }

  void AddFolders(CListIterator items) {
    while (items.HasMore()) {
      const CListItem* const item = items.Next();
      lists[ElementNameOf(static_cast<const CDestinationFolder*>(item)->GetKind())].items.push_back(item);
    }
  }

  // The module's lists end at the first entry that it cannot use.
  const CListItem* Next(const std::string& element) {
    List& list = lists[element];
    return list.next < list.items.size() ? list.items[list.next++] : nullptr;
  }

 private:
  struct List {
    std::vector<const CListItem*> items;
    std::size_t next = 0;
  };
  std::map<std::string, List> lists;
};

}  // namespace

PermitDocument::PermitDocument(const std::wstring& place) : PermitDocument(LocalDocument(place)) {}

PermitDocument::PermitDocument(const LocalDocument& document)
    : location(document.Place()), bytes(ReadDocument(document.Path())), outline(OutlineOf(bytes)) {
  Read(document.Path());
  PairEntries();
}

void PermitDocument::Read(const std::wstring& path) {
  const KeptLog log;
  permissions.reset(new (std::nothrow) CPermissions(0, PathForModule(path).c_str(), &code));
  if (!permissions || code == E_OUTOFMEMORY)
    throw std::bad_alloc();
  if (SUCCEEDED(code))
    return;
  permissions.reset();
  complaint = log.FirstComplaint();
}

void PermitDocument::PairEntries() {
  Pairs pairs;
  if (permissions) {
    pairs.Add("URL", permissions->GetSources()->URLs());
    pairs.Add("Extension", permissions->GetSources()->Extensions());
    pairs.AddFolders(permissions->GetDestinations()->Folders());
  }
  for (const Element& half : outline.root.children) {
    for (const Element& element : half.children) {
      PermitEntry entry = {EntryKind::URL, element.name, element.TrimmedText(), element.line, nullptr};
      if (element.name == "Extension")
        entry.kind = EntryKind::Extension;
      else if (FindFolderKind(element.name, entry.folderKind))
        entry.kind = EntryKind::Folder;
      else if (element.name != "URL")
        continue;
      entry.item = pairs.Next(element.name);
      entries.push_back(std::move(entry));
    }
  }
}

const PermitEntry* PermitDocument::EntryOf(const CListItem* item) const {
  const auto found =
      std::find_if(entries.begin(), entries.end(), [&](const PermitEntry& entry) { return item && entry.item == item; });
  return found == entries.end() ? nullptr : &*found;
}

std::wstring DefaultPermitPath() {
  return WideFromAnsi(GetModuleFolder()) + L"\\permit.xml";
}

const char* ElementNameOf(FolderKind kind) {
  static const std::map<FolderKind, std::string> names = [] {
    std::map<FolderKind, std::string> made;
    for (const FolderKindName& named : kFolderKindNames)
      made[named.kind] = Utf8(named.name);
    return made;
  }();
  const auto found = names.find(kind);
  return found == names.end() ? "" : found->second.c_str();
}

bool FindFolderKind(const std::string& element, FolderKind& kind) {
  for (const FolderKindName& named : kFolderKindNames) {
    if (element == ElementNameOf(named.kind)) {
      kind = named.kind;
      return true;
    }
  }
  return false;
}
