#include "control/RegistryTable.h"

#include <shlwapi.h>

#include <cstring>

#include "common/Handles.h"
#include "common/SystemError.h"
#include "control/norvik_h.h"

namespace {

// These two stand for identifiers written in braces, kClassId as a root for the key of that name below "CLSID" as well.
constexpr char kClassId[] = "{CLSID}";
constexpr char kLibraryId[] = "{LIBID}";
constexpr char kClassName[] = "Quorvane ActiveX Control";
constexpr char kProgId[] = "Norvik.AXNorvik";
constexpr char kVersionedProgId[] = "Norvik.AXNorvik.1";

struct Row {
  const char* root;
  const char* subkey;     // null for the root itself
  const char* valueName;  // null for the key's default value
  const char* value;      // null or empty for a key without one
};

constexpr Row kRows[] = {
    {kClassId, nullptr, nullptr, kClassName},
    {kClassId, "InProcServer32", nullptr, ""},
    {kClassId, "InProcServer32", "ThreadingModel", "Apartment"},
    {kClassId, "ProgID", nullptr, kVersionedProgId},
    {kClassId, "Programmable", nullptr, nullptr},
    {kClassId, "TypeLib", nullptr, kLibraryId},
    {kClassId, "VersionIndependentProgID", nullptr, kProgId},
    {kProgId, nullptr, nullptr, kClassName},
    {kProgId, "CLSID", nullptr, kClassId},
    {kProgId, "CurVer", nullptr, kVersionedProgId},
    {kVersionedProgId, nullptr, nullptr, kClassName},
    {kVersionedProgId, "CLSID", nullptr, kClassId},
};
constexpr int kRowCount = static_cast<int>(sizeof(kRows) / sizeof(kRows[0]));

constexpr int kIdentifierSize = 39;  // "{00000000-0000-0000-0000-000000000000}" and its terminator
constexpr int kKeySize = 128;

struct RegistryKeyTraits {
  using Handle = HKEY;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle key) { return RegCloseKey(key) == ERROR_SUCCESS; }
};
using RegistryKey = UniqueHandle<RegistryKeyTraits>;

void FormatIdentifier(const GUID& identifier, char (&text)[kIdentifierSize]) {
  wchar_t wide[kIdentifierSize];
  StringFromGUID2(identifier, wide, kIdentifierSize);
  WideCharToMultiByte(CP_ACP, 0, wide, -1, text, kIdentifierSize, nullptr, nullptr);
}

// `text` itself, or the identifier that it stands for, which `buffer` then holds.
const char* Expand(const char* text, char (&buffer)[kIdentifierSize]) {
  if (text == kClassId)
    FormatIdentifier(CLSID_AXNorvik, buffer);
  else if (text == kLibraryId)
    FormatIdentifier(LIBID_NORVIKLib, buffer);
  else
    return text;
  return buffer;
}

void FormatKey(const Row& row, char (&key)[kKeySize]) {
  char identifier[kIdentifierSize];
  wnsprintfA(key, kKeySize, "%s%s%s%s", row.root == kClassId ? "CLSID\\" : "", Expand(row.root, identifier),
             row.subkey ? "\\" : "", row.subkey ? row.subkey : "");
}

// `isCreated` tells after a failure too whether there is a key to be taken away.
LONG WriteRow(const Row& row, bool& isCreated) {
  char keyName[kKeySize];
  FormatKey(row, keyName);
  HKEY created = nullptr;
  const LONG error = RegCreateKeyA(HKEY_CLASSES_ROOT, keyName, &created);
  isCreated = error == ERROR_SUCCESS;
  if (!isCreated)
    return error;
  const RegistryKey key(created);
  char identifier[kIdentifierSize];
  const char* const value = Expand(row.value, identifier);
  if (!value || !*value)
    return ERROR_SUCCESS;
  return RegSetValueExA(
      key.Get(), row.valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(value), static_cast<DWORD>(std::strlen(value)) + 1);
}

// Deletes the keys of the first `count` rows, the last one first, so that every key is empty when its turn comes.
HRESULT DeleteRows(int count) {
  HRESULT hr = S_OK;
  while (count > 0) {
    char keyName[kKeySize];
    FormatKey(kRows[--count], keyName);
    const LONG error = RegDeleteKeyA(HKEY_CLASSES_ROOT, keyName);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND && SUCCEEDED(hr))
      hr = ResultFromError(error);
  }
  return hr;
}

}  // namespace

HRESULT WriteRegistryTable() {
  for (int row = 0; row < kRowCount; ++row) {
    bool isCreated = false;
    const LONG error = WriteRow(kRows[row], isCreated);
    if (error == ERROR_SUCCESS)
      continue;
    static_cast<void>(DeleteRows(isCreated ? row + 1 : row));  // the first failure is the one that is told
    return ResultFromError(error);
  }
  return S_OK;
}

HRESULT DeleteRegistryTable() {
  return DeleteRows(kRowCount);
}
