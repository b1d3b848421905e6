#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "advice/PermitDocument.h"
#include "common/ListItem.h"
#include "common/PathText.h"

// An entry that changes nothing, because another one permits all that it permits.
struct CoveredEntry {
  const PermitEntry* entry;
  const PermitEntry* by;
};

// The covered ones among these entries, which all have an item. `isBefore` sorts items so that those which one covers stand
// directly behind it, as texts do behind their prefixes; whether it covers them is asked of the item itself. Of two that
// permit the same, the one that stands behind the other in the document is covered. An entry is compared with few others,
// however many there are.
template <class IsBefore>
std::vector<CoveredEntry> FindCovered(std::vector<const PermitEntry*> entries, IsBefore isBefore) {
  std::stable_sort(entries.begin(), entries.end(), [&isBefore](const PermitEntry* one, const PermitEntry* other) {
    return isBefore(one->item, other->item);
  });
  std::vector<CoveredEntry> covered;
  const PermitEntry* covering = nullptr;
  for (const PermitEntry* const entry : entries) {
    if (covering && covering->item->Compare(entry->item) == 0)
      covered.push_back({entry, covering});
    else
      covering = entry;
  }
  return covered;
}

// The order of two texts without regard to case; a prefix comes first.
inline bool IsBeforeNoCase(const char* text, const char* other) {
  return CompareNoCase(text, other, std::min(std::strlen(text), std::strlen(other)) + 1) < 0;
}
