#include "permissions/PermissionList.h"

#include "log/LogFile.h"

using Microsoft::WRL::ComPtr;

EntryTexts::EntryTexts(const char* ownerFile, IXMLDOMNode* container, const wchar_t* name) : sourceFile(ownerFile) {
  HRESULT hr = SelectNodes(container, name, &nodes);
  if (SUCCEEDED(hr))
    hr = nodes->get_length(&length);
  if (SUCCEEDED(hr))
    hr = nodes->reset();
  if (FAILED(hr)) {
    LogErrorTrace(__LINE__, sourceFile, hr);
    length = 0;
  }
}

bool EntryTexts::Next(BString& text) {
  if (index >= length)
    return false;
  ComPtr<IXMLDOMNode> node;
  HRESULT hr = nodes->get_item(index++, &node);
  if (SUCCEEDED(hr))
    hr = node ? node->get_text(text.Receive()) : E_FAIL;
  if (SUCCEEDED(hr) && !text)
    hr = E_FAIL;
  if (SUCCEEDED(hr))
    return true;
  LogErrorTrace(__LINE__, sourceFile, hr);
  index = length;
  return false;
}

bool AppendEntry(const char* ownerFile, std::unique_ptr<CListItem> entry, HRESULT constructionCode, CListBuilder& list) {
  // A missing entry is reported as a bad pointer, not as missing memory: callers have always seen it so.
  const HRESULT hr = entry ? constructionCode : E_POINTER;
  if (FAILED(hr)) {
    LogErrorTrace(__LINE__, ownerFile, hr);
    return false;
  }
  list.Append(entry.release());
  return true;
}

HRESULT FindInList(const char* ownerFile, CListItem* list, const CListItem* candidate, const char* debugLabel) {
  if (!candidate)
    return Failed(__LINE__, ownerFile, E_INVALIDARG, "No Item");
  if (!list)
    return Failed(__LINE__, ownerFile, E_INVALIDARG, "No List");
  if (debugLabel && GetDebugLogging()) {
    LogText(debugLabel);
    candidate->Dump();
    LogText("\r\n");
  }
  for (CListIterator items(list); items.HasMore();) {
    if (items.Next()->Compare(candidate) == 0)
      return S_OK;
  }
  return E_ACCESSDENIED;
}

void DumpList(const char* ownerFile, CListItem* list) {
  if (!list) {
    LogError(__LINE__, ownerFile, E_INVALIDARG, "Missing List.");
    return;
  }
  for (CListIterator items(list); items.HasMore();) {
    LogText("\t\t");
    items.Next()->Dump();
    LogText("\r\n");
  }
}
