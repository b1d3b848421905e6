// The package's own actions, for what its tables cannot do.
//
// PrepareInstallation runs before anything on the machine is changed, as the user who installs. It says whether the
// installation may go on, where the help folder of the type library is, and what VerifyPermissions has to look at.
//
// VerifyPermissions runs within the transaction, as the service that carries it out. The tables' own copying of a file says
// nothing when it fails, as it does where the user can read a file and the service cannot.

#include "common/Windows.h"

#include <msi.h>
#include <msiquery.h>

#include <cstring>
#include <cwchar>

#include "common/Handles.h"

namespace {

constexpr DWORD kTextSize = 2048;  // a path that the installer can use is far shorter
constexpr DWORD kCopiesSize = 3 * kTextSize;
constexpr wchar_t kPermissionFile[] = L"\\permit.xml";

struct InstallerHandleTraits {
  using Handle = MSIHANDLE;
  static Handle Invalid() { return 0; }
  static bool Close(Handle handle) { return MsiCloseHandle(handle) == ERROR_SUCCESS; }
};
using InstallerHandle = UniqueHandle<InstallerHandleTraits>;

// Writes a sentence into the installer's log and shows it, where the level of its user interface allows that. Gives the code
// that ends the installation.
UINT Refuse(MSIHANDLE installer, const wchar_t* sentence) {
  const InstallerHandle record(MsiCreateRecord(1));
  MsiRecordSetStringW(record.Get(), 0, L"[1]");  // the sentence is an argument: a bracket in a path is none of a format's
  MsiRecordSetStringW(record.Get(), 1, sentence);
  MsiProcessMessage(installer, INSTALLMESSAGE_ERROR, record.Get());
  return ERROR_INSTALL_FAILURE;
}

template <DWORD Size>
bool ReadProperty(MSIHANDLE installer, const wchar_t* name, wchar_t (&value)[Size]) {
  DWORD length = Size;
  return MsiGetPropertyW(installer, name, value, &length) == ERROR_SUCCESS;
}

// The path of a folder without the separator that the installer puts at the end of each.
bool ReadFolder(MSIHANDLE installer, const wchar_t* name, wchar_t (&folder)[kTextSize]) {
  if (!ReadProperty(installer, name, folder))
    return false;
  const std::size_t length = std::wcslen(folder);
  if (length > 0 && folder[length - 1] == L'\\')
    folder[length - 1] = L'\0';
  return true;
}

// The service that will copy the file has a working folder of its own, and no user's drives.
bool IsFullPath(const wchar_t* path) {
  return (path[0] && path[1] == L':' && path[2] == L'\\') || (path[0] == L'\\' && path[1] == L'\\');
}

FileHandle OpenFile(const wchar_t* path) {
  return FileHandle(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// ERROR_SUCCESS when there is a file with something in it, that can be read.
DWORD TryToRead(const wchar_t* path) {
  const FileHandle file = OpenFile(path);
  if (!file)
    return GetLastError();
  if (IsDevice(file))
    return ERROR_FILE_INVALID;
  char first = 0;
  DWORD count = 0;
  if (!ReadFile(file.Get(), &first, sizeof(first), &count, nullptr))
    return GetLastError();
  return count == 0 ? ERROR_HANDLE_EOF : ERROR_SUCCESS;
}

UINT CheckPermissionFile(MSIHANDLE installer) {
  wchar_t path[kTextSize];
  wchar_t sentence[kTextSize + 200];
  if (!ReadProperty(installer, L"PERMITFILE", path))
    return Refuse(installer, L"The path in PERMITFILE is too long. Nothing was changed.");
  if (!path[0])
    return ERROR_SUCCESS;
  if (!IsFullPath(path)) {
    swprintf(
        sentence, ARRAYSIZE(sentence), L"PERMITFILE has to be a full path, and \"%ls\" is none. Nothing was changed.", path);
    return Refuse(installer, sentence);
  }
  const DWORD error = TryToRead(path);
  if (error == ERROR_SUCCESS)
    return ERROR_SUCCESS;
  swprintf(sentence, ARRAYSIZE(sentence),
           L"The permission file \"%ls\" that PERMITFILE names cannot be read (error %lu). Nothing was changed.", path,
           error);
  return Refuse(installer, sentence);
}

bool IsPlaced(MSIHANDLE installer, const wchar_t* component) {
  INSTALLSTATE now = INSTALLSTATE_UNKNOWN;
  INSTALLSTATE next = INSTALLSTATE_UNKNOWN;
  return MsiGetComponentStateW(installer, component, &now, &next) == ERROR_SUCCESS && next == INSTALLSTATE_LOCAL;
}

// What VerifyPermissions gets: the permission file and the copies that this installation makes of it, between separators.
void TellCopies(MSIHANDLE installer, const wchar_t* folder, const wchar_t* folder32) {
  wchar_t source[kTextSize];
  wchar_t copies[kCopiesSize];
  if (!ReadProperty(installer, L"PERMITFILE", source) || !source[0])
    return;
  const bool wide = IsPlaced(installer, L"Permissions_Module64");
  const bool narrow = IsPlaced(installer, L"Permissions_Module32");
  swprintf(copies, ARRAYSIZE(copies), L"%ls%ls%ls%ls%ls%ls%ls", source, wide ? L"|" : L"", wide ? folder : L"",
           wide ? kPermissionFile : L"", narrow ? L"|" : L"", narrow ? (folder32[0] ? folder32 : folder) : L"",
           narrow ? kPermissionFile : L"");
  MsiSetPropertyW(installer, L"VerifyPermissions", copies);
}

// An installation that is repaired or completed somewhere else would leave its first files behind.
UINT CheckRemembered(MSIHANDLE installer, const wchar_t* folder, const wchar_t* property) {
  wchar_t installed[kTextSize];
  wchar_t remembered[kTextSize];
  if (!ReadProperty(installer, L"Installed", installed) || !installed[0] || !ReadFolder(installer, property, remembered) ||
      !remembered[0] || lstrcmpiW(folder, remembered) == 0)
    return ERROR_SUCCESS;
  wchar_t sentence[kTextSize + 200];
  swprintf(sentence, ARRAYSIZE(sentence),
           L"It is installed in \"%ls\": remove it first to have it in another folder. Nothing was changed.", remembered);
  return Refuse(installer, sentence);
}

UINT CheckFolder(MSIHANDLE installer, const wchar_t* folder, const wchar_t* remembered) {
  const DWORD attributes = GetFileAttributesW(folder);
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    return CheckRemembered(installer, folder, remembered);
  wchar_t sentence[kTextSize + 200];
  swprintf(
      sentence, ARRAYSIZE(sentence), L"There is a file where the folder \"%ls\" has to be. Nothing was changed.", folder);
  return Refuse(installer, sentence);
}

// The modules have one name, so two widths in one folder would be one file.
UINT CheckFolders(MSIHANDLE installer, const wchar_t* folder, const wchar_t* folder32) {
  if (folder32[0] && lstrcmpiW(folder, folder32) == 0)
    return Refuse(installer, L"INSTALLDIR and INSTALLDIR32 have to be two folders. Nothing was changed.");
  const UINT code = CheckFolder(installer, folder, L"PREVIOUSINSTALLDIR");
  return code == ERROR_SUCCESS ? CheckFolder(installer, folder32, L"PREVIOUSINSTALLDIR32") : code;
}

// Whether the feature will be on the machine after this installation.
bool WillBeInstalled(MSIHANDLE installer, const wchar_t* feature) {
  INSTALLSTATE now = INSTALLSTATE_UNKNOWN;
  INSTALLSTATE next = INSTALLSTATE_UNKNOWN;
  if (MsiGetFeatureStateW(installer, feature, &now, &next) != ERROR_SUCCESS)
    return false;  // this package has no such feature
  return next == INSTALLSTATE_LOCAL || (next == INSTALLSTATE_UNKNOWN && now == INSTALLSTATE_LOCAL);
}

bool HaveSameBytes(const FileHandle& one, const FileHandle& other) {
  char left[4096];
  char right[sizeof(left)];
  for (;;) {
    DWORD leftCount = 0;
    DWORD rightCount = 0;
    if (!ReadFile(one.Get(), left, sizeof(left), &leftCount, nullptr) ||
        !ReadFile(other.Get(), right, sizeof(right), &rightCount, nullptr) || leftCount != rightCount ||
        std::memcmp(left, right, leftCount) != 0)
      return false;
    if (leftCount == 0)
      return true;
  }
}

bool IsCopy(const wchar_t* source, const wchar_t* copy) {
  const FileHandle one = OpenFile(source);
  const FileHandle other = OpenFile(copy);
  return one && other && HaveSameBytes(one, other);
}

UINT CheckCopy(MSIHANDLE installer, const wchar_t* source, const wchar_t* copy) {
  if (IsCopy(source, copy))
    return ERROR_SUCCESS;
  wchar_t sentence[kCopiesSize + 200];
  swprintf(
      sentence, ARRAYSIZE(sentence),
      L"The permission file \"%ls\" could not be copied to \"%ls\" by the account that installs. Everything is taken back.",
      source, copy);
  return Refuse(installer, sentence);
}

}  // namespace

extern "C" UINT __stdcall PrepareInstallation(MSIHANDLE installer) {
  wchar_t folder[kTextSize];
  wchar_t folder32[kTextSize];
  if (!ReadFolder(installer, L"INSTALLDIR", folder) || !ReadFolder(installer, L"INSTALLDIR32", folder32))
    return Refuse(installer, L"The path of a folder is too long. Nothing was changed.");
  UINT code = CheckFolders(installer, folder, folder32);
  if (code == ERROR_SUCCESS)
    code = CheckPermissionFile(installer);
  if (code == ERROR_SUCCESS)
    TellCopies(installer, folder, folder32);
  if (code == ERROR_SUCCESS)  // the help folder is the module's; the package for 32-bit Windows has one folder only
    MsiSetPropertyW(installer, L"HELPFOLDER", !folder32[0] || WillBeInstalled(installer, L"Module64") ? folder : folder32);
  return code;
}

extern "C" UINT __stdcall VerifyPermissions(MSIHANDLE installer) {
  wchar_t files[kCopiesSize];
  if (!ReadProperty(installer, L"CustomActionData", files))
    return Refuse(installer, L"The paths of the permission files are too long. Everything is taken back.");
  wchar_t* copy = std::wcschr(files, L'|');
  UINT code = ERROR_SUCCESS;
  while (copy && code == ERROR_SUCCESS) {
    *copy++ = L'\0';
    wchar_t* const next = std::wcschr(copy, L'|');
    if (next)
      *next = L'\0';
    code = CheckCopy(installer, files, copy);
    copy = next;
  }
  return code;
}
