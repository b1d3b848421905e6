// The path of a log file, for any name and any folder of the user's.

#include "common/Windows.h"

#include <shlobj.h>

#include <cstring>

#include "Target.h"
#include "common/Text.h"
#include "log/LogPath.h"
#include "support/ImportPatch.h"

namespace {

constexpr char kSubfolder[] = "\\Vantor\\Logs\\Norvik";
constexpr char kDefault[] = "Norvik.log";

std::string LogFolder(const std::string& base, bool isMade) {
  if (!isMade)
    return "C:";
  const std::string folder = base.size() + 25 <= MAX_PATH ? base + kSubfolder : base;
  return folder;
}

bool IsSlash(char character) {
  return character == '\\' || character == '/';
}

// A name holds separators at its end only: those that the last component of a path ends with belong to it.
bool IsOneComponent(const std::string& name) {
  std::string single = WithoutDoubleBytes(name);
  const std::string extension = ".log";
  if (single.size() >= extension.size() &&
      single.compare(single.size() - extension.size(), extension.size(), extension) == 0)
    single.resize(single.size() - extension.size());
  while (!single.empty() && (IsSlash(single.back()) || single.back() == ':'))
    single.pop_back();
  // A colon before a slash separates nothing either.
  for (std::size_t i = 0; i < single.size(); ++i) {
    if (IsSlash(single[i]) || (single[i] == ':' && !(i + 1 < single.size() && IsSlash(single[i + 1]))))
      return false;
  }
  return true;
}

void CheckName(const std::string& name, const std::string& folder) {
  const std::string extension = ".log";
  const bool hasRoom = folder.size() + 1 + name.size() + extension.size() < MAX_PATH;
  const bool isLog =
      name.size() >= extension.size() && name.compare(name.size() - extension.size(), extension.size(), extension) == 0;
  HOLDS(IsOneComponent(name));
  HOLDS(name.rfind("../", 0) != 0 && name.rfind("..\\", 0) != 0);
  HOLDS(isLog || !hasRoom);
}

}  // namespace

void FuzzLogName(Input& input) {
  const unsigned choices = input.TakeByte();
  UseCodePage(choices & 1);
  const bool hasBase = !(choices & 2);
  const bool isThere = choices & 4;
  const bool isMade = isThere || !(choices & 8);
  const bool areUnits = choices & 16;
  // The user's folder, of any length that the call gives.
  const std::string base = hasBase ? "C:\\u" + std::string(input.TakeByte(), 'f') : "C:";
  const std::string bytes = input.TakeRuns();
  std::wstring name;
  for (std::size_t i = 0; areUnits && i + 1 < bytes.size(); i += 2)
    name += static_cast<wchar_t>(static_cast<BYTE>(bytes[i]) | static_cast<BYTE>(bytes[i + 1]) << 8);
  if (!areUnits)
    name = WideText(bytes.c_str()).Get();

  PATCH_IMPORT(local, SHGetFolderPathA, [&](auto, HWND, int, HANDLE, DWORD, char* path) -> HRESULT {
    lstrcpynA(path, base.c_str(), MAX_PATH);
    return hasBase ? S_OK : E_FAIL;
  });
  PATCH_IMPORT(exists, GetFileAttributesA,
               [&](auto, const char*) { return isThere ? DWORD{FILE_ATTRIBUTE_DIRECTORY} : INVALID_FILE_ATTRIBUTES; });
  PATCH_IMPORT(makes, CreateDirectoryA, [&](auto, const char*, auto*) -> BOOL {
    SetLastError(ERROR_ACCESS_DENIED);
    return isMade;
  });
  struct {
    char path[MAX_PATH];
    char guard[16];
  } room;
  std::memset(&room, '#', sizeof(room));
  ChooseLogPath(choices & 32 ? nullptr : name.c_str(), room.path);

  for (const char byte : room.guard)
    HOLDS(byte == '#');
  HOLDS(std::memchr(room.path, 0, MAX_PATH) != nullptr);
  const std::string path = room.path;
  const std::string folder = LogFolder(base, isMade);
  if (path == kDefault) {
    HOLDS(folder.size() + 13 > MAX_PATH);
    return;
  }
  HOLDS(BeginsWith(path, folder + "\\"));
  CheckName(path.substr(folder.size() + 1), folder);
}
