#pragma once

#include "common/Windows.h"

#include <wininet.h>

#include <string>

// The file that the Internet cache holds for a URL or a file; empty when it holds none.
inline std::string CachedFile(const std::string& location) {
  alignas(INTERNET_CACHE_ENTRY_INFOA) char buffer[4096];
  DWORD bytes = sizeof(buffer);
  auto* const entry = reinterpret_cast<INTERNET_CACHE_ENTRY_INFOA*>(buffer);
  return GetUrlCacheEntryInfoA(location.c_str(), entry, &bytes) ? entry->lpszLocalFileName : "";
}
