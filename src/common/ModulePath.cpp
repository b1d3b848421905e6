#include "common/ModulePath.h"

#include <cstring>

#include "common/PathText.h"

namespace {

char modulePath[MAX_PATH];
char moduleFolder[MAX_PATH];

void RecordFolder() {
  const char* name = BehindLastSeparator(modulePath);
  std::size_t length = name ? static_cast<std::size_t>(name - modulePath) : 0;
  length = LengthWithoutTrailingSeparator(modulePath, length);
  std::memcpy(moduleFolder, modulePath, length);
  moduleFolder[length] = '\0';
}

}  // namespace

void RecordModulePath(HMODULE module) {
  const DWORD length = GetModuleFileNameA(module, modulePath, MAX_PATH);
  modulePath[length < MAX_PATH ? length : 0] = '\0';
  RecordFolder();
}

void SetModulePath(const char* path) {
  lstrcpynA(modulePath, path, MAX_PATH);
  RecordFolder();
}

const char* GetModulePath() {
  return modulePath;
}

const char* GetModuleFolder() {
  return moduleFolder;
}
