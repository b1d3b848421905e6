#include "common/ModulePath.h"

#include <cstring>

#include "common/PathText.h"

namespace {

struct ModuleFile {
  char path[MAX_PATH];
  char folder[MAX_PATH];
};

ModuleFile module;

void RecordFolder() {
  const char* name = BehindLastSeparator(module.path);
  std::size_t length = name ? static_cast<std::size_t>(name - module.path) : 0;
  length = LengthWithoutTrailingSeparator(module.path, length);
  std::memcpy(module.folder, module.path, length);
  module.folder[length] = '\0';
}

}  // namespace

void RecordModulePath(HMODULE handle) {
  const DWORD length = GetModuleFileNameA(handle, module.path, MAX_PATH);
  module.path[length < MAX_PATH ? length : 0] = '\0';
  RecordFolder();
}

void SetModulePath(const char* path) {
  lstrcpynA(module.path, path, MAX_PATH);
  RecordFolder();
}

const char* GetModulePath() {
  return module.path;
}

const char* GetModuleFolder() {
  return module.folder;
}
