#include "log/LogPath.h"

#include <shlobj.h>
#include <shlwapi.h>

#include <cstring>
#include <cwchar>

#include "common/FolderTree.h"

namespace {

constexpr char kDefaultFileName[] = "Norvik.log";
constexpr char kLogFolder[] = "Vantor\\Logs\\Norvik";
constexpr char kExtension[] = ".log";
constexpr char kFallbackFolder[] = "C:\\";

// The room that the log folder, the default file name and the extension are given, separators and terminators included.
constexpr std::size_t kLogFolderRoom = 25;
constexpr std::size_t kDefaultFileNameRoom = 13;
constexpr std::size_t kExtensionRoom = 5;

// A name of 130 characters or more is not used: it is sized as if every character took two bytes.
constexpr std::size_t kNameLimit = 261;

// The system leaves separators at the end of a name with its final component, and ".." with one of them is no file name but
// the folder above the log folder.
bool IsFolderAbove(const char* component) {
  return component[0] == '.' && component[1] == '.' && (component[2] == '\\' || component[2] == '/');
}

// The final component of `name` in the ANSI code page, in `buffer` or as a constant.
const char* FinalComponent(const wchar_t* name, char (&buffer)[MAX_PATH]) {
  if (!name || !*name || std::wcslen(name) * 2 + 1 >= kNameLimit)
    return kDefaultFileName;
  if (WideCharToMultiByte(CP_ACP, 0, name, -1, buffer, MAX_PATH, nullptr, nullptr) <= 0)
    return kDefaultFileName;
  const char* component = PathFindFileNameA(buffer);
  return *component && !IsFolderAbove(component) ? component : kDefaultFileName;
}

void ChooseFolder(char (&path)[MAX_PATH]) {
  if (SHGetFolderPathA(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, path) != S_OK)
    std::strcpy(path, kFallbackFolder);
  if (std::strlen(path) + kLogFolderRoom <= MAX_PATH)
    PathAppendA(path, kLogFolder);
  if (FAILED(CreateFolderTree(path)))
    std::strcpy(path, kFallbackFolder);
}

// The name is joined as text: the component ".." becomes the file "..log" of the log folder.
void AppendFileName(char (&path)[MAX_PATH], const char* fileName) {
  PathAddBackslashA(path);
  std::strcat(path, fileName);
}

// The extension is added even when what is left ends in another one: a.b.xml gives a.b.log.
void ReplaceExtension(char (&path)[MAX_PATH]) {
  PathRemoveExtensionA(path);
  if (std::strlen(path) + kExtensionRoom <= MAX_PATH)
    std::strcat(path, kExtension);
}

}  // namespace

void ChooseLogPath(const wchar_t* name, char (&path)[MAX_PATH]) {
  char buffer[MAX_PATH];
  const char* fileName = FinalComponent(name, buffer);
  ChooseFolder(path);
  if (std::strlen(fileName) + std::strlen(path) + 2 <= MAX_PATH)
    AppendFileName(path, fileName);
  else if (std::strlen(path) + kDefaultFileNameRoom <= MAX_PATH)
    AppendFileName(path, kDefaultFileName);
  else
    std::strcpy(path, kDefaultFileName);
  ReplaceExtension(path);
}
