#include "control/RegistryTable.h"

#include <cstring>

#include "common/Handles.h"
#include "common/SystemError.h"
#include "control/norvik_h.h"

namespace {

// "{C}" in a key, and the values kClassId and kLibraryId, stand for identifiers written in braces.
constexpr char kClassId[] = "{C}";
constexpr char kLibraryId[] = "{L}";
constexpr char kClassName[] = "Quorvane ActiveX Control";

struct Row {
  const char* key;
  const char* valueName;  // null for the key's default value
  const char* value;      // null or empty for a key without one
  DWORD flag;
};

constexpr Row kRows[] = {
    {"CLSID\\{C}", nullptr, kClassName, 1},
    {"CLSID\\{C}\\InProcServer32", nullptr, "", 1},
    {"CLSID\\{C}\\InProcServer32", "ThreadingModel", "Apartment", 1},
    {"CLSID\\{C}\\ProgID", nullptr, "Norvik.AXNorvik.1", 1},
    {"CLSID\\{C}\\Programmable", nullptr, nullptr, 1},
    {"CLSID\\{C}\\TypeLib", nullptr, kLibraryId, 1},
    {"CLSID\\{C}\\VersionIndependentProgID", nullptr, "Norvik.AXNorvik", 1},
    {"Norvik.AXNorvik", nullptr, kClassName, 1},
    {"Norvik.AXNorvik\\CLSID", nullptr, kClassId, 1},
    {"Norvik.AXNorvik\\CurVer", nullptr, "Norvik.AXNorvik.1", 1},
    {"Norvik.AXNorvik.1", nullptr, kClassName, 1},
    {"Norvik.AXNorvik.1\\CLSID", nullptr, kClassId, 1},
};
constexpr int kRowCount = static_cast<int>(sizeof(kRows) / sizeof(kRows[0]));

constexpr int kIdentifierSize = 39;  // "{00000000-0000-0000-0000-000000000000}" and its terminator
constexpr int kKeySize = 128;

struct RegistryKeyTraits {
  using Handle = HKEY;
  static Handle Invalid() { return nullptr; }
  static void Close(Handle key) { RegCloseKey(key); }
};
using RegistryKey = UniqueHandle<RegistryKeyTraits>;

void FormatIdentifier(const GUID& identifier, char (&text)[kIdentifierSize]) {
  wchar_t wide[kIdentifierSize];
  StringFromGUID2(identifier, wide, kIdentifierSize);
  WideCharToMultiByte(CP_ACP, 0, wide, -1, text, kIdentifierSize, nullptr, nullptr);
}

void FormatKey(const Row& row, char (&key)[kKeySize]) {
  const char* const mark = std::strstr(row.key, kClassId);
  if (!mark) {
    lstrcpynA(key, row.key, kKeySize);
    return;
  }
  char identifier[kIdentifierSize];
  FormatIdentifier(CLSID_AXNorvik, identifier);
  lstrcpynA(key, row.key, static_cast<int>(mark - row.key) + 1);
  lstrcatA(key, identifier);
  lstrcatA(key, mark + std::strlen(kClassId));
}

// The text of a row's value; `identifier` holds it when it is one.
const char* FindValue(const Row& row, char (&identifier)[kIdentifierSize]) {
  if (row.value == kClassId)
    FormatIdentifier(CLSID_AXNorvik, identifier);
  else if (row.value == kLibraryId)
    FormatIdentifier(LIBID_NORVIKLib, identifier);
  else
    return row.value;
  return identifier;
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
  const char* const value = FindValue(row, identifier);
  if (!value || !*value)
    return ERROR_SUCCESS;
  return RegSetValueExA(key.Get(), row.valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
                        static_cast<DWORD>(std::strlen(value)) + 1);
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

HRESULT DeleteRegistryTable() { return DeleteRows(kRowCount); }
