#include "support/InternetCache.h"

#include "common/Windows.h"

#include <wininet.h>

std::string CachedFile(const std::string& location) {
  alignas(INTERNET_CACHE_ENTRY_INFOA) char buffer[4096];
  DWORD bytes = sizeof(buffer);
  auto* const entry = reinterpret_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer);
  return GetUrlCacheEntryInfoA(location.c_str(), entry, &bytes) ? entry->lpszLocalFileName : "";
}
