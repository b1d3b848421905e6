#pragma once

#include "common/Windows.h"

#include <memory>

#include "engine/Machine.h"
#include "engine/RunObserver.h"
#include "permissions/Permissions.h"

// The engine's entry: reads the permission file once, when it is made, and then runs manifests under it. One executer lives
// as long as its control, on the control's thread, and holds COM initialised there.
class CExecuter {
 public:
  // `executerContext` is handed to every command and never looked at. `result` (may be null): S_OK, or the failure of the
  // permission file; after one every run fails. `permitFile` names another permission file than the one beside the module.
  CExecuter(DWORD executerContext, HRESULT* result, const wchar_t* permitFile = nullptr);
  ~CExecuter();
  CExecuter(const CExecuter&) = delete;
  CExecuter& operator=(const CExecuter&) = delete;

  // Runs the manifest of that URL: all its commands, whether or not those before them failed. The log is switched to the
  // file named after the manifest. `navigateURL` (may be null) is an empty place for the URL that a browser is to go to; the
  // string belongs to the caller. The commands work on `machine`; `observer` (may be null) hears of them.
  // S_OK; S_FALSE when a command failed; E_UNEXPECTED without permissions; else why the manifest could not be run.
  [[nodiscard]] HRESULT Run(const wchar_t* manifestURL, BSTR* navigateURL, Machine& machine = ThisMachine(),
                            RunObserver* observer = nullptr);

  // Null after a failure of the permission file.
  const CPermissions* GetPermissions() const { return permissions.get(); }

 private:
  HRESULT ReadPermissions(const wchar_t* permitFile);

  std::unique_ptr<CPermissions> permissions;
  DWORD context;
  HRESULT initialized;
};
