#pragma once

#include <memory>
#include <string>

class CacheFile;

// A document where it can be read: the file that somebody named or, of a document on the web, a copy that is gone with this.
class LocalDocument {
 public:
  // Takes a path in any characters, a `file:` URL, or a URL on the web, which is fetched. Unanswered when its server is not
  // reached, or the Internet cache has no place for the copy.
  explicit LocalDocument(const std::wstring& namedPlace);
  ~LocalDocument();
  LocalDocument(const LocalDocument&) = delete;
  LocalDocument& operator=(const LocalDocument&) = delete;

  // The full path, or the URL.
  const std::wstring& Place() const { return place; }

  // The full path of the file, or of the copy.
  const std::wstring& Path() const { return path; }

 private:
  std::unique_ptr<CacheFile> copy;  // of what is on the web
  std::wstring place;
  std::wstring path;
};
