#include "permissions/DestinationPermission.h"

#include <new>

#include "log/LogFile.h"
#include "permissions/PermissionList.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr char kSourceFile[] = "DestinationPermission";

struct KindName {
  const wchar_t* name;
  FolderKind kind;
};

// The order of the list, whatever the order of the document. A valid file has no Cookie element; it is asked for all the
// same.
constexpr KindName kKindNames[] = {
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

// A bad entry ends its own name's entries only.
void ReadFolders(IXMLDOMNode* destination, const KindName& kindName, CListBuilder& list) {
  EntryTexts entries(kSourceFile, destination, kindName.name);
  for (BString text; entries.Next(text);) {
    HRESULT hr = S_OK;
    std::unique_ptr<CListItem> folder(new (std::nothrow) CDestinationFolder(kindName.kind, text.Get(), &hr));
    if (!AppendEntry(kSourceFile, std::move(folder), hr, list))
      break;
  }
}

}  // namespace

CDestinationPermission::CDestinationPermission(IXMLDOMDocument2* document, HRESULT* result) {
  const HRESULT hr = Read(document);
  if (GetDebugLogging()) {
    LogText("\tPermitted Destinations:\r\n");
    DumpList(kSourceFile, folderList.get());
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
  for (const KindName& kindName : kKindNames)
    ReadFolders(destination.Get(), kindName, list);
  folderList.reset(list.Take());
  return S_OK;
}

HRESULT CDestinationPermission::IsFolderPermitted(const CDestinationFolder* folder) const {
  if (!folderList)
    return Traced(HERE, E_UNEXPECTED);
  if (!folder)
    return Traced(HERE, E_INVALIDARG);
  const HRESULT hr = FindInList(kSourceFile, folderList.get(), folder, "Checking Destination: ");
  if (hr == E_ACCESSDENIED) {
    LogError(HERE, hr, "Destination folder '%s' doesn't have permission.", folder->GetPath());
    LogText("\tPermitted destination folders:\r\n");
    DumpList(kSourceFile, folderList.get());
  }
  return hr;
}
