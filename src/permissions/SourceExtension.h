#pragma once

#include "common/Windows.h"

#include "common/ListItem.h"
#include "common/Text.h"

// One file extension, exactly as it was given: not trimmed, no dot removed, no case folded. In the chain of permitted
// extensions, Compare tells whether another is equal to this one as a whole, without regard to case.
class CSourceExtension : public CListItem {
 public:
  // `result` (may be null): S_OK, E_INVALIDARG for null, E_OUTOFMEMORY.
  CSourceExtension(const wchar_t* text, HRESULT* result);
  CSourceExtension(const char* text, HRESULT* result);

  // Null after a failed construction.
  const char* GetText() const { return extension.get(); }

  int Compare(const CListItem* other) const override;
  bool IsKindOf(const char* name) const override;
  void Dump() const override;

 private:
  OwnedText extension;
};
