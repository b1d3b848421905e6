#include "engine/ExistingFile.h"

#include "common/SystemError.h"
#include "log/LogFile.h"

namespace {

constexpr SourceFile kSourceFile = {"CopyCommand", 2000};

// The policy and the code of the write do not depend on this: a file that keeps its attributes refuses the write.
void ClearProtection(const char* fileName, Machine& machine) {
  const DWORD attributes = machine.GetAttributes(fileName);
  if (attributes == INVALID_FILE_ATTRIBUTES || !machine.SetAttributes(fileName, attributes & ~kProtectingAttributes))
    LogErrorTrace(HERE, ResultFromLastError());
}

HRESULT RenameFailed(int line, const char* file, HRESULT hr, const char* fileName, const char* newName) {
  return Reported(line, file, hr, "Rename from '%s' to '%s' failed.", fileName, newName);
}

HRESULT Refuse(const FileDecision& decision, const char* fileName) {
  switch (decision.refusal) {
    case FileRefusal::NoTime:
      return Reported(HERE, decision.result, "Unable to retrieve file time from '%s'.", fileName);
    case FileRefusal::Folder:
      return RenameFailed(HERE, decision.result, fileName, fileName);
    default:
      return Traced(HERE, decision.result);
  }
}

HRESULT MoveAside(const FileDecision& decision, const char* fileName, Machine& machine) {
  const char* const newName = decision.newName;
  if (decision.isNewNameTaken && !machine.Delete(newName))
    LogWarning(HERE, ResultFromLastError(), "Rename failed, deleted '%s' instead.", newName);
  if (!machine.Move(fileName, newName))
    return RenameFailed(HERE, ResultFromLastError(), fileName, newName);
  return S_OK;
}

HRESULT CarryOut(const FileDecision& decision, const char* fileName, Machine& machine) {
  if (decision.losesProtection)
    ClearProtection(fileName, machine);
  switch (decision.action) {
    case FileAction::Refuse:
      return Refuse(decision, fileName);
    case FileAction::Cancel:
      LogWarning(HERE, decision.result, "'%s' exists, canceling operation.", fileName);
      break;
    case FileAction::MoveAside:
      return MoveAside(decision, fileName, machine);
    case FileAction::Replace:
    case FileAction::LeaveAlone:
      break;
  }
  return decision.result;
}

}  // namespace

HRESULT HandleExistingFile(IfFileExists policy, const char* fileName, bool force, const CXMLFileTime& time, Machine& machine,
                           RunObserver* observer) {
  FileDecision decision;
  DecideOnExistingFile(policy, fileName, force, time, machine, decision);
  if (observer)
    observer->ExistingFileDecided(decision);
  const HRESULT hr = CarryOut(decision, fileName, machine);
  return FAILED(hr) && policy == IfFileExists::Rename ? Traced(HERE, hr) : hr;
}

HRESULT PrepareOverwrite(const char* fileName, bool force, Machine& machine) {
  FileDecision decision;
  DecideOverwrite(fileName, force, machine, decision);
  return CarryOut(decision, fileName, machine);
}

HRESULT RenameExistingFile(const char* fileName, Machine& machine) {
  FileDecision decision;
  DecideRename(fileName, machine, decision);
  return CarryOut(decision, fileName, machine);
}
