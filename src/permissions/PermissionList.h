#pragma once

#include "common/Windows.h"

#include <wrl/client.h>

#include <memory>

#include "common/ListItem.h"
#include "common/Text.h"
#include "log/LogFile.h"
#include "xml/XMLUtilities.h"

// What the lists of permitted URLs, extensions and folders have in common: how they are read, searched and shown. The log
// lines name the source file of the list's owner.

// The texts of all elements of one name below a container, in document order. The first element that cannot be read ends
// them: a list that is incomplete permits less. Failures show as trace lines only.
class EntryTexts {
 public:
  EntryTexts(const char* ownerFile, IXMLDOMNode* container, const wchar_t* name);

  // The next text; false at the end of the list or after a failure.
  bool Next(BString& text);

 private:
  SourceFile sourceFile;
  Microsoft::WRL::ComPtr<IXMLDOMNodeList> nodes;
  LONG index = 0;
  LONG length = 0;
};

// Appends a new entry to `list` and tells whether it was good: made at all (null is traced with E_POINTER), and with a
// construction code that is no failure (which is traced). A bad entry is deleted.
bool AppendEntry(const char* ownerFile, std::unique_ptr<CListItem> entry, HRESULT constructionCode, CListBuilder& list);

// Appends an entry for each of these elements. `make(text, result)` makes an entry from its text, as an owner, or gives null
// when memory has run out. The first bad entry ends the reading; those before it stay.
template <class MakeEntry>
void ReadEntries(const char* ownerFile, IXMLDOMNode* container, const wchar_t* name, MakeEntry make, CListBuilder& list) {
  EntryTexts entries(ownerFile, container, name);
  for (BString text; entries.Next(text);) {
    HRESULT hr = S_OK;
    std::unique_ptr<CListItem> entry = make(text.Get(), &hr);
    if (!AppendEntry(ownerFile, std::move(entry), hr, list))
      return;
  }
}

// The first item of `list` (which may be null) that, asked to compare itself with `candidate`, answers 0; null when none
// does.
const CListItem* FindMatch(CListItem* list, const CListItem& candidate);

// S_OK when some item of `list`, asked to compare itself with `candidate`, answers 0; E_ACCESSDENIED when none does;
// E_INVALIDARG without a candidate or a list. While debug logging is on, `debugLabel` (may be null) and the candidate are
// written to the log before the search.
[[nodiscard]] HRESULT FindInList(const char* ownerFile, CListItem* list, const CListItem* candidate, const char* debugLabel);

// Writes every item of `list` into the log, a line each.
void DumpList(const char* ownerFile, CListItem* list);
