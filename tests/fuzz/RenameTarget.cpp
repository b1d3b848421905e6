// Where the number of a file that is moved aside goes.

#include "common/Windows.h"

#include <algorithm>

#include "Target.h"
#include "engine/ExistingFile.h"
#include "support/ImportPatch.h"

namespace {

constexpr std::size_t kLongestPath = 259;
constexpr int kLastNumber = 999;

std::string Numbered(const std::string& fileName, int number) {
  const std::string path = fileName.substr(0, kLongestPath);
  std::size_t place = path.size();
  if (path.size() + 5 > MAX_PATH) {
    place = path.size() - 4;
  } else {
    const std::size_t dot = WithoutDoubleBytes(path).find_last_of('.');
    place = dot == std::string::npos ? place : dot;
  }
  const std::string digits = std::to_string(1000 + number).substr(1);
  return path.substr(0, place) + "." + digits;
}

// How many numbers are taken; a thousand of them seldom, because they take so long.
int TakenNumbers(Input& input) {
  const unsigned byte = input.TakeByte();
  if (byte < 0xFF)
    return static_cast<int>(byte % 4);
  return input.TakeByte() == 0xFF ? kLastNumber + 1 : 12;
}

}  // namespace

void FuzzRename(Input& input) {
  const unsigned choices = input.TakeByte();
  UseCodePage(choices & 1);
  const bool isFolder = (choices & 6) == 6;
  const bool isMoved = !(choices & 8);
  const bool isDeleted = !(choices & 16);
  const int taken = TakenNumbers(input);
  const std::string fileName = UpToZero(input.TakeRuns());
  const int last = std::min(taken, kLastNumber);
  const std::string wanted = Numbered(fileName, last);
  int asked = -1;  // the first question is about the file itself
  bool isDeletionAsked = false;
  bool isMoveAsked = false;

  PATCH_IMPORT(files, GetFileAttributesA, [&](auto, const char* name) -> DWORD {
    const int number = std::min(asked++, last);  // the chosen name is asked for twice
    HOLDS(name == (number < 0 ? fileName : Numbered(fileName, number)));
    if (number < 0 && isFolder)
      return FILE_ATTRIBUTE_DIRECTORY;
    return number < taken ? DWORD{FILE_ATTRIBUTE_ARCHIVE} : INVALID_FILE_ATTRIBUTES;
  });
  PATCH_IMPORT(deletions, DeleteFileA, [&](auto, const char* name) -> BOOL {
    isDeletionAsked = true;
    HOLDS(name == wanted && taken > kLastNumber);
    SetLastError(ERROR_ACCESS_DENIED);
    return isDeleted;
  });
  PATCH_IMPORT(moves, MoveFileA, [&](auto, const char* name, const char* newName) -> BOOL {
    isMoveAsked = true;
    HOLDS(name == fileName && newName == wanted);
    HOLDS(std::string(newName).size() <= kLongestPath);
    SetLastError(ERROR_ALREADY_EXISTS);
    return isMoved;
  });
  const HRESULT hr = RenameExistingFile(fileName.c_str());

  HOLDS(isMoveAsked == !isFolder);
  HOLDS(isDeletionAsked == (!isFolder && taken > kLastNumber));
  HOLDS(hr == (isFolder ? E_ACCESSDENIED : isMoved ? S_OK : HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS)));
}
