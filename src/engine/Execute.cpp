#include "engine/Execute.h"

#include <new>

#include "common/ModulePath.h"
#include "engine/Command.h"
#include "engine/Manifest.h"
#include "log/LogFile.h"
#include "transfer/DocumentType.h"

namespace {

constexpr SourceFile kSourceFile = {"Execute"};
constexpr wchar_t kPermitFileName[] = L"permit.xml";

}  // namespace

CExecuter::CExecuter(DWORD executerContext, HRESULT* result, const wchar_t* permitFile) : context(executerContext) {
  SetLogFileName(kPermitFileName);
  initialized = CoInitialize(nullptr);  // a thread of another apartment kind serves as well
  const HRESULT hr = ReadPermissions(permitFile ? permitFile : kPermitFileName);
  BuildSystemLines(GetModuleFolder());
  if (result)
    *result = hr;
}

// The lines are everybody's: an executer that outlives this one goes without them until another one is made.
CExecuter::~CExecuter() {
  FreeSystemLines();
  permissions.reset();
  if (SUCCEEDED(initialized))
    CoUninitialize();
}

HRESULT CExecuter::ReadPermissions(const wchar_t* permitFile) {
  HRESULT hr = S_OK;
  permissions.reset(new (std::nothrow) CPermissions(context, permitFile, &hr));
  if (!permissions)
    return ReportedW(HERE, E_OUTOFMEMORY, L"Failed to create permissions from '%s'.", permitFile);
  if (FAILED(hr)) {
    permissions.reset();
    return ReportedW(
        HERE, hr, L"An error occured while reading permissions from '%s'.  Destroying permissions.", permitFile);
  }
  return hr;
}

HRESULT CExecuter::Run(const wchar_t* manifestURL, BSTR* navigateURL, Machine& machine, RunObserver* observer) {
  if (!permissions)
    return Reported(HERE, E_UNEXPECTED, "Missing permissions.");
  SetLogFileName(manifestURL);
  HRESULT hr = permissions->IsManifestURLPermitted(manifestURL);
  if (FAILED(hr))
    return ReportedW(HERE, hr, L"Manifest URL '%s' is not permitted.", manifestURL);

  CManifest* const allocated = new (std::nothrow) CManifest(context, manifestURL, &hr);
  const std::unique_ptr<CManifest> manifest(allocated);
  if (!manifest)
    return ReportedW(HERE, E_OUTOFMEMORY, L"Failed to create a manifest from %s.", manifestURL);
  if (SUCCEEDED(hr))
    hr = manifest->Read(permissions.get(), machine);
  if (FAILED(hr))
    return hr;

  hr = S_OK;
  for (CListIterator commands = manifest->CommandIterator(); commands.HasMore();) {
    CCommand& command = *static_cast<CCommand*>(commands.Next());
    command.SetSurroundings(machine, observer);
    if (observer)
      observer->CommandBegins(command);
    const HRESULT commandResult = command.Execute(context, permissions.get(), navigateURL);
    if (observer)
      observer->CommandEnded(command, commandResult);
    if (FAILED(commandResult)) {
      LogErrorTrace(HERE, commandResult);
      hr = S_FALSE;
    }
  }
  return hr;
}
