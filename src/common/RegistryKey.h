#pragma once

#include "common/Windows.h"

#include "common/Handles.h"

struct RegistryKeyTraits {
  using Handle = HKEY;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle key) { return RegCloseKey(key) == ERROR_SUCCESS; }
};
using RegistryKey = UniqueHandle<RegistryKeyTraits>;
