#pragma once

#include "common/Windows.h"

#include "common/ListItem.h"
#include "engine/Machine.h"
#include "engine/RunObserver.h"
#include "permissions/Permissions.h"

// A command of a manifest. Commands are kept in one chain and run in its order.
class CCommand : public CListItem {
 public:
  // By identity: 0 for the same object, else -1 or 1 as this one lies lower or higher in memory.
  int Compare(const CListItem* other) const override;

  // True for "CCommand", whatever the command.
  bool IsKindOf(const char* name) const override;

  // What the command works on, and who hears of its steps (may be null). They outlive the command; without this it works on
  // the system, and nobody hears of it.
  void SetSurroundings(Machine& runMachine, RunObserver* runObserver);

  // Carries the command out. `context` is the number that the executer was made with. `navigateURL` (may be null) is an
  // empty place for the URL that a browser is to go to; only a command that opens its file in a browser fills it, and the
  // string belongs to the caller. S_OK when it was carried out, S_FALSE when there was nothing to do, else the failure.
  [[nodiscard]] virtual HRESULT Execute(DWORD context, const CPermissions* permissions, BSTR* navigateURL) = 0;

 protected:
  Machine& GetMachine() const { return *machine; }
  RunObserver* GetObserver() const { return observer; }

 private:
  Machine* machine = &ThisMachine();
  RunObserver* observer = nullptr;
};
