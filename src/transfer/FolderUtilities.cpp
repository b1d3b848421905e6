// The resolution of a destination folder kind to a path.

#include "common/Windows.h"

#include <shlobj.h>
#include <shlwapi.h>

#include <cstring>

#include "common/ModulePath.h"
#include "common/SystemError.h"
#include "log/LogFile.h"
#include "transfer/FileUtilities.h"

namespace {

constexpr SourceFile kSourceFile = {"FileUtilities", 4000};
constexpr char kFallbackFolder[] = "C:\\";

// How a kind's element text takes part in its path.
enum class TextUse { Ignored, Subfolder };

struct SpecialFolder {
  FolderKind kind;
  int folderId;
  const char* subfolder;  // between the special folder and the text
  TextUse textUse;
};

// The plain application data folders ignore their text where Personal and Documents append it. That is meant, and kept.
constexpr SpecialFolder kSpecialFolders[] = {
    {FolderKind::Cookie, CSIDL_COOKIES, "", TextUse::Ignored},
    {FolderKind::InternetCache, CSIDL_INTERNET_CACHE, "", TextUse::Ignored},
    {FolderKind::VantorUser, CSIDL_PERSONAL, "Vantor", TextUse::Subfolder},
    {FolderKind::Personal, CSIDL_PERSONAL, "", TextUse::Subfolder},
    {FolderKind::Documents, CSIDL_COMMON_DOCUMENTS, "", TextUse::Subfolder},
    {FolderKind::LocalApplicationData, CSIDL_LOCAL_APPDATA, "", TextUse::Ignored},
    {FolderKind::LocalVantorData, CSIDL_LOCAL_APPDATA, "Vantor", TextUse::Subfolder},
    {FolderKind::CommonApplicationData, CSIDL_COMMON_APPDATA, "", TextUse::Ignored},
    {FolderKind::CommonVantorData, CSIDL_COMMON_APPDATA, "Vantor", TextUse::Subfolder},
    {FolderKind::ApplicationData, CSIDL_APPDATA, "", TextUse::Ignored},
    {FolderKind::VantorData, CSIDL_APPDATA, "Vantor", TextUse::Subfolder},
};

const SpecialFolder* FindSpecialFolder(FolderKind kind) {
  for (const SpecialFolder& folder : kSpecialFolders) {
    if (folder.kind == kind)
      return &folder;
  }
  return nullptr;
}

// Appends one path component, which may be empty; `..` in it is resolved. False when the path would not fit.
bool AppendComponent(char (&path)[MAX_PATH], const char* component) {
  if (!component || !*component)
    return true;
  return std::strlen(path) + std::strlen(component) + 1 < MAX_PATH && PathAppendA(path, component);
}

bool GetTemporaryFolder(char (&buffer)[MAX_PATH]) {
  const DWORD length = GetTempPathA(MAX_PATH, buffer);
  return length > 0 && length < MAX_PATH;
}

HRESULT ResolveTemporaryFolder(char (&buffer)[MAX_PATH], const char* text) {
  if (!GetTemporaryFolder(buffer))
    return Traced(HERE, ResultFromLastError());
  return AppendComponent(buffer, text) ? S_OK : E_OUTOFMEMORY;
}

HRESULT ResolveIntoBuffer(FolderKind kind, char (&buffer)[MAX_PATH], const char* text) {
  if (kind == FolderKind::Path) {
    lstrcpynA(buffer, text && *text ? text : GetModuleFolder(), MAX_PATH);
    return S_OK;
  }
  if (kind == FolderKind::Temp)
    return ResolveTemporaryFolder(buffer, text);
  const SpecialFolder* const folder = FindSpecialFolder(kind);
  if (!folder)
    return Reported(HERE, E_INVALIDARG, "Invalid Type '%d'.", static_cast<int>(kind));
  return GetSpecialFolder(folder->folderId, buffer, folder->subfolder, folder->textUse == TextUse::Subfolder ? text : "");
}

}  // namespace

HRESULT ResolveFolder(FolderKind kind, const char* text, OwnedText& path) {
  path.reset();
  char buffer[MAX_PATH];
  const HRESULT hr = ResolveIntoBuffer(kind, buffer, text);
  if (FAILED(hr))
    return hr;
  PathRemoveBackslashA(buffer);
  path = CopyText(buffer);
  if (!path)
    return Reported(HERE, E_OUTOFMEMORY, "Out of memory when allocating '%s'.", buffer);
  return hr;
}

HRESULT GetSpecialFolder(int folderId, char (&buffer)[MAX_PATH], const char* firstSub, const char* secondSub) {
  HRESULT hr = SHGetFolderPathA(nullptr, folderId, nullptr, SHGFP_TYPE_CURRENT, buffer);
  if (hr == S_FALSE)  // the folder does not exist yet; whoever writes into it will create it
    hr = SHGetFolderPathA(nullptr, folderId | CSIDL_FLAG_DONT_VERIFY, nullptr, SHGFP_TYPE_CURRENT, buffer);
  if (hr != S_OK) {
    if (GetTemporaryFolder(buffer))
      return FAILED(hr) ? hr : E_FAIL;
    std::strcpy(buffer, kFallbackFolder);
    hr = S_FALSE;
  }
  const bool isFirstAppended = AppendComponent(buffer, firstSub);
  if (!AppendComponent(buffer, secondSub) || !isFirstAppended)
    return E_OUTOFMEMORY;
  PathRemoveBackslashA(buffer);
  return hr;
}
