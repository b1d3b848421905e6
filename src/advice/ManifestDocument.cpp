#include "advice/ManifestDocument.h"

#include <wrl/client.h>

#include <new>

#include "advice/CacheFile.h"
#include "advice/Document.h"
#include "advice/KeptLog.h"
#include "engine/OpenCommand.h"
#include "transfer/Transfer.h"
#include "xml/XMLUtilities.h"

using Microsoft::WRL::ComPtr;

ManifestDocument::ManifestDocument(const std::wstring& place) : ManifestDocument(LocalDocument(place)) {}

ManifestDocument::ManifestDocument(const LocalDocument& document)
    : location(document.Place()), bytes(ReadDocument(document.Path())), outline(OutlineOf(bytes)) {
  CacheFile prepared(PathForModule(document.Path()));
  const KeptLog log;
  code = prepared.Fetch(kTransferXMLDocument | kTransferManifest);
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
