#include "advice/FolderCheck.h"

#include <shlwapi.h>

#include "advice/KeptLog.h"
#include "advice/PermitDocument.h"
#include "advice/Words.h"
#include "common/Handles.h"
#include "common/SystemError.h"
#include "log/LogPath.h"
#include "transfer/DestinationFolder.h"

namespace {

constexpr char kLogFolder[] = "log-folder";

std::string Quoted(const std::string& ansiPath) {
  return "'" + Utf8FromAnsi(ansiPath.c_str()) + "'";
}

std::string LogFolder() {
  char path[MAX_PATH];
  ChooseLogPath(nullptr, path);
  PathRemoveFileSpecA(path);
  return path;
}

// The system takes the file away when it is closed, even if this program is killed before.
HRESULT TryToWrite(const std::string& folder) {
  const std::string path = folder + "\\norvik-doctor-" + std::to_string(GetCurrentProcessId()) + ".tmp";
  const FileHandle file(CreateFileA(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  DWORD written = 0;
  return file && WriteFile(file.Get(), "\n", 1, &written, nullptr) ? S_OK : ResultFromLastError();
}

// A character that the code page lacks becomes one that no name may have.
bool HasLostCharacters(const std::string& path) {
  return path.find('?') != std::string::npos;
}

DoctorCheck CheckPath(const std::string& name, const std::string& path) {
  if (path.empty())
    return {name, DoctorStatus::Warning, "The module's folder is not known."};
  if (HasLostCharacters(path)) {
    return {name, DoctorStatus::Failed,
            Quoted(path) +
                " is what the module sees: the folder's name has characters that the code page of this machine lacks."};
  }
  if (PathIsNetworkPathA(path.c_str()))
    return {name, DoctorStatus::Ok, Quoted(path) + " lies on another machine, which is not asked."};
  const DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES)
    return {name, DoctorStatus::Ok, Quoted(path) + ", not there yet: it is made when a file goes there."};
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY))
    return {name, DoctorStatus::Failed, Quoted(path) + " is a file, so no file can go there. Move it away."};
  return {name, DoctorStatus::Ok, Quoted(path)};
}

}  // namespace

DoctorCheck CheckLogFolder() {
  const std::string folder = LogFolder();
  const HRESULT hr = TryToWrite(folder);
  if (FAILED(hr)) {
    return {kLogFolder, DoctorStatus::Failed,
            Quoted(folder) + " cannot be written (" + CodeAndText(hr) + "): runs leave no log."};
  }
  if (PathIsRootA(folder.c_str())) {
    return {kLogFolder, DoctorStatus::Warning,
            "Logs go to " + Quoted(folder) + ": the folder below the user's local application data cannot be made."};
  }
  return {kLogFolder, DoctorStatus::Ok, Quoted(folder)};
}

DoctorCheck CheckFolder(FolderKind kind) {
  const std::string name = std::string("folder-") + ElementNameOf(kind);
  const KeptLog quiet;
  HRESULT hr = E_UNEXPECTED;
  const CDestinationFolder folder(kind, &hr);
  if (FAILED(hr)) {
    return {name, DoctorStatus::Warning,
            "It cannot be found out (" + CodeAndText(hr) +
                "). A manifest's file for it goes to the Internet cache, if that is permitted."};
  }
  if (hr == S_FALSE)
    return {name, DoctorStatus::Warning, "It cannot be found out. " + Quoted(folder.GetPath()) + " stands in for it."};
  return CheckPath(name, folder.GetPath());
}

DoctorChecks CheckFolders() {
  DoctorChecks checks;
  for (auto number = static_cast<LONG>(FolderKind::Path); number <= static_cast<LONG>(FolderKind::VantorData); ++number)
    checks.push_back(CheckFolder(static_cast<FolderKind>(number)));
  return checks;
}
