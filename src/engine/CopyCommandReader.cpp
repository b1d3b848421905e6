// How a `Copy` element is read.

#include "common/Windows.h"

#include <wrl/client.h>

#include <new>

#include "common/PathText.h"
#include "engine/CommandCollector.h"
#include "engine/CopyCommand.h"
#include "log/LogFile.h"
#include "transfer/Transfer.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"CopyCommand", 1000};

struct DestinationQuery {
  const wchar_t* pattern;
  FolderKind kind;
};

// The first of these that is there, and can be resolved, is the destination; without any it is the Internet cache.
constexpr DestinationQuery kDestinationQueries[] = {
    {L"Destination/Path", FolderKind::Path},
    {L"Destination/Personal", FolderKind::Personal},
    {L"Destination/Documents", FolderKind::Documents},
    {L"Destination/Temp", FolderKind::Temp},
    {L"Destination/VantorUser", FolderKind::VantorUser},
    {L"Destination/LocalApplicationData", FolderKind::LocalApplicationData},
    {L"Destination/LocalVantorData", FolderKind::LocalVantorData},
    {L"Destination/CommonApplicationData", FolderKind::CommonApplicationData},
    {L"Destination/CommonVantorData", FolderKind::CommonVantorData},
    {L"Destination/ApplicationData", FolderKind::ApplicationData},
    {L"Destination/VantorData", FolderKind::VantorData},
};

struct PolicyQuery {
  const wchar_t* pattern;
  IfFileExists policy;
  bool hasForce;
};

constexpr PolicyQuery kPolicyQueries[] = {
    {L"Destination/IfFileExists/Overwrite", IfFileExists::Overwrite, true},
    {L"Destination/IfFileExists/Skip", IfFileExists::Skip, false},
    {L"Destination/IfFileExists/Cancel", IfFileExists::Cancel, false},
    {L"Destination/IfFileExists/Rename", IfFileExists::Rename, false},
    {L"Destination/IfFileExists/Update", IfFileExists::Update, true},
};

// Makes the destination, of an element's text or of a kind alone. True when the search for a destination is over: there is
// one now, or no memory for one. A folder that cannot be resolved leaves the search to the next query. `hr` tells which.
bool MakeDestination(FolderKind kind, const wchar_t* text, std::unique_ptr<CDestinationFolder>& destination, HRESULT& hr) {
  std::unique_ptr<CDestinationFolder> made(
      text ? new (std::nothrow) CDestinationFolder(kind, text, &hr) : new (std::nothrow) CDestinationFolder(kind, &hr));
  if (!made) {
    hr = Traced(HERE, E_POINTER);
    return true;
  }
  if (FAILED(hr)) {
    LogErrorTrace(HERE, hr);
    return false;
  }
  destination = std::move(made);
  return true;
}

bool ReadForce(IXMLDOMNode* policyElement) {
  BString value;
  const HRESULT hr = GetAttributeText(policyElement, L"force", value);
  if (FAILED(hr))
    LogErrorTrace(HERE, hr);
  return EqualsNoCase(value.Get(), L"true");
}

std::unique_ptr<CCommand> MakeCopyCommand(IXMLDOMNode* node, HRESULT* result) {
  return std::unique_ptr<CCommand>(new (std::nothrow) CCopyCommand(node, result));
}

constexpr CommandKind kCopyKind = {L"Copy", "Failed to create copy command.", kSourceFile.name, MakeCopyCommand};

}  // namespace

HRESULT CCopyCommand::Read(IXMLDOMNode* node) {
  HRESULT hr = ReadSource(node);
  if (FAILED(hr))
    return hr;
  hr = ReadDestination(node);
  if (FAILED(hr))
    return Traced(HERE, hr);
  ReadFileName(node);
  const FolderKind kind = GetDestinationKind();
  if (kind != FolderKind::Cookie && kind != FolderKind::InternetCache) {
    ReadAttributes(node);
    ReadPolicy(node);
    ReadFileTime(node);
  } else {
    ReadExpireTime(node);
  }
  if (FAILED(GetNodeText(node, L"NotFoundHTML", notFoundText)))
    notFoundText.reset();
  return hr;
}

