#include "permissions/Permissions.h"

#include <wrl/client.h>

#include <new>

#include "log/LogFile.h"
#include "transfer/Transfer.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"Permissions"};

}  // namespace

CPermissions::CPermissions(DWORD /*context*/, const wchar_t* fileName, HRESULT* result) {
  const HRESULT hr = Read(fileName);
  if (result)
    *result = hr;
}

HRESULT CPermissions::Read(const wchar_t* fileName) {
  if (!fileName || !*fileName)
    return Reported(HERE, E_INVALIDARG, "Missing permit file parameter.");
  HRESULT hr = S_OK;
  const std::unique_ptr<CSourceURL> permitURL(new (std::nothrow) CSourceURL(fileName, SourceRole::Command, &hr));
  if (!permitURL)
    return ReportedW(HERE, E_OUTOFMEMORY, L"Failed to create a 'SourceURL' class instance from '%s'.", fileName);
  if (FAILED(hr)) {
    LogErrorTrace(HERE, S_OK);
    return hr;
  }
  if (GetDebugLogging())
    LogInfo(HERE, "Permit File: %s", permitURL->GetLocation());

  ComPtr<IXMLDOMDocument2> document;
  hr = CreateXMLDocument(&document);
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to create 'XMLDocument' instance.");
  hr = ReadPermitFile(permitURL.get(), document.Get());
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to read permissions.");
  return hr;
}

HRESULT CPermissions::ReadPermitFile(const CSourceURL* permitURL, IXMLDOMDocument2* document) {
  if (!permitURL)
    return Reported(HERE, E_UNEXPECTED, "Missing permissions source URL.");
  if (!document)
    return Reported(HERE, E_UNEXPECTED, "Missing 'XMLDocument' class instance.");

  HRESULT hr = S_OK;
  const std::unique_ptr<CDestinationFolder> cache(new (std::nothrow) CDestinationFolder(FolderKind::InternetCache, &hr));
  if (!cache)
    return Reported(HERE, E_OUTOFMEMORY, "Failed to create 'DestinationFolder' class instance.");
  if (FAILED(hr))
    return Traced(HERE, hr);
  OwnedText localFile;
  hr = cache->GetDestinationFile(permitURL, &localFile);
  if (FAILED(hr))
    return Traced(HERE, hr);

  const char* const location = permitURL->GetLocation();
  hr = FetchURL(
      location, localFile.get(), FILE_ATTRIBUTE_NORMAL, nullptr, kTransferXMLDocument | kTransferPermitFile, nullptr);
  if (FAILED(hr)) {
    cache->DiscardCacheFile(localFile.get());
    return Reported(HERE, hr, "Failed to copy '%s' to '%s'.", location, localFile.get());
  }
  hr = cache->CommitToCache(permitURL, localFile.get());
  if (FAILED(hr)) {
    cache->DiscardCacheFile(localFile.get());
    return Traced(HERE, hr);
  }
  hr = LoadXMLDocument(localFile.get(), document, TRUE);
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to read XML document '%s'.", localFile.get());
  hr = BuildPermissions(document);
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to parse XML document '%s'.", localFile.get());
  return hr;
}

HRESULT CPermissions::BuildPermissions(IXMLDOMDocument2* document) {
  HRESULT hr = S_OK;
  sourcePermissions.reset(new (std::nothrow) CSourcePermission(document, &hr));
  if (!sourcePermissions)
    return Reported(HERE, E_OUTOFMEMORY, "Failed to create a 'SourcePermission' class instance.");
  if (FAILED(hr)) {
    sourcePermissions.reset();
    return Traced(HERE, hr);
  }
  destinationPermissions.reset(new (std::nothrow) CDestinationPermission(document, &hr));
  if (!destinationPermissions)
    return Reported(HERE, E_OUTOFMEMORY, "Failed to create a 'DestinationPermission' class instance.");
  if (FAILED(hr)) {
    destinationPermissions.reset();
    return Traced(HERE, hr);
  }
  return hr;
}

HRESULT CPermissions::IsManifestURLPermitted(const wchar_t* url) const {
  if (!sourcePermissions)
    return Reported(HERE, E_UNEXPECTED, "Missing source permissions.");
  if (!url)
    return Reported(HERE, E_INVALIDARG, "Missing manifest URL parameter.");
  HRESULT hr = S_OK;
  const std::unique_ptr<CSourceURL> manifestURL(new (std::nothrow) CSourceURL(url, SourceRole::Manifest, &hr));
  if (!manifestURL)
    return ReportedW(HERE, E_OUTOFMEMORY, L"Failed to create a 'SourceURL' class instance from '%s'.", url);
  if (SUCCEEDED(hr))
    hr = sourcePermissions->IsURLPermitted(manifestURL.get());
  if (FAILED(hr))
    LogErrorTrace(HERE, hr);
  return hr;
}

// This question and the two behind it trace a refusal without its code, which the line of the refusal has.

HRESULT CPermissions::IsSourceURLPermitted(const CSourceURL* url) const {
  if (!sourcePermissions)
    return Reported(HERE, E_UNEXPECTED, "Missing source permissions.");
  if (!url)
    return Reported(HERE, E_INVALIDARG, "Missing source URL parameter.");
  const HRESULT hr = sourcePermissions->IsURLPermitted(url);
  if (FAILED(hr))
    LogErrorTrace(HERE, S_OK);
  return hr;
}

HRESULT CPermissions::IsExtensionPermitted(const char* extension) const {
  if (!sourcePermissions)
    return Reported(HERE, E_UNEXPECTED, "Missing source permissions.");
  if (!extension)
    return Reported(HERE, E_INVALIDARG, "Missing source URL parameter.");  // sic: the wording of the URL question
  const HRESULT hr = sourcePermissions->IsExtensionPermitted(extension);
  if (FAILED(hr))
    LogErrorTrace(HERE, S_OK);
  return hr;
}

HRESULT CPermissions::IsDestinationPermitted(const CDestinationFolder* folder) const {
  if (!destinationPermissions)
    return Reported(HERE, E_UNEXPECTED, "Missing destination permissions.");
  if (!folder)
    return Reported(HERE, E_INVALIDARG, "Missing destination folder parameter.");
  const HRESULT hr = destinationPermissions->IsFolderPermitted(folder);
  if (FAILED(hr))
    LogErrorTrace(HERE, S_OK);
  return hr;
}

HRESULT CPermissions::CheckSignature(const char* /*localFile*/) const {
  return S_OK;
}

HRESULT CPermissions::CheckWrittenFile(const char* /*localFile*/) const {
  return S_OK;
}
