#include "engine/Manifest.h"

#include <new>

#include "engine/CopyCommand.h"
#include "engine/OpenCommand.h"
#include "log/LogFile.h"
#include "transfer/DestinationFolder.h"
#include "transfer/Transfer.h"

namespace {

constexpr SourceFile kSourceFile = {"Manifest"};

}  // namespace

CManifest::CManifest(DWORD executerContext, const wchar_t* manifestURL, HRESULT* result) : context(executerContext) {
  const HRESULT hr = Initialize(manifestURL);
  if (result)
    *result = hr;
}

HRESULT CManifest::Initialize(const wchar_t* manifestURL) {
  if (!manifestURL || !*manifestURL)
    return Reported(HERE, E_INVALIDARG, "Missing manifest URL parameter.");
  HRESULT hr = S_OK;
  sourceURL.reset(new (std::nothrow) CSourceURL(manifestURL, SourceRole::Manifest, &hr));
  if (!sourceURL)
    return Reported(HERE, E_OUTOFMEMORY, "Failed to create 'SourceURL' class instance.");
  if (FAILED(hr)) {
    sourceURL.reset();
    return Reported(HERE, hr, "Failed to create 'SourceURL' class instance.");
  }
  hr = CreateXMLDocument(&document);
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to create 'XMLDocument' class instance.");
  return hr;
}

HRESULT CManifest::Read(const CPermissions* permissions, Machine& machine) {
  if (!sourceURL)
    return Reported(HERE, E_UNEXPECTED, "Missing manifest source URL.");
  if (!document)
    return Reported(HERE, E_UNEXPECTED, "Missing 'XMLDocument' class instance.");
  if (!permissions)
    return Reported(HERE, E_INVALIDARG, "Missing permissions parameter.");
  HRESULT hr = CheckURL(*permissions);
  if (FAILED(hr))
    return hr;
  OwnedText localFile;
  hr = Fetch(machine, localFile);
  if (FAILED(hr))
    return hr;
  return Load(*permissions, localFile.get());
}

HRESULT CManifest::CheckURL(const CPermissions& permissions) const {
  const HRESULT hr = permissions.IsSourceURLPermitted(sourceURL.get());
  if (hr == E_ACCESSDENIED)
    LogWarning(HERE, hr, "Manifest '%s' is not permitted.", sourceURL->GetURL());
  else if (FAILED(hr))
    LogErrorTrace(HERE, hr);
  return hr;
}

HRESULT CManifest::Fetch(Machine& machine, OwnedText& localFile) const {
  HRESULT hr = S_OK;
  const std::unique_ptr<CDestinationFolder> cache(new (std::nothrow) CDestinationFolder(FolderKind::InternetCache, &hr));
  if (!cache)
    return Reported(HERE, E_OUTOFMEMORY, "Failed to create 'DestinationFolder' class instance.");
  if (FAILED(hr))
    return Traced(HERE, hr);
  hr = cache->GetDestinationFile(sourceURL.get(), &localFile);
  if (FAILED(hr))
    return Traced(HERE, hr);
  hr = machine.Fetch(sourceURL->GetLocation(), localFile.get(), FILE_ATTRIBUTE_NORMAL, nullptr,
                     kTransferXMLDocument | kTransferManifest, nullptr);
  if (FAILED(hr)) {
    cache->DiscardCacheFile(localFile.get());
    return Reported(HERE, hr, "Failed to copy '%s' to '%s'.", sourceURL->GetURL(), localFile.get());
  }
  hr = cache->CommitToCache(sourceURL.get(), localFile.get());
  if (FAILED(hr)) {
    cache->DiscardCacheFile(localFile.get());
    return Traced(HERE, hr);
  }
  return hr;
}

HRESULT CManifest::Load(const CPermissions& permissions, const char* localFile) {
  HRESULT hr = permissions.CheckSignature(localFile);
  if (hr == E_ACCESSDENIED)
    LogWarning(HERE, hr, "Signature on '%s' invalid.", localFile);
  if (FAILED(hr))
    return hr;
  hr = LoadXMLDocument(localFile, document.Get(), TRUE);
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to read XML document '%s'.", localFile);
  hr = BuildCommands();
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to parse XML document '%s'.", localFile);
  return hr;
}

HRESULT CManifest::BuildCommands() {
  HRESULT hr = CollectCopyCommands(document.Get(), &commands);
  if (FAILED(hr))
    return Traced(HERE, hr);

  std::unique_ptr<CListItem> opening;
  hr = CollectOpenCommands(document.Get(), &opening);
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (commands)
    commands->Append(std::move(opening));
  else
    commands = std::move(opening);
  return hr;
}
