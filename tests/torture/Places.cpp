#include "torture/Places.h"

#include <wininet.h>

#include "support/LogCapture.h"

namespace {

bool StartsWith(const std::string& text, const std::string& start) {
  return !start.empty() && _strnicmp(text.c_str(), start.c_str(), start.size()) == 0;
}

std::string LogFolder() {
  const std::string log = LogCapture::PathOf("any");
  return log.substr(0, log.find_last_of('\\'));
}

}  // namespace

std::string Places::OfPath(const char* path) const {
  static const std::string logs = LogFolder();
  const std::string text = path ? path : "";
  if (StartsWith(text, logs) || StartsWith(logs, text))
    return "log";
  const auto cached = cacheFiles.find(text);
  if (cached != cacheFiles.end())
    return cached->second.place;
  if (!manifestUrl.empty() && StartsWith(text, manifestUrl))
    return "manifest";
  if (StartsWith(text, moduleFolder + "\\permit.xml"))
    return "permit";
  if (StartsWith(text, destinationFolder))
    return "destination";
  return StartsWith(text, sourceFolder) ? "source" : "other";
}

std::string Places::OfUrl(const char* url) const {
  if (StartsWith(url, manifestUrl))
    return "manifest";
  return StartsWith(url, moduleFolder) ? "permit" : "source";
}

std::string Places::OfHandle(const void* handle) const {
  const auto found = handles.find(handle);
  return found == handles.end() ? "other" : found->second;
}

void Places::CacheFileMade(const std::string& path, const std::string& url) {
  cacheFiles[path] = {OfUrl(url.c_str()) + " copy", url, false};
}

void Places::ClearCache() {
  for (const auto& [path, file] : cacheFiles) {
    DeleteUrlCacheEntryA(file.url.c_str());
    DeleteFileA(path.c_str());
  }
  cacheFiles.clear();
}

std::string Places::CacheFileOf(const std::string& url) const {
  for (const auto& [path, file] : cacheFiles) {
    if (file.url == url)
      return path;
  }
  return std::string();
}
