#include "common/ModulePath.h"

#include <cstring>

#include "common/PathText.h"

namespace {

struct ModuleFile {
  char path[MAX_PATH];
  char folder[MAX_PATH];
};

ModuleFile moduleFile;

void RecordFolder() {
  const char* name = BehindLastSeparator(moduleFile.path);
  std::size_t length = name ? static_cast<std::size_t>(name - moduleFile.path) : 0;
  length = LengthWithoutTrailingSeparator(moduleFile.path, length);
  std::memcpy(moduleFile.folder, moduleFile.path, length);
  moduleFile.folder[length] = '\0';
}

}  // namespace

void RecordModulePath(HMODULE module) {
  const DWORD length = GetModuleFileNameA(module, moduleFile.path, MAX_PATH);
  moduleFile.path[length < MAX_PATH ? length : 0] = '\0';
  RecordFolder();
}

void SetModulePath(const char* path) {
  lstrcpynA(moduleFile.path, path, MAX_PATH);
  RecordFolder();
}

const char* GetModulePath() {
  return moduleFile.path;
}

const char* GetModuleFolder() {
  return moduleFile.folder;
}
