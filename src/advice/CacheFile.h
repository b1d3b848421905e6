#pragma once

#include "common/Windows.h"

#include <string>

#include "transfer/DestinationFolder.h"

// A file in the folder of the Internet cache, which forgets it at the end.
class CacheFile {
 public:
  // Makes room for what comes from a place. Unanswered when the cache has none.
  explicit CacheFile(std::wstring fromPlace);
  ~CacheFile();
  CacheFile(const CacheFile&) = delete;
  CacheFile& operator=(const CacheFile&) = delete;

  // Fetches what is there, as the module does, with flags of FetchURL. Gives its codes.
  HRESULT Fetch(DWORD flags);

  const char* Name() const { return name.get(); }
  std::wstring Path() const;

 private:
  std::wstring place;
  CDestinationFolder cache;
  OwnedText name;
};

// That a place cannot be fetched is an unanswered question, in the words of the system where it has some.
[[noreturn]] void CannotFetch(const std::wstring& place, HRESULT hr);
