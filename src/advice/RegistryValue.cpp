#include "advice/RegistryValue.h"

#include <cwchar>

RegistryKey OpenKey(HKEY root, const wchar_t* name, int bits) {
  const REGSAM view = bits == 64 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
  HKEY opened = nullptr;
  return RegistryKey(RegOpenKeyExW(root, name, 0, KEY_READ | view, &opened) == ERROR_SUCCESS ? opened : nullptr);
}

std::wstring ReadText(const RegistryKey& key, const wchar_t* name) {
  DWORD bytes = 0;
  if (RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &bytes) != ERROR_SUCCESS)
    return {};
  std::wstring text(bytes / sizeof(wchar_t) + 1, L'\0');
  bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  if (RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) != ERROR_SUCCESS)
    return {};
  text.resize(std::wcslen(text.c_str()));
  return text;
}

DWORD ReadNumber(const RegistryKey& key, const wchar_t* name) {
  DWORD number = 0;
  DWORD bytes = sizeof(number);
  const LONG error = RegGetValueW(key.Get(), nullptr, name, RRF_RT_REG_DWORD, nullptr, &number, &bytes);
  return error == ERROR_SUCCESS ? number : 0;
}
