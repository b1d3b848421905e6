#include "support/RegistryAside.h"

#include <gtest/gtest.h>
#include <shlwapi.h>

#include <algorithm>

#include "common/RegistryKey.h"

namespace {

constexpr char kKept[] = "Software\\NorvikTests\\Aside\\";

bool IsKey(HKEY root, const std::string& name) {
  HKEY key = nullptr;
  const bool isThere = RegOpenKeyExA(root, name.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
  const RegistryKey owned(key);
  return isThere;
}

void CopyKey(HKEY fromRoot, const std::string& from, HKEY toRoot, const std::string& to) {
  HKEY key = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(toRoot, to.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr));
  const RegistryKey target(key);
  EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), static_cast<DWORD>(SHCopyKeyA(fromRoot, from.c_str(), target.Get(), 0)));
}

void DeleteKey(HKEY root, const std::string& name) {
  const DWORD error = static_cast<DWORD>(SHDeleteKeyA(root, name.c_str()));
  EXPECT_TRUE(error == ERROR_SUCCESS || error == ERROR_FILE_NOT_FOUND) << name << ": " << error;
}

std::string KeptName(HKEY root, std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  return kKept + std::string(root == HKEY_LOCAL_MACHINE ? "machine/" : "user/") + name;
}

}  // namespace

RegistryAside::RegistryAside(HKEY root, const std::string& name) : root(root), name(name), kept(KeptName(root, name)) {
  if (!IsKey(HKEY_CURRENT_USER, kept)) {
    WriteRegistryText(HKEY_CURRENT_USER, kept, nullptr, name);
    if (IsKey(root, name))
      CopyKey(root, name, HKEY_CURRENT_USER, kept + "\\was");
  }
  DeleteKey(root, name);
}

RegistryAside::~RegistryAside() {
  DeleteKey(root, name);
  if (IsKey(HKEY_CURRENT_USER, kept + "\\was"))
    CopyKey(HKEY_CURRENT_USER, kept + "\\was", root, name);
  DeleteKey(HKEY_CURRENT_USER, kept);
}

void WriteRegistryText(HKEY root, const std::string& key, const char* value, const std::string& text) {
  EXPECT_EQ(
      ERROR_SUCCESS, RegSetKeyValueA(root, key.c_str(), value, REG_SZ, text.c_str(), static_cast<DWORD>(text.size() + 1)));
}

std::string RegistryTextOf(HKEY root, const std::string& key, const char* value) {
  char text[4096] = "";
  DWORD bytes = sizeof(text);
  DWORD type = 0;
  if (RegGetValueA(root, key.c_str(), value, RRF_RT_REG_SZ | RRF_RT_REG_MULTI_SZ, &type, text, &bytes) != ERROR_SUCCESS)
    return "none";
  if (type == REG_SZ)
    return text;
  std::string texts;
  for (const char* next = text; *next; next += std::string(next).size() + 1)
    texts += std::string(next) + "|";
  return texts;
}
