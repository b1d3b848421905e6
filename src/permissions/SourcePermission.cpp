#include "permissions/SourcePermission.h"

#include <new>

#include "log/LogFile.h"
#include "permissions/PermissionList.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr char kSourceFile[] = "SourcePermission";

CListItem* ReadURLs(IXMLDOMNode* source) {
  CListBuilder list;
  EntryTexts entries(kSourceFile, source, L"URL");
  for (BString text; entries.Next(text);) {
    HRESULT hr = S_OK;
    std::unique_ptr<CListItem> url(new (std::nothrow) CSourceURL(text.Get(), SourceRole::PermittedEntry, &hr));
    if (!AppendEntry(kSourceFile, std::move(url), hr, list))
      break;
  }
  return list.Take();
}

CListItem* ReadExtensions(IXMLDOMNode* source) {
  CListBuilder list;
  EntryTexts entries(kSourceFile, source, L"Extension");
  for (BString text; entries.Next(text);) {
    HRESULT hr = S_OK;
    std::unique_ptr<CListItem> extension(new (std::nothrow) CSourceExtension(text.Get(), &hr));
    if (!AppendEntry(kSourceFile, std::move(extension), hr, list))
      break;
  }
  return list.Take();
}

}  // namespace

CSourcePermission::CSourcePermission(IXMLDOMDocument2* document, HRESULT* result) {
  const HRESULT hr = Read(document);
  if (result)
    *result = hr;
}

HRESULT CSourcePermission::Read(IXMLDOMDocument2* document) {
  if (!document)
    return Failed(HERE, E_INVALIDARG, "Missing XML document instance parameter.");
  ComPtr<IXMLDOMNode> source;
  const HRESULT hr = SelectDocumentNode(document, L"Source", &source);
  if (FAILED(hr)) {
    LogErrorTrace(HERE, hr);
    return Failed(HERE, hr, "An error occured while parsing source permissions.");
  }
  urlList.reset(ReadURLs(source.Get()));
  extensionList.reset(ReadExtensions(source.Get()));
  return S_OK;
}

HRESULT CSourcePermission::IsURLPermitted(const CSourceURL* url) const {
  if (!urlList)
    return Failed(HERE, E_UNEXPECTED, "Missing permitted URL list.");
  if (!url)
    return Failed(HERE, E_INVALIDARG, "Missing source URL parameter.");
  const HRESULT hr = FindInList(kSourceFile, urlList.get(), url, nullptr);
  if (hr == E_ACCESSDENIED) {
    LogError(HERE, hr, "URL '%s' is not permitted.", url->GetLocation());
    LogText("\tPermitted source URLs:\r\n");
    DumpList(kSourceFile, urlList.get());
  } else if (FAILED(hr)) {
    LogError(HERE, hr, "An error occured while determining if URL '%s' is permitted.", url->GetLocation());
  }
  return hr;
}

HRESULT CSourcePermission::IsExtensionPermitted(const char* extension) const {
  if (!extensionList)
    return Failed(HERE, E_UNEXPECTED, "Missing permitted URL list.");  // sic: both lists go by this name
  if (!extension)
    return Failed(HERE, E_INVALIDARG, "Missing source URL parameter.");
  HRESULT hr = S_OK;
  const std::unique_ptr<CSourceExtension> candidate(new (std::nothrow) CSourceExtension(extension, &hr));
  if (!candidate)
    return Failed(HERE, E_OUTOFMEMORY, "Failed to create source extension");
  if (FAILED(hr))
    return Traced(HERE, hr);
  hr = FindInList(kSourceFile, extensionList.get(), candidate.get(), nullptr);
  if (hr == E_ACCESSDENIED) {
    LogError(HERE, hr, "Extension '%s' is not permitted.", extension);
    LogText("\tPermitted source extensions:\r\n");
    DumpList(kSourceFile, extensionList.get());
  } else if (FAILED(hr)) {
    LogError(HERE, hr, "An error occured while determining if extension '%s' is permitted.", extension);
  }
  return hr;
}
