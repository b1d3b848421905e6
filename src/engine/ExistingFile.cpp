#include "engine/ExistingFile.h"

#include <cstring>

#include "common/PathText.h"
#include "common/SystemError.h"
#include "log/LogFile.h"
#include "transfer/FileUtilities.h"

namespace {

constexpr SourceFile kSourceFile = {"CopyCommand", 2000};
constexpr DWORD kProtection = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;

constexpr int kLastNumber = 999;
constexpr std::size_t kNumberLength = 4;  // ".000"

bool Exists(const char* fileName) {
  return GetFileAttributesA(fileName) != INVALID_FILE_ATTRIBUTES;
}

// The policy and the code of the write do not depend on this: a file that keeps its attributes refuses the write.
void ClearProtection(const char* fileName) {
  const DWORD attributes = GetFileAttributesA(fileName);
  if (attributes == INVALID_FILE_ATTRIBUTES || !SetFileAttributesA(fileName, attributes & ~kProtection))
    LogErrorTrace(HERE, ResultFromLastError());
}

HRESULT PrepareRename(const char* fileName, bool force) {
  HRESULT hr = PrepareOverwrite(fileName, force);
  if (SUCCEEDED(hr))
    hr = RenameExistingFile(fileName);
  return FAILED(hr) ? Traced(HERE, hr) : hr;
}

HRESULT PrepareUpdate(const char* fileName, bool force, const CXMLFileTime& time) {
  FILETIME existing;
  const HRESULT hr = GetFileWriteTime(fileName, existing);
  if (FAILED(hr))
    return Reported(HERE, hr, "Unable to retrieve file time from '%s'.", fileName);
  return time.CompareTo(&existing) > 0 ? PrepareOverwrite(fileName, force) : S_FALSE;
}

// Where the number goes: at the last dot of the whole path, else at its end; four characters before the end of a name that
// has no room for more.
char* FindNumberPlace(char* fileName) {
  const std::size_t length = std::strlen(fileName);
  if (length + kNumberLength + 1 > MAX_PATH)
    return fileName + length - kNumberLength;
  return fileName + (LastDot(fileName) - fileName);
}

// Writes into `newName` the first name of 000 to 999 that is not taken; false, with the last one of them, when all are.
bool FindFreeName(const char* fileName, char (&newName)[MAX_PATH]) {
  lstrcpynA(newName, fileName, MAX_PATH);
  char* const numberPlace = FindNumberPlace(newName);
  for (int number = 0; number <= kLastNumber; ++number) {
    wsprintfA(numberPlace, ".%03d", number);
    if (!Exists(newName))
      return true;
  }
  return false;
}

}  // namespace

HRESULT HandleExistingFile(IfFileExists policy, const char* fileName, bool force, const CXMLFileTime& time) {
  switch (policy) {
    case IfFileExists::Skip:
      return S_FALSE;
    case IfFileExists::Cancel:
      LogWarning(HERE, kCancelledResult, "'%s' exists, canceling operation.", fileName);
      return kCancelledResult;
    case IfFileExists::Rename:
      return PrepareRename(fileName, force);
    case IfFileExists::Update:
      return PrepareUpdate(fileName, force, time);
    case IfFileExists::Overwrite:
      break;
  }
  return PrepareOverwrite(fileName, force);
}

HRESULT PrepareOverwrite(const char* fileName, bool force) {
  const DWORD attributes = GetFileAttributesA(fileName);
  if (attributes == INVALID_FILE_ATTRIBUTES)
    return Traced(HERE, ResultFromLastError());
  if (!(attributes & kProtection))
    return S_OK;
  if (!force)
    return Traced(HERE, E_ACCESSDENIED);
  ClearProtection(fileName);
  return S_OK;
}

HRESULT RenameExistingFile(const char* fileName) {
  // A source URL without a file name, or with "..", names a folder; that one stays where it is.
  const DWORD attributes = GetFileAttributesA(fileName);
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
    return Reported(HERE, E_ACCESSDENIED, "Rename from '%s' to '%s' failed.", fileName, fileName);
  char newName[MAX_PATH];
  const bool isFree = FindFreeName(fileName, newName);
  if (!isFree && !DeleteFileA(newName))
    LogWarning(HERE, ResultFromLastError(), "Rename failed, deleted '%s' instead.", newName);
  if (!MoveFileA(fileName, newName))
    return Reported(HERE, ResultFromLastError(), "Rename from '%s' to '%s' failed.", fileName, newName);
  return S_OK;
}
