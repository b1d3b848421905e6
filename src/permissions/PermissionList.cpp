#include "permissions/PermissionList.h"

#include "log/LogFile.h"

using Microsoft::WRL::ComPtr;

namespace {

// These lines are signed with the name of the list's owner, as those of its second file.
constexpr SourceFile SignedBy(const char* ownerFile) {
  return {ownerFile, 1000};
}

}  // namespace

EntryTexts::EntryTexts(const char* ownerFile, IXMLDOMNode* container, const wchar_t* name)
    : sourceFile(SignedBy(ownerFile)) {
  HRESULT hr = SelectNodes(container, name, &nodes);
  if (SUCCEEDED(hr))
    hr = nodes->get_length(&length);
  if (SUCCEEDED(hr))
    hr = nodes->reset();
  if (FAILED(hr)) {
    LogErrorTrace(HERE_IN(sourceFile), hr);
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
  LogErrorTrace(HERE_IN(sourceFile), hr);
  index = length;
  return false;
}

bool AppendEntry(const char* ownerFile, std::unique_ptr<CListItem> entry, HRESULT constructionCode, CListBuilder& list) {
  // A missing entry is told as a bad pointer and not as missing memory. That is meant, and kept.
  const HRESULT hr = entry ? constructionCode : E_POINTER;
  if (FAILED(hr)) {
    LogErrorTrace(HERE_IN(SignedBy(ownerFile)), hr);
    return false;
  }
  list.Append(std::move(entry));
  return true;
}

const CListItem* FindMatch(CListItem* list, const CListItem& candidate) {
  for (CListIterator items(list); items.HasMore();) {
    const CListItem* const item = items.Next();
    if (item->Compare(&candidate) == 0)
      return item;
  }
  return nullptr;
}

HRESULT FindInList(const char* ownerFile, CListItem* list, const CListItem* candidate, const char* debugLabel) {
  if (!candidate)
    return Reported(HERE_IN(SignedBy(ownerFile)), E_INVALIDARG, "No Item");
  if (!list)
    return Reported(HERE_IN(SignedBy(ownerFile)), E_INVALIDARG, "No List");
  if (debugLabel && GetDebugLogging()) {
    LogText(debugLabel);
    candidate->Dump();
    LogText("\r\n");
  }
  return FindMatch(list, *candidate) ? S_OK : E_ACCESSDENIED;
}

void DumpList(const char* ownerFile, CListItem* list) {
  if (!list) {
    LogError(HERE_IN(SignedBy(ownerFile)), E_INVALIDARG, "Missing List.");
    return;
  }
  for (CListIterator items(list); items.HasMore();) {
    LogText("\t\t");
    items.Next()->Dump();
    LogText("\r\n");
  }
}
