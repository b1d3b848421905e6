#include "host/RegistryKeys.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "common/Handles.h"
#include "host/ControlFixture.h"

namespace {

struct KeyTraits {
  using Handle = HKEY;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle key) { return RegCloseKey(key) == ERROR_SUCCESS; }
};
using Key = UniqueHandle<KeyTraits>;

Key OpenKey(HKEY parent, const std::string& name) {
  HKEY opened = nullptr;
  return Key(RegOpenKeyExA(parent, name.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS ? opened : nullptr);
}

Key CreateKey(HKEY parent, const std::string& name) {
  HKEY created = nullptr;
  EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyExA(parent, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &created, nullptr));
  return Key(created);
}

// The texts of a value; its type when it is no text.
std::string ShowValue(DWORD type, const BYTE* data, DWORD bytes) {
  if (type != REG_SZ)
    return "(type " + std::to_string(type) + ")";
  const char* const text = reinterpret_cast<const char*>(data);
  return std::string(text, strnlen(text, bytes));
}

void DumpValues(HKEY key, const std::string& name, Lines& lines) {
  std::string head = name;
  Lines named;
  for (DWORD index = 0;; ++index) {
    char value[256];
    BYTE data[1024];
    DWORD valueSize = sizeof(value), bytes = sizeof(data), type = REG_NONE;
    if (RegEnumValueA(key, index, value, &valueSize, nullptr, &type, data, &bytes) != ERROR_SUCCESS)
      break;
    if (valueSize == 0)
      head += " = " + ShowValue(type, data, bytes);
    else
      named.push_back(name + " [" + value + "] = " + ShowValue(type, data, bytes));
  }
  lines.push_back(head);
  lines.insert(lines.end(), named.begin(), named.end());
}

void DumpKey(HKEY key, const std::string& name, Lines& lines) {
  DumpValues(key, name, lines);
  for (DWORD index = 0;; ++index) {
    char child[256];
    DWORD size = sizeof(child);
    if (RegEnumKeyExA(key, index, child, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
      break;
    DumpKey(OpenKey(key, child).Get(), name + "\\" + child, lines);
  }
}

constexpr char kSavedKey[] = "Software\\NorvikTests\\Registration";

Lines ModuleKeys() {
  return {ClassKey(),  LibraryKey(),      InterfaceKey(), "Wow6432Node\\" + ClassKey(), "Wow6432Node\\" + InterfaceKey(),
          kProgramKey, kCurrentProgramKey};
}

// Whatever a key holds goes to another place.
void MoveTree(HKEY from, HKEY to, const std::string& name) {
  {
    const Key source = OpenKey(from, name);
    if (!source)
      return;
    EXPECT_EQ(ERROR_SUCCESS, RegCopyTreeA(source.Get(), nullptr, CreateKey(to, name).Get())) << name;
  }
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeA(from, name.c_str())) << name;
}

void DeleteModuleKeys() {
  for (const std::string& key : ModuleKeys())
    RegDeleteTreeA(HKEY_CLASSES_ROOT, key.c_str());
}

}  // namespace

std::string Braced(const GUID& identifier) {
  wchar_t text[64];
  StringFromGUID2(identifier, text, 64);
  return std::string(text, text + wcslen(text));
}

Lines DumpClassKey(const std::string& key) {
  Lines lines;
  if (const Key opened = OpenKey(HKEY_CLASSES_ROOT, key))
    DumpKey(opened.Get(), key, lines);
  return lines;
}

std::string ClassKey() {
  return "CLSID\\" + Braced(CLSID_AXNorvik);
}

std::string LibraryKey() {
  return "TypeLib\\" + Braced(LIBID_NORVIKLib);
}

std::string InterfaceKey() {
  return "Interface\\" + Braced(IID_IAXNorvik);
}

Lines DumpClassKeys() {
  Lines lines;
  for (const std::string& key : {ClassKey(), std::string(kCurrentProgramKey), std::string(kProgramKey)}) {
    const Lines some = DumpClassKey(key);
    lines.insert(lines.end(), some.begin(), some.end());
  }
  return lines;
}

bool MayChangeEntries() {
  if (!std::getenv("NORVIK_KEEP_REGISTRY"))
    return true;
  ADD_FAILURE() << "the entries of the module are not to be changed";
  return false;
}

ModuleEntriesAside::ModuleEntriesAside() {
  if (!mayChange)
    return;
  if (!OpenKey(HKEY_CURRENT_USER, kSavedKey)) {
    const Key saved = CreateKey(HKEY_CURRENT_USER, kSavedKey);
    for (const std::string& key : ModuleKeys())
      MoveTree(HKEY_CLASSES_ROOT, saved.Get(), key);
  }
  DeleteModuleKeys();
}

ModuleEntriesAside::~ModuleEntriesAside() {
  if (!mayChange)
    return;
  DeleteModuleKeys();
  for (const std::string& key : ModuleKeys())
    MoveTree(OpenKey(HKEY_CURRENT_USER, kSavedKey).Get(), HKEY_CLASSES_ROOT, key);
  EXPECT_EQ(ERROR_SUCCESS, RegDeleteTreeA(HKEY_CURRENT_USER, kSavedKey));
}
