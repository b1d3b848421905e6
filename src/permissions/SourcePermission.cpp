#include "permissions/SourcePermission.h"

#include <new>

#include "log/LogFile.h"
#include "permissions/PermissionList.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"SourcePermission"};

std::unique_ptr<CListItem> MakeURL(const wchar_t* text, HRESULT* result) {
  return std::unique_ptr<CListItem>(new (std::nothrow) CSourceURL(text, SourceRole::PermittedEntry, result));
}

std::unique_ptr<CListItem> MakeExtension(const wchar_t* text, HRESULT* result) {
  return std::unique_ptr<CListItem>(new (std::nothrow) CSourceExtension(text, result));
}

}  // namespace

CSourcePermission::CSourcePermission(IXMLDOMDocument2* document, HRESULT* result) {
  const HRESULT hr = Read(document);
  if (result)
    *result = hr;
}

HRESULT CSourcePermission::Read(IXMLDOMDocument2* document) {
  if (!document)
    return Reported(HERE, E_INVALIDARG, "Missing XML document instance parameter.");
  ComPtr<IXMLDOMNode> source;
  const HRESULT hr = SelectDocumentNode(document, L"Source", &source);
  if (FAILED(hr)) {
    LogErrorTrace(HERE, hr);
    return Reported(HERE, hr, "An error occured while parsing source permissions.");
  }
  CListBuilder urls;
  ReadEntries(kSourceFile.name, source.Get(), L"URL", MakeURL, urls);
  urlList = urls.Take();
  CListBuilder extensions;
  ReadEntries(kSourceFile.name, source.Get(), L"Extension", MakeExtension, extensions);
  extensionList = extensions.Take();
  return S_OK;
}

const CListItem* CSourcePermission::FindURL(const CSourceURL& url) const {
  return FindMatch(urlList.get(), url);
}

const CListItem* CSourcePermission::FindExtension(const CSourceExtension& extension) const {
  return FindMatch(extensionList.get(), extension);
}

HRESULT CSourcePermission::IsURLPermitted(const CSourceURL* url) const {
  if (!urlList)
    return Reported(HERE, E_UNEXPECTED, "Missing permitted URL list.");
  if (!url)
    return Reported(HERE, E_INVALIDARG, "Missing source URL parameter.");
  const HRESULT hr = FindInList(kSourceFile.name, urlList.get(), url, nullptr);
  if (hr == E_ACCESSDENIED) {
    LogError(HERE, hr, "URL '%s' is not permitted.", url->GetLocation());
    LogText("\tPermitted source URLs:\r\n");
    DumpList(kSourceFile.name, urlList.get());
  } else if (FAILED(hr)) {
    LogError(HERE, hr, "An error occured while determining if URL '%s' is permitted.", url->GetLocation());
  }
  return hr;
}

HRESULT CSourcePermission::IsExtensionPermitted(const char* extension) const {
  if (!extensionList)
    return Reported(HERE, E_UNEXPECTED, "Missing permitted URL list.");  // sic: both lists go by this name
  if (!extension)
    return Reported(HERE, E_INVALIDARG, "Missing source URL parameter.");
  HRESULT hr = S_OK;
  const std::unique_ptr<CSourceExtension> candidate(new (std::nothrow) CSourceExtension(extension, &hr));
  if (!candidate)
    return Reported(HERE, E_OUTOFMEMORY, "Failed to create source extension");
  if (FAILED(hr))
    return Traced(HERE, hr);
  hr = FindInList(kSourceFile.name, extensionList.get(), candidate.get(), nullptr);
  if (hr == E_ACCESSDENIED) {
    LogError(HERE, hr, "Extension '%s' is not permitted.", extension);
    LogText("\tPermitted source extensions:\r\n");
    DumpList(kSourceFile.name, extensionList.get());
  } else if (FAILED(hr)) {
    LogError(HERE, hr, "An error occured while determining if extension '%s' is permitted.", extension);
  }
  return hr;
}
