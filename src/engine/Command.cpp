#include "engine/Command.h"

#include <cstring>
#include <functional>

int CCommand::Compare(const CListItem* other) const {
  const CListItem* const self = this;
  if (self == other)
    return 0;
  return std::less<>()(self, other) ? -1 : 1;
}

bool CCommand::IsKindOf(const char* name) const {
  return name && !std::strcmp(name, "CCommand");
}

void CCommand::SetSurroundings(Machine& runMachine, RunObserver* runObserver) {
  machine = &runMachine;
  observer = runObserver;
}
