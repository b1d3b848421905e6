#include "permissions/DestinationPermission.h"

#include <new>

#include "log/LogFile.h"
#include "permissions/PermissionList.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"DestinationPermission"};

void ReadFolders(IXMLDOMNode* destination, const FolderKindName& kindName, CListBuilder& list) {
  const auto make = [&kindName](const wchar_t* text, HRESULT* result) {
    return std::unique_ptr<CListItem>(new (std::nothrow) CDestinationFolder(kindName.kind, text, result));
  };
  ReadEntries(kSourceFile.name, destination, kindName.name, make, list);
}

}  // namespace

// The order of the list, whatever the order of the document. A valid file has no Cookie element; it is asked for all the
// same.
const FolderKindName kFolderKindNames[kFolderKinds] = {
    {L"Personal", FolderKind::Personal},
    {L"Documents", FolderKind::Documents},
    {L"VantorUser", FolderKind::VantorUser},
    {L"Cookie", FolderKind::Cookie},
    {L"InternetCache", FolderKind::InternetCache},
    {L"Temp", FolderKind::Temp},
    {L"LocalApplicationData", FolderKind::LocalApplicationData},
    {L"LocalVantorData", FolderKind::LocalVantorData},
    {L"ApplicationData", FolderKind::ApplicationData},
    {L"VantorData", FolderKind::VantorData},
    {L"CommonApplicationData", FolderKind::CommonApplicationData},
    {L"CommonVantorData", FolderKind::CommonVantorData},
    {L"Path", FolderKind::Path},
};

CDestinationPermission::CDestinationPermission(IXMLDOMDocument2* document, HRESULT* result) {
  const HRESULT hr = Read(document);
  if (GetDebugLogging()) {
    LogText("\tPermitted Destinations:\r\n");
    DumpList(kSourceFile.name, folderList.get());
  }
  if (result)
    *result = hr;
}

HRESULT CDestinationPermission::Read(IXMLDOMDocument2* document) {
  if (!document)
    return Traced(HERE, E_INVALIDARG);
  ComPtr<IXMLDOMNode> destination;
  const HRESULT hr = SelectDocumentNode(document, L"Destination", &destination);
  if (FAILED(hr))
    return Traced(HERE, hr);
  CListBuilder list;
  for (const FolderKindName& kindName : kFolderKindNames)  // a bad entry ends its own name's entries only
    ReadFolders(destination.Get(), kindName, list);
  folderList = list.Take();
  return S_OK;
}

const CListItem* CDestinationPermission::FindFolder(const CDestinationFolder& folder) const {
  return FindMatch(folderList.get(), folder);
}

HRESULT CDestinationPermission::IsFolderPermitted(const CDestinationFolder* folder) const {
  if (!folderList)
    return Traced(HERE, E_UNEXPECTED);
  if (!folder)
    return Traced(HERE, E_INVALIDARG);
  const HRESULT hr = FindInList(kSourceFile.name, folderList.get(), folder, "Checking Destination: ");
  if (hr == E_ACCESSDENIED) {
    LogError(HERE, hr, "Destination folder '%s' doesn't have permission.", folder->GetPath());
    LogText("\tPermitted destination folders:\r\n");
    DumpList(kSourceFile.name, folderList.get());
  }
  return hr;
}
