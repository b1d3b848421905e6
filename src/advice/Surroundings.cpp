#include "advice/Surroundings.h"

#include "common/Windows.h"

#include <shlobj.h>

#include <algorithm>

#include "advice/AccessList.h"
#include "advice/Document.h"
#include "advice/Words.h"
#include "common/Handles.h"

namespace {

// What the system runs or interprets, whatever PATHEXT says, and what brings such a thing with it.
constexpr const wchar_t* kPrograms[] = {
    L"appref-ms", L"bat", L"chm",  L"cmd", L"com", L"cpl", L"dll", L"exe", L"gadget", L"hta", L"inf",
    L"iso",       L"jar", L"js",   L"jse", L"lnk", L"msc", L"msi", L"msp", L"mst",    L"ocx", L"pif",
    L"ps1",       L"ps2", L"psc1", L"reg", L"scf", L"scr", L"sct", L"shb", L"shs",    L"sys", L"url",
    L"vb",        L"vbe", L"vbs",  L"vhd", L"ws",  L"wsc", L"wsf", L"wsh", L"xbap",   L"xll",
};

bool IsSame(const std::wstring& one, const std::wstring& other) {
  return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

std::wstring FolderOf(int folderId) {
  wchar_t path[MAX_PATH] = L"";
  return SUCCEEDED(SHGetFolderPathW(nullptr, folderId | CSIDL_FLAG_DONT_VERIFY, nullptr, SHGFP_TYPE_CURRENT, path))
             ? std::wstring(path)
             : std::wstring();
}

std::wstring Above(const std::wstring& path) {
  const std::size_t separator = path.find_last_of(L'\\');
  return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator);
}

std::wstring Environment(const wchar_t* name) {
  const DWORD size = GetEnvironmentVariableW(name, nullptr, 0);
  std::wstring value(size, L'\0');
  value.resize(size ? GetEnvironmentVariableW(name, value.data(), size) : 0);
  return value;
}

void Add(std::vector<NamedFolder>& folders, const std::wstring& path, const char* words) {
  if (!path.empty())
    folders.push_back({path, words});
}

struct SearchTraits {
  using Handle = HANDLE;
  static Handle Invalid() { return INVALID_HANDLE_VALUE; }
  static bool Close(Handle search) { return FindClose(search) != FALSE; }
};
using Search = UniqueHandle<SearchTraits>;

class SystemSurroundings final : public Surroundings {
 public:
  std::string WriterOf(const std::wstring& path) const override { return WriterOfPath(path); }

  std::string NeighbourOf(const std::wstring& folder) const override {
    const bool isSearched = folder.size() > 3 && folder[1] == L':' && folder.find_first_of(L"*?") == std::wstring::npos;
    if (!isSearched || GetDriveTypeW(folder.substr(0, 3).c_str()) == DRIVE_REMOTE)
      return {};
    const std::wstring name = folder.substr(folder.find_last_of(L"\\/:") + 1);
    WIN32_FIND_DATAW found;
    const Search search(FindFirstFileW((folder + L"*").c_str(), &found));
    for (bool isFound = static_cast<bool>(search); isFound; isFound = FindNextFileW(search.Get(), &found) != FALSE) {
      if (IsNeighbour(found, name))
        return Utf8(found.cFileName);
    }
    return {};
  }

  std::vector<NamedFolder> GuardedFolders() const override {
    std::vector<NamedFolder> folders;
    Add(folders, FolderOf(CSIDL_WINDOWS), "the Windows folder");
    Add(folders, FolderOf(CSIDL_SYSTEM), "the system folder");
    Add(folders, FolderOf(CSIDL_SYSTEMX86), "the system folder");
    Add(folders, FolderOf(CSIDL_PROGRAM_FILES), "the folder of all programs");
    Add(folders, Environment(L"ProgramW6432"), "the folder of all programs");
    Add(folders, FolderOf(CSIDL_PROGRAM_FILESX86), "the folder of all programs");
    Add(folders, FolderOf(CSIDL_PROFILE), "a user's whole profile");
    return folders;
  }

  std::vector<NamedFolder> StartupFolders() const override {
    std::vector<NamedFolder> folders;
    Add(folders, FolderOf(CSIDL_STARTUP), "the user's startup folder");
    Add(folders, FolderOf(CSIDL_COMMON_STARTUP), "the startup folder of all users");
    return folders;
  }

  std::wstring ProfilesFolder() const override { return Above(FolderOf(CSIDL_PROFILE)); }

  bool IsProgram(const std::string& extension) const override {
    const std::wstring sought = WideFromUtf8(extension);
    for (const wchar_t* const program : kPrograms) {
      if (IsSame(program, sought))
        return true;
    }
    return IsListed(sought);
  }

 private:
  // The search knows short names too.
  static bool IsNeighbour(const WIN32_FIND_DATAW& found, const std::wstring& name) {
    const std::wstring other(found.cFileName);
    return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && other.size() > name.size() &&
           IsSame(other.substr(0, name.size()), name);
  }

  // PATHEXT: ".COM;.EXE;..."
  static bool IsListed(const std::wstring& extension) {
    const std::wstring list = Environment(L"PATHEXT");
    for (std::size_t start = 0; start < list.size();) {
      const std::size_t end = std::min(list.find(L';', start), list.size());
      if (IsSame(list.substr(start, end - start), L"." + extension))
        return true;
      start = end + 1;
    }
    return false;
  }
};

}  // namespace

const Surroundings& ThisMachinesSurroundings() {
  static const SystemSurroundings surroundings;
  return surroundings;
}
