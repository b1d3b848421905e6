#include "engine/CopyCommand.h"

#include "common/PathText.h"
#include "log/LogFile.h"
#include "transfer/Transfer.h"
#include "transfer/URLText.h"

namespace {

constexpr SourceFile kSourceFile = {"CopyCommand"};

HRESULT CommandFailed(int line, HRESULT hr) {
  return Reported(line, kSourceFile.name, hr, "'Copy' command failed.");
}

}  // namespace

CCopyCommand::CCopyCommand(IXMLDOMNode* node, HRESULT* result) {
  if (!node) {
    readingCode = Reported(HERE, E_INVALIDARG, "Missing 'CopyNode' XML node parameter.");
  } else {
    readingCode = Read(node);
    if (FAILED(readingCode))
      LogErrorTrace(HERE, readingCode);
  }
  if (result)
    *result = readingCode;
}

void CCopyCommand::Dump() const {
  LogText("CopyCommand");
}

FolderKind CCopyCommand::GetDestinationKind() const {
  return destination ? destination->GetKind() : FolderKind::InternetCache;
}

void CCopyCommand::SetWrittenFile(const char* writtenFile) {
  fileName.reset();
  folder.reset();
  if (writtenFile && GetDestinationKind() != FolderKind::Cookie)
    SplitURL(writtenFile, folder, fileName,
             nullptr);  // a bare name (of a relative `Path`, from a source without one) is a folder
}

HRESULT CCopyCommand::Execute(DWORD /*context*/, const CPermissions* permissions, BSTR* /*navigateURL*/) {
  if (!source)
    return Reported(HERE, E_UNEXPECTED, "'Copy' command missing source URL.");
  if (!destination)
    return Reported(HERE, E_UNEXPECTED, "'Copy' command missing destination folder.");
  if (!fileName)
    return Reported(HERE, E_UNEXPECTED, "'Copy' command missing destination file.");
  if (!permissions)
    return Reported(HERE, E_INVALIDARG, "'Copy' command missing 'Permissions' parameter.");
  sourceText.reset();
  folder.reset();

  HRESULT hr = CheckPermissions(*permissions);
  if (FAILED(hr))
    return CommandFailed(__LINE__, hr);
  Machine& machine = GetMachine();
  hr = destination->CreateFolder(machine);
  if (FAILED(hr))
    return CommandFailed(__LINE__, hr);
  OwnedText destinationFile;
  hr = machine.GetDestinationFile(*destination, source.get(), &destinationFile);
  if (FAILED(hr))
    return CommandFailed(__LINE__, hr);

  if (GetObserver())
    GetObserver()->DestinationChosen(destinationFile.get());

  bool isLeftAlone = false;
  if (destination->FileExists(destinationFile.get(), machine)) {
    hr = HandleExistingFile(policy, destinationFile.get(), force, time, machine, GetObserver());
    if (hr == kCancelledResult)
      return Reported(HERE, hr, "File exists. 'Copy' command canceled.");
    if (FAILED(hr))
      return CommandFailed(__LINE__, hr);
    isLeftAlone = hr == S_FALSE;
  }
  sourceText = CopyText(source->GetURL());
  SetWrittenFile(destinationFile.get());
  if (isLeftAlone)
    return S_FALSE;

  hr = Fetch(destinationFile.get());
  if (FAILED(hr)) {
    destination->DiscardCacheFile(destinationFile.get());
    return CommandFailed(__LINE__, hr);
  }
  hr = machine.CommitToCache(*destination, source.get(), destinationFile.get());
  if (FAILED(hr)) {
    destination->DiscardCacheFile(destinationFile.get());
    return Traced(HERE, hr);
  }
  hr = permissions->CheckWrittenFile(destinationFile.get());
  return FAILED(hr) ? Traced(HERE, hr) : hr;
}

HRESULT CCopyCommand::CheckPermissions(const CPermissions& permissions) const {
  HRESULT hr = permissions.IsSourceURLPermitted(source.get());
  if (SUCCEEDED(hr))
    hr = permissions.IsDestinationPermitted(destination.get());
  if (SUCCEEDED(hr))
    hr = permissions.IsExtensionPermitted(GetCheckedExtension());
  return hr;
}

// A cookie's file name field holds the extension itself.
const char* CCopyCommand::GetCheckedExtension() const {
  return !fileName || GetDestinationKind() == FolderKind::Cookie ? fileName.get() : BehindLastDot(fileName.get());
}

HRESULT CCopyCommand::Fetch(const char* destinationFile) const {
  return GetMachine().Fetch(
      source->GetLocation(), destinationFile, fileAttributes, time.AsFileTime(), transferFlags, notFoundText.get());
}
