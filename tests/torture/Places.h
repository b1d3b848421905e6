#pragma once

#include "common/Windows.h"

#include <map>
#include <string>

// Tells by a path, a URL or a handle what a call of the module is about.
class Places {
 public:
  std::string moduleFolder;
  std::string destinationFolder;
  std::string sourceFolder;
  std::string manifestUrl;

  // "log", "permit", "destination", "source", "manifest", or what a cache file was made for; else "other".
  std::string OfPath(const char* path) const;

  // "manifest", "permit" or "source".
  std::string OfUrl(const char* url) const;

  // What was opened under a handle; "other" for one that is not known.
  std::string OfHandle(const void* handle) const;
  void Opened(const void* handle, const std::string& place) { handles[handle] = place; }
  void Closed(const void* handle) { handles.erase(handle); }

  // The file that the Internet cache gave for a URL: "manifest copy" and so on.
  void CacheFileMade(const std::string& path, const std::string& url);
  void CacheFileCommitted(const std::string& path) { cacheFiles[path].isCommitted = true; }

  // A file that the Internet cache gave.
  struct CacheFile {
    std::string place;
    std::string url;
    bool isCommitted = false;
  };

  // By its path.
  const std::map<std::string, CacheFile>& CacheFiles() const { return cacheFiles; }

  // Removes what the runs left in the Internet cache.
  void ClearCache();

  // The cache file last made for a URL; empty without one.
  std::string CacheFileOf(const std::string& url) const;

 private:
  std::map<const void*, std::string> handles;
  std::map<std::string, CacheFile> cacheFiles;
};
