// Paths as texts. Scans step over whole characters of the code page, as the system's do.

#include "common/Windows.h"

#include <cstring>

#include "Patchable.h"

namespace {
char* Next(char* position) {
  return position + (IsDBCSLeadByte(static_cast<BYTE>(*position)) && position[1] ? 2 : 1);
}

char* LastCharacter(char* text) {
  char* last = text;
  for (; *text; text = Next(text))
    last = text;
  return last;
}

bool IsSlash(char character) {
  return character == '\\' || character == '/';
}

}  // namespace

PATCHABLE(HRESULT, SHGetFolderPathA, (HWND owner, int folder, HANDLE token, DWORD flags, char* path),
          (owner, folder, token, flags, path)) {
  std::strcpy(path, "C:\\users\\me\\AppData\\Local");
  return S_OK;
}

DWORD GetModuleFileNameA(HMODULE, char* path, DWORD bytes) {
  static constexpr char kPath[] = "C:\\apps\\norvik.dll";
  lstrcpynA(path, kPath, static_cast<int>(bytes));
  return sizeof(kPath) - 1 < bytes ? sizeof(kPath) - 1 : bytes;
}

// What it is given is a full path already.
DWORD GetFullPathNameA(const char* name, DWORD bytes, char* path, char**) {
  const auto length = static_cast<DWORD>(std::strlen(name));
  if (length >= bytes)
    return length + 1;
  std::memcpy(path, name, length + 1);
  return length;
}

// Separators at the end belong to the name.
char* PathFindFileNameA(const char* path) {
  char* name = const_cast<char*>(path);
  for (char* position = name; *position; position = Next(position)) {
    if ((IsSlash(*position) || *position == ':') && position[1] && !IsSlash(position[1]))
      name = position + 1;
  }
  return name;
}

char* PathAddBackslashA(char* path) {
  const std::size_t length = std::strlen(path);
  if (length >= MAX_PATH - 1)
    return nullptr;
  char* end = path + length;
  if (length > 0 && *LastCharacter(path) != '\\')
    *end++ = '\\';
  *end = '\0';
  return end;
}

BOOL PathAppendA(char* path, const char* component) {
  if (std::strlen(path) + 1 + std::strlen(component) >= MAX_PATH)
    return FALSE;
  PathAddBackslashA(path);
  std::strcat(path, component);
  return TRUE;
}

// An extension holds neither a backslash nor a blank.
void PathRemoveExtensionA(char* path) {
  char* extension = nullptr;
  for (; *path; path = Next(path)) {
    if (*path == '.')
      extension = path;
    else if (*path == '\\' || *path == ' ')
      extension = nullptr;
  }
  if (extension)
    *extension = '\0';
}
