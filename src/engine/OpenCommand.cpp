#include "engine/OpenCommand.h"

#include <new>

#include "common/SystemError.h"
#include "engine/CommandCollector.h"
#include "log/LogFile.h"

namespace {

constexpr SourceFile kSourceFile = {"OpenCommand"};

std::unique_ptr<CCommand> MakeOpenCommand(IXMLDOMNode* node, HRESULT* result) {
  return std::unique_ptr<CCommand>(new (std::nothrow) COpenCommand(node, result));
}

constexpr CommandKind kOpenKind = {L"Open", "Failed to create open command.", kSourceFile.name, MakeOpenCommand};

}  // namespace

COpenCommand::COpenCommand(IXMLDOMNode* node, HRESULT* result) : CCopyCommand(node, result) {
  HRESULT hr = GetReadingCode();
  if (!node) {
    hr = Reported(HERE, E_INVALIDARG, "Missing 'OpenNode' XML node parameter.");
  } else if (FAILED(hr)) {
    LogError(HERE, hr, "Creation of 'Copy' portion of 'Open' command failed.");
  } else {
    const HRESULT browserResult = ReadBrowser(node);
    if (FAILED(browserResult))
      hr = Traced(HERE, browserResult);
  }
  if (result)
    *result = hr;
}

void COpenCommand::Dump() const {
  LogText("OpenCommand");
}

HRESULT COpenCommand::ReadBrowser(IXMLDOMNode* node) {
  BString value;
  const HRESULT hr = GetAttributeText(node, L"browser", value);
  if (SUCCEEDED(hr))
    browser = EqualsNoCase(value.Get(), L"true");
  return hr;
}

HRESULT COpenCommand::Execute(DWORD context, const CPermissions* permissions, BSTR* navigateURL) {
  if (browser && !navigateURL)
    return Reported(HERE, E_INVALIDARG, "Need navigate URL parameter if launched in a browser.");
  const HRESULT copied = CCopyCommand::Execute(context, permissions, nullptr);
  if (FAILED(copied))
    return Reported(HERE, copied, "'Copy' portion of 'Open' command failed.");
  if (GetDestinationKind() == FolderKind::Cookie) {
    LogWarning(HERE, E_FAIL, "Cannot OPEN \"Cookie\" folder destination file.  Only COPY allowed to this folder.");
    return copied;
  }
  const HRESULT opened = browser ? StoreNavigateURL(navigateURL) : Start();
  return FAILED(opened) ? opened : copied;
}

HRESULT COpenCommand::StoreNavigateURL(BSTR* navigateURL) const {
  const BString base = JoinBStrings(WideText("file://"), WideText(GetFolder()));
  const BString folder = JoinBStrings(base, WideText("\\"));
  BString url = JoinBStrings(folder, WideText(GetFileName()));
  if (!url)
    return Traced(HERE, E_OUTOFMEMORY);
  *navigateURL = url.Detach();
  return S_OK;
}

HRESULT COpenCommand::Start() const {
  if (!GetFileName() || !GetFolder())
    return Traced(HERE, E_OUTOFMEMORY);  // there was no memory to keep them, or the file's name is bare (a relative `Path`)
  if (GetMachine().Open(GetFileName(), GetFolder()))
    return S_OK;
  LogError(HERE, ResultFromLastError(), "Failed to start '%s'.", GetFileName());
  return E_FAIL;  // the caller gets this one, whatever the system's own code
}

HRESULT CollectOpenCommands(IXMLDOMDocument2* document, std::unique_ptr<CListItem>* chain) {
  if (!document)
    return Reported(HERE, E_INVALIDARG, "'Open' missing XML document parameter.");
  if (!chain)
    return Reported(HERE, E_INVALIDARG, "'Open' missing command list return value parameter.");
  CListBuilder commands;
  const HRESULT hr = CollectCommands(document, kOpenKind, commands);
  *chain = commands.Take();
  return hr;
}