HRESULT CCopyCommand::ReadSource(IXMLDOMNode* node) {
  BString url;
  HRESULT hr = GetNodeTextW(node, L"Source", url);
  if (FAILED(hr))
    return Traced(HERE, hr);
  source.reset(new (std::nothrow) CSourceURL(url.Get(), SourceRole::Command, &hr));
  if (!source)
    return Traced(HERE, E_POINTER);
  if (FAILED(hr))
    source.reset();
  return hr;
}

HRESULT CCopyCommand::ReadDestination(IXMLDOMNode* node) {
  HRESULT hr = S_OK;
  for (const DestinationQuery& query : kDestinationQueries) {
    BString text;
    if (SUCCEEDED(GetNodeTextW(node, query.pattern, text)) && MakeDestination(query.kind, text.Get(), destination, hr))
      return hr;
  }
  if (NodeExists(node, L"Destination/Cookie") && MakeDestination(FolderKind::Cookie, nullptr, destination, hr))
    return hr;
  MakeDestination(FolderKind::InternetCache, nullptr, destination, hr);
  return hr;
}

void CCopyCommand::ReadFileName(IXMLDOMNode* node) {
  const bool isCookie = GetDestinationKind() == FolderKind::Cookie;
  if (isCookie)
    transferFlags = kTransferCookie;
  const wchar_t* const pattern = isCookie ? L"Destination/Cookie/Extension" : L"Destination/FileName";
  if (GetNodeText(node, pattern, fileName) == S_OK)
    return;
  fileName = CopyText(isCookie ? source->GetExtension() : source->GetFileName());
}

void CCopyCommand::ReadAttributes(IXMLDOMNode* node) {
  if (NodeExists(node, L"Destination/Attributes/ReadOnly"))
    fileAttributes |= FILE_ATTRIBUTE_READONLY;
  if (NodeExists(node, L"Destination/Attributes/Hidden"))
    fileAttributes |= FILE_ATTRIBUTE_HIDDEN;
}

void CCopyCommand::ReadPolicy(IXMLDOMNode* node) {
  for (const PolicyQuery& query : kPolicyQueries) {
    ComPtr<IXMLDOMNode> element;
    if (FAILED(SelectNode(node, query.pattern, &element)))
      continue;
    policy = query.policy;
    force = query.hasForce && ReadForce(element.Get());
    return;
  }
}

void CCopyCommand::ReadFileTime(IXMLDOMNode* node) {
  OwnedText text;
  if (SUCCEEDED(GetNodeText(node, L"Destination/Attributes/FileTime", text))) {
    time.SetText(text.get());
    return;
  }
  FILETIME sourceTime;
  if (source->IsLocal() && SUCCEEDED(GetFileWriteTime(source->GetLocation(), sourceTime)))
    time.SetFileTime(&sourceTime);
}

void CCopyCommand::ReadExpireTime(IXMLDOMNode* node) {
  const bool isCookie = GetDestinationKind() == FolderKind::Cookie;
  OwnedText text;
  if (SUCCEEDED(
          GetNodeText(node, isCookie ? L"Destination/Cookie/ExpireTime" : L"Destination/InternetCache/ExpireTime", text)))
    time.SetText(text.get());
}

HRESULT CollectCopyCommands(IXMLDOMDocument2* document, std::unique_ptr<CListItem>* chain) {
  if (!document)
    return Reported(HERE, E_INVALIDARG, "'Copy' missing XML document parameter.");
  if (!chain)
    return Reported(HERE, E_INVALIDARG, "'Copy' missing command list return value parameter.");
  CListBuilder commands;
  // The failure was logged, and shows in the chain: what came before it is run.
  static_cast<void>(CollectCommands(document, kCopyKind, commands));
  *chain = commands.Take();
  return S_OK;
}
