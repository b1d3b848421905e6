#include "permissions/SourceExtension.h"

#include <algorithm>
#include <cstring>

#include "common/PathText.h"
#include "log/LogFile.h"

namespace {

constexpr SourceFile kSourceFile = {"SourceExtension"};
constexpr char kClassName[] = "CSourceExtension";

// The code of a construction from `given` that ended with `copy`.
HRESULT ConstructionCode(const void* given, const OwnedText& copy) {
  if (!given)
    return Traced(HERE, E_INVALIDARG);
  return copy ? S_OK : Traced(HERE, E_OUTOFMEMORY);
}

}  // namespace

CSourceExtension::CSourceExtension(const wchar_t* text, HRESULT* result) : extension(NarrowText(text)) {
  const HRESULT hr = ConstructionCode(text, extension);
  if (result)
    *result = hr;
}

CSourceExtension::CSourceExtension(const char* text, HRESULT* result) : extension(CopyText(text)) {
  const HRESULT hr = ConstructionCode(text, extension);
  if (result)
    *result = hr;
}

int CSourceExtension::Compare(const CListItem* other) const {
  const bool isExtension = other && other->IsKindOf(kClassName);
  const char* const pattern = isExtension ? static_cast<const CSourceExtension*>(other)->extension.get() : nullptr;
  if (!extension || !pattern)
    return extension ? 1 : pattern ? -1 : 0;
  // The terminators are compared too: the shorter text comes first.
  const std::size_t length = std::min(std::strlen(extension.get()), std::strlen(pattern)) + 1;
  return CompareNoCase(extension.get(), pattern, length);
}

bool CSourceExtension::IsKindOf(const char* name) const {
  return name && !std::strcmp(name, kClassName);
}

void CSourceExtension::Dump() const {
  LogText(extension.get());
}
