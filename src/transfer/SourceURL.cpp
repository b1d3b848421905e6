#include "transfer/SourceURL.h"

#include <cstring>

#include "common/PathText.h"
#include "log/LogFile.h"
#include "transfer/URLText.h"

namespace {

constexpr SourceFile kSourceFile = {"SourceURL"};
constexpr char kClassName[] = "CSourceURL";
constexpr std::size_t kFileRootLength = 7;  // "file://"

}  // namespace

CSourceURL::CSourceURL(const wchar_t* url, SourceRole sourceRole, HRESULT* result) : role(sourceRole) {
  const HRESULT hr = Initialize(url);
  if (result)
    *result = hr;
}

HRESULT CSourceURL::Initialize(const wchar_t* url) {
  if (!url)
    return Traced(HERE, E_INVALIDARG);
  const OwnedText narrow = NarrowText(url);
  if (!narrow)
    return ReportedW(HERE, E_OUTOFMEMORY, L"%s", url);
  correctedURL = CorrectURL(narrow.get());
  if (!correctedURL)
    return Reported(HERE, E_OUTOFMEMORY, "Failed to correct '%s'.", narrow.get());
  const HRESULT hr = SplitURL(correctedURL.get(), folder, fileName, &extension);
  if (FAILED(hr))
    LogWarning(HERE, hr, "Failed to extract the file from '%s'.", narrow.get());
  return hr;
}

bool CSourceURL::IsKindOf(const char* name) const {
  return name && !std::strcmp(name, kClassName);
}

void CSourceURL::Dump() const {
  LogText(correctedURL.get());
}

const char* CSourceURL::GetExtension() const {
  return fileName ? BehindLastDot(fileName.get()) : "";
}

bool CSourceURL::IsLocal() const {
  return correctedURL && !IsWebURL(correctedURL.get());
}

const char* CSourceURL::GetLocation() const {
  return IsLocal() ? correctedURL.get() + kFileRootLength : correctedURL.get();
}

int CSourceURL::Compare(const CListItem* other) const {
  const char* pattern = nullptr;
  bool isOtherLocal = false;
  if (other && other->IsKindOf(kClassName)) {
    const auto* const url = static_cast<const CSourceURL*>(other);
    pattern = url->GetFolder();
    isOtherLocal = url->IsLocal();
    if (isOtherLocal != IsLocal())
      return isOtherLocal ? -1 : 1;
  } else if (IsLocal()) {
    return 1;
  }
  if (!folder || !pattern)
    return folder ? 1 : pattern ? -1 : 0;

  const std::size_t length = std::strlen(folder.get());
  if (std::strlen(pattern) < length)
    return -1;
  return isOtherLocal ? CompareNoCase(folder.get(), pattern, length) : std::strncmp(folder.get(), pattern, length);
}
