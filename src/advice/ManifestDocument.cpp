#include "advice/ManifestDocument.h"

#include <wrl/client.h>

#include <map>

#include "advice/Document.h"
#include "advice/KeptLog.h"
#include "advice/Words.h"
#include "engine/OpenCommand.h"
#include "transfer/Transfer.h"
#include "transfer/URLText.h"
#include "xml/XMLUtilities.h"

using Microsoft::WRL::ComPtr;

namespace {

// What cannot be answered about a manifest that was not reached, in the words of the system where it has some.
[[noreturn]] void CannotFetch(const std::wstring& url, HRESULT hr) {
  const std::string reason = SystemText(hr);
  throw Unanswered("'" + WithoutCredentials(Utf8(url)) + "' cannot be fetched: " + (reason.empty() ? HexCode(hr) : reason));
}

// A file in the folder of the Internet cache, which forgets it at the end. Unanswered when the cache has no place.
class CacheFile {
 public:
  explicit CacheFile(const std::wstring& url) : cache(FolderKind::InternetCache, nullptr) {
    HRESULT hr = S_OK;
    const CSourceURL source(url.c_str(), SourceRole::Manifest, &hr);
    if (SUCCEEDED(hr))
      hr = cache.GetDestinationFile(&source, &name);
    if (FAILED(hr))
      CannotFetch(url, hr);
    if (!name)
      throw std::bad_alloc();
  }
  ~CacheFile() { cache.DiscardCacheFile(name.get()); }
  CacheFile(const CacheFile&) = delete;
  CacheFile& operator=(const CacheFile&) = delete;

  const char* Name() const { return name.get(); }
  std::wstring Path() const { return WideFromAnsi(name.get()); }

 private:
  CDestinationFolder cache;
  OwnedText name;
};

std::string AnsiOf(const std::wstring& place) {
  return AnsiFromWide(PlaceForModule(place)).value();
}

}  // namespace

ManifestDocument::ManifestDocument(const std::wstring& manifestLocation) {
  const KeptLog log;
  if (IsOnTheWeb(manifestLocation)) {
    location = manifestLocation;
    const CacheFile fetched(location);
    const HRESULT hr = FetchURL(AnsiOf(location).c_str(), fetched.Name(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, nullptr);
    if (FAILED(hr))
      CannotFetch(location, hr);
    Load(fetched.Path());
  } else {
    location = LocalPath(manifestLocation);
    Load(location);
  }
}

void ManifestDocument::Load(const std::wstring& file) {
  bytes = ReadDocument(file);
  outline = OutlineOf(bytes);
  const std::wstring readable = PathForModule(file);
  const CacheFile prepared(readable);
  const KeptLog log;
  code = FetchURL(AnsiOf(readable).c_str(), prepared.Name(), FILE_ATTRIBUTE_NORMAL, nullptr,
                  kTransferXMLDocument | kTransferManifest, nullptr);
  if (SUCCEEDED(code))
    code = LoadPrepared(prepared.Name());
  if (code == E_OUTOFMEMORY)
    throw std::bad_alloc();
  if (FAILED(code)) {
    complaint = log.FirstComplaint();
    return;
  }
  PairCommands(copies.get());
  PairCommands(openings.get());
}

HRESULT ManifestDocument::LoadPrepared(const char* preparedFile) {
  ComPtr<IXMLDOMDocument2> document;
  HRESULT hr = CreateXMLDocument(&document);
  if (SUCCEEDED(hr))
    hr = LoadXMLDocument(preparedFile, document.Get(), TRUE);
  if (SUCCEEDED(hr))
    hr = CollectCopyCommands(document.Get(), &copies);
  if (SUCCEEDED(hr))
    hr = CollectOpenCommands(document.Get(), &openings);
  return hr;
}

// The commands of one element name, which are in the order of the document as their elements are. The module's chain ends
// with the first one that it cannot read.
void ManifestDocument::PairCommands(const CListItem* first) {
  auto element = outline.root.children.begin();
  for (const CListItem* item = first; item; item = item->Next()) {
    const auto* const command = static_cast<const CCopyCommand*>(item);
    while (element != outline.root.children.end() && element->name != command->GetElementName())
      ++element;
    if (element == outline.root.children.end())
      return;
    commands.push_back({static_cast<int>(commands.size()) + 1, command, &*element});
    ++element;
  }
}
