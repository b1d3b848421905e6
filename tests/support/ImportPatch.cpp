#include "support/ImportPatch.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

// The place in the import table of `module` that holds the address of `function`; null when it is not imported by name.
void** FindEntry(HMODULE module, const char* function) {
  char* const base = reinterpret_cast<char*>(module);
  const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (!directory.VirtualAddress)
    return nullptr;
  auto* descriptor = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
  for (; descriptor->Name; ++descriptor) {
    const auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(base + descriptor->OriginalFirstThunk);
    auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(base + descriptor->FirstThunk);
    for (; names->u1.AddressOfData; ++names, ++addresses) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal))
        continue;
      const auto* byName = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      if (!std::strcmp(reinterpret_cast<const char*>(byName->Name), function))
        return reinterpret_cast<void**>(&addresses->u1.Function);
    }
  }
  return nullptr;
}

}  // namespace

ImportPatch::ImportPatch(HMODULE module, const char* function, void* replacement)
    : entry(FindEntry(module ? module : GetModuleHandleW(nullptr), function)) {
  if (!entry) {
    ADD_FAILURE() << function << " is not imported: nothing was patched";
    return;
  }
  original = *entry;
  Set(replacement);
}

ImportPatch::~ImportPatch() {
  if (entry)
    Set(original);
}

void ImportPatch::Set(void* function) {
  DWORD protection = 0;
  VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &protection);
  *entry = function;
  VirtualProtect(entry, sizeof(*entry), protection, &protection);
}
