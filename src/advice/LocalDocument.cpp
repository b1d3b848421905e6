#include "advice/LocalDocument.h"

#include "advice/CacheFile.h"
#include "advice/Document.h"
#include "advice/KeptLog.h"

LocalDocument::LocalDocument(const std::wstring& namedPlace) {
  if (!IsOnTheWeb(namedPlace)) {
    place = LocalPath(namedPlace);
    path = place;
    return;
  }
  const KeptLog log;
  place = namedPlace;
  copy = std::make_unique<CacheFile>(place);
  const HRESULT hr = copy->Fetch(0);
  if (FAILED(hr))
    CannotFetch(place, hr);
  path = copy->Path();
}

LocalDocument::~LocalDocument() = default;
