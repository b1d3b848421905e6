#include "control/RegistryTable.h"

#include <cstring>

#include "common/RegistryKey.h"
#include "common/SystemError.h"
#include "common/identifiers.h"

namespace {

constexpr char kClassName[] = "Quorvane ActiveX Control";
constexpr char kProgId[] = "Norvik.AXNorvik";
constexpr char kVersionedProgId[] = "Norvik.AXNorvik.1";

#define CLASS_KEY "CLSID\\" NORVIK_CLASS_ID

struct Row {
  const char* key;
  const char* valueName;  // null for the key's default value
  const char* value;      // null or empty for a key without one
};

constexpr Row kRows[] = {
    {CLASS_KEY, nullptr, kClassName},
    {CLASS_KEY "\\InProcServer32", nullptr, ""},
    {CLASS_KEY "\\InProcServer32", "ThreadingModel", "Apartment"},
    {CLASS_KEY "\\ProgID", nullptr, kVersionedProgId},
    {CLASS_KEY "\\Programmable", nullptr, nullptr},
    {CLASS_KEY "\\TypeLib", nullptr, NORVIK_LIBRARY_ID},
    {CLASS_KEY "\\VersionIndependentProgID", nullptr, kProgId},
    {"Norvik.AXNorvik", nullptr, kClassName},
    {"Norvik.AXNorvik\\CLSID", nullptr, NORVIK_CLASS_ID},
    {"Norvik.AXNorvik\\CurVer", nullptr, kVersionedProgId},
    {"Norvik.AXNorvik.1", nullptr, kClassName},
    {"Norvik.AXNorvik.1\\CLSID", nullptr, NORVIK_CLASS_ID},
};
constexpr int kRowCount = static_cast<int>(sizeof(kRows) / sizeof(kRows[0]));

// `isCreated` tells after a failure too whether there is a key to be taken away.
LONG WriteRow(const Row& row, bool& isCreated) {
  HKEY created = nullptr;
  const LONG error = RegCreateKeyA(HKEY_CLASSES_ROOT, row.key, &created);
  isCreated = error == ERROR_SUCCESS;
  if (!isCreated)
    return error;
  const RegistryKey key(created);
  if (!row.value || !*row.value)
    return ERROR_SUCCESS;
  return RegSetValueExA(key.Get(), row.valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(row.value),
                        static_cast<DWORD>(std::strlen(row.value)) + 1);
}

// Deletes the keys of the first `count` rows, the last one first, so that every key is empty when its turn comes.
HRESULT DeleteRows(int count) {
  HRESULT hr = S_OK;
  while (count > 0) {
    const LONG error = RegDeleteKeyA(HKEY_CLASSES_ROOT, kRows[--count].key);
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
