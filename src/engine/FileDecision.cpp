#include "engine/FileDecision.h"

#include <cstring>

#include "common/PathText.h"
#include "common/SystemError.h"

namespace {

constexpr int kLastNumber = 999;
constexpr std::size_t kNumberLength = 4;  // ".000"

// Where the number goes: at the last dot of the whole path, else at its end; four characters before the end of a name that
// has no room for more.
char* FindNumberPlace(char* fileName) {
  const std::size_t length = std::strlen(fileName);
  if (length + kNumberLength + 1 > MAX_PATH)
    return fileName + length - kNumberLength;
  return fileName + (LastDot(fileName) - fileName);
}

// Writes into `newName` the first name of 000 to 999 that is not taken; false, with the last one of them, when all are.
bool FindFreeName(const char* fileName, const Machine& machine, char (&newName)[MAX_PATH]) {
  lstrcpynA(newName, fileName, MAX_PATH);
  char* const numberPlace = FindNumberPlace(newName);
  for (int number = 0; number <= kLastNumber; ++number) {
    wsprintfA(numberPlace, ".%03d", number);
    if (!machine.Exists(newName))
      return true;
  }
  return false;
}

void DecideUpdate(const char* fileName, bool force, const CXMLFileTime& time, const Machine& machine,
                  FileDecision& decision) {
  FILETIME existing;
  const HRESULT hr = machine.GetWriteTime(fileName, existing);
  if (FAILED(hr))
    decision.Refuse(FileRefusal::NoTime, hr);
  else if (time.CompareTo(&existing) > 0)
    DecideOverwrite(fileName, force, machine, decision);
  else
    decision.Set(FileAction::LeaveAlone, S_FALSE);
}

}  // namespace

void DecideOnExistingFile(IfFileExists policy, const char* fileName, bool force, const CXMLFileTime& time,
                          const Machine& machine, FileDecision& decision) {
  switch (policy) {
    case IfFileExists::Skip:
      return decision.Set(FileAction::LeaveAlone, S_FALSE);
    case IfFileExists::Cancel:
      return decision.Set(FileAction::Cancel, kCancelledResult);
    case IfFileExists::Update:
      return DecideUpdate(fileName, force, time, machine, decision);
    case IfFileExists::Overwrite:
    case IfFileExists::Rename:
      break;
  }
  DecideOverwrite(fileName, force, machine, decision);
  if (policy == IfFileExists::Rename && decision.action != FileAction::Refuse)
    DecideRename(fileName, machine, decision);
}

void DecideOverwrite(const char* fileName, bool force, const Machine& machine, FileDecision& decision) {
  const DWORD attributes = machine.GetAttributes(fileName);
  if (attributes == INVALID_FILE_ATTRIBUTES)
    return decision.Refuse(FileRefusal::NotFound, ResultFromLastError());
  const bool isProtected = (attributes & kProtectingAttributes) != 0;
  if (isProtected && !force)
    return decision.Refuse(FileRefusal::Protected, E_ACCESSDENIED);
  decision.losesProtection = isProtected;
}

void DecideRename(const char* fileName, const Machine& machine, FileDecision& decision) {
  // A source URL without a file name, or with "..", names a folder; that one stays where it is.
  const DWORD attributes = machine.GetAttributes(fileName);
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
    return decision.Refuse(FileRefusal::Folder, E_ACCESSDENIED);
  decision.Set(FileAction::MoveAside, S_OK);
  decision.isNewNameTaken = !FindFreeName(fileName, machine, decision.newName);
}
