#include "transfer/FileUtilities.h"

#include "common/FolderTree.h"
#include "common/Handles.h"
#include "common/SystemError.h"
#include "log/LogFile.h"

namespace {

constexpr SourceFile kSourceFile = {"FileUtilities"};

}  // namespace

HRESULT CreatePath(const char* path, FileSystem& files) {
  return CreateFolderTree(path, files);
}

HRESULT GetFileWriteTime(const char* path, FILETIME& time) {
  time = {};
  const FileHandle file(CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file)
    return Reported(HERE, ResultFromLastError(), "Unable to read '%s'.", path);
  FILETIME written;
  if (!GetFileTime(file.Get(), nullptr, nullptr, &written))
    return Reported(HERE, ResultFromLastError(), "File Time for '%s' failed.", path);
  time = written;
  return S_OK;
}
