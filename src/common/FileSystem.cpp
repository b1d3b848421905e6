#include "common/FileSystem.h"

namespace {

class SystemFileSystem final : public FileSystem {};

}  // namespace

DWORD FileSystem::GetAttributes(const char* path) const {
  return GetFileAttributesA(path);
}

bool FileSystem::SetAttributes(const char* path, DWORD attributes) {
  return SetFileAttributesA(path, attributes) != FALSE;
}

bool FileSystem::CreateFolder(const char* path) {
  return CreateDirectoryA(path, nullptr) != FALSE;
}

bool FileSystem::Move(const char* from, const char* to) {
  return MoveFileA(from, to) != FALSE;
}

bool FileSystem::Delete(const char* path) {
  return DeleteFileA(path) != FALSE;
}

FileSystem& SystemFiles() {
  static SystemFileSystem files;
  return files;
}
