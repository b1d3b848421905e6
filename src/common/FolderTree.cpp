#include "common/FolderTree.h"

#include <cstring>

#include "common/PathText.h"
#include "common/SystemError.h"

namespace {

constexpr std::size_t kLongestSystemPath = 32767;

// The path is cut at the boundary only for as long as this takes.
HRESULT CreateFolderUpTo(char* path, char* boundary, FileSystem& files) {
  const char boundaryCharacter = *boundary;
  *boundary = '\0';
  HRESULT hr = S_OK;
  // Another process may be making the same folder: that it exists afterwards is what counts.
  if (!files.Exists(path) && !files.CreateFolder(path) && GetLastError() != ERROR_ALREADY_EXISTS)
    hr = ResultFromLastError();
  *boundary = boundaryCharacter;
  return hr;
}

}  // namespace

HRESULT CreateFolderTree(const char* path, FileSystem& files) {
  if (files.Exists(path))
    return S_OK;

  char fullPath[MAX_PATH];
  const DWORD length = GetFullPathNameA(path, MAX_PATH, fullPath, nullptr);
  // A path that does not fit is told by the length on some systems, by an error on others; one that no system takes, by any.
  if (length >= MAX_PATH ||
      (length == 0 && (GetLastError() == ERROR_FILENAME_EXCED_RANGE || std::strlen(path) > kLongestSystemPath)))
    return E_OUTOFMEMORY;
  if (length == 0)
    return ResultFromLastError();

  // "C:\a\b" is walked from its start, "\\server\share\a" from behind its two backslashes; either way the first boundary
  // ends what cannot be created.
  const bool isNetworkPath = length < 2 || fullPath[1] != ':';
  char* position = isNetworkPath && length >= 2 ? fullPath + 2 : fullPath;
  for (bool firstBoundary = true;; firstBoundary = false) {
    while (*position && *position != '\\' && *position != '/')
      position += NextCharacter(position) - position;
    if (!firstBoundary) {
      const HRESULT hr = CreateFolderUpTo(fullPath, position, files);
      if (FAILED(hr))
        return hr;
    }
    if (!*position)
      return S_OK;
    ++position;
  }
}
