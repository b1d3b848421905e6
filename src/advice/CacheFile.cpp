#include "advice/CacheFile.h"

#include <new>
#include <utility>

#include "advice/Document.h"
#include "advice/Words.h"
#include "transfer/SourceURL.h"
#include "transfer/Transfer.h"

CacheFile::CacheFile(std::wstring fromPlace) : place(std::move(fromPlace)), cache(FolderKind::InternetCache, nullptr) {
  HRESULT hr = S_OK;
  const CSourceURL source(place.c_str(), SourceRole::Manifest, &hr);
  if (SUCCEEDED(hr))
    hr = cache.GetDestinationFile(&source, &name);
  if (FAILED(hr))
    CannotFetch(place, hr);
  if (!name)
    throw std::bad_alloc();
}

CacheFile::~CacheFile() {
  cache.DiscardCacheFile(name.get());
}

HRESULT CacheFile::Fetch(DWORD flags) {
  const std::string source = AnsiFromWide(PlaceForModule(place)).value();
  return FetchURL(source.c_str(), name.get(), FILE_ATTRIBUTE_NORMAL, nullptr, flags, nullptr);
}

std::wstring CacheFile::Path() const {
  return WideFromAnsi(name.get());
}

void CannotFetch(const std::wstring& place, HRESULT hr) {
  throw Unanswered("'" + WithoutCredentials(Utf8(place)) + "' cannot be fetched: " + ReasonText(hr));
}
