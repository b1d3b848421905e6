#include "advice/Rehearsal.h"

#include <cstring>

#include "common/Handles.h"
#include "common/PathText.h"
#include "common/SystemError.h"
#include "log/LogFile.h"
#include "transfer/FileUtilities.h"

namespace {

constexpr SourceFile kSourceFile = {"Rehearsal"};

// An existing file with one of these is replaced only by one that has it too.
constexpr DWORD kKeptAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

// What the system asks of a name: characters that no file name has.
constexpr char kForbidden[] = "<>\"|?*";

// What the name of a file of the Internet cache ends with, which the cache chooses: no file has it.
constexpr char kUnknownName[] = "\\?";

bool Fail(DWORD error) {
  SetLastError(error);
  return false;
}

// The name by which the system knows a file: the full path, with the case that does not count. Empty when it has none.
std::string FullName(const char* path) {
  char full[MAX_PATH];
  const DWORD length = GetFullPathNameA(path, MAX_PATH, full, nullptr);
  if (length == 0 || length >= MAX_PATH)
    return {};
  CharUpperA(full);
  return full;
}

std::string FolderOf(const std::string& fullName) {
  const std::size_t end = fullName.find_last_of("\\/");
  return end == std::string::npos ? std::string() : fullName.substr(0, end <= 2 ? end + 1 : end);
}

bool IsFolder(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// A name such as nul.txt, which the system takes for a device: nothing is created by looking.
bool IsDeviceName(const char* path) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const FileHandle file(CreateFileA(path, 0, kShared, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file && IsDevice(file);
}

FILETIME Now() {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return now;
}

}  // namespace

void RehearsedMachine::Put(const char* path, DWORD attributes, const FILETIME& time) {
  states[FullName(path)] = {attributes, time};
}

const RehearsedMachine::State* RehearsedMachine::Find(const char* path) const {
  const auto found = states.find(FullName(path));
  return found == states.end() ? nullptr : &found->second;
}

DWORD RehearsedMachine::GetAttributes(const char* path) const {
  const State* const state = Find(path);
  if (!state)
    return AttributesOnDisk(path);
  if (state->attributes == INVALID_FILE_ATTRIBUTES)
    SetLastError(ERROR_FILE_NOT_FOUND);
  return state->attributes;
}

// In a folder that is not there yet the system does not find the folder, and a run would not find the file.
DWORD RehearsedMachine::AttributesOnDisk(const char* path) const {
  const DWORD attributes = Machine::GetAttributes(path);
  if (attributes == INVALID_FILE_ATTRIBUTES && GetLastError() == ERROR_PATH_NOT_FOUND) {
    const State* const folder = Find(FolderOf(FullName(path)).c_str());
    SetLastError(folder && IsFolder(folder->attributes) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
  }
  return attributes;
}

RehearsedMachine::State RehearsedMachine::StateOf(const char* path) const {
  State state = {GetAttributes(path), {}};
  if (const State* const known = Find(path)) {
    state.time = known->time;
  } else {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (GetFileAttributesExA(path, GetFileExInfoStandard, &data))
      state.time = data.ftLastWriteTime;
  }
  return state;
}

bool RehearsedMachine::SetAttributes(const char* path, DWORD attributes) {
  State state = StateOf(path);
  if (state.attributes == INVALID_FILE_ATTRIBUTES)
    return false;
  state.attributes = attributes ? attributes : FILE_ATTRIBUTE_NORMAL;
  Put(path, state.attributes, state.time);
  return true;
}

// Why nothing of that name can be made there; 0 when it can.
DWORD RehearsedMachine::ErrorOfPlace(const char* path) const {
  const std::string name = FullName(path);
  if (name.empty())
    return ERROR_PATH_NOT_FOUND;
  const char* const last = BehindLastSeparator(path);
  if (std::strpbrk(last ? last : path, kForbidden))
    return ERROR_INVALID_NAME;
  return IsFolder(GetAttributes(FolderOf(name).c_str())) ? ERROR_SUCCESS : ERROR_PATH_NOT_FOUND;
}

bool RehearsedMachine::CreateFolder(const char* path) {
  if (Exists(path))
    return Fail(ERROR_ALREADY_EXISTS);
  const DWORD error = ErrorOfPlace(path);
  if (error)
    return Fail(error);
  Put(path, FILE_ATTRIBUTE_DIRECTORY, Now());
  return true;
}

bool RehearsedMachine::Move(const char* from, const char* to) {
  const State state = StateOf(from);
  if (state.attributes == INVALID_FILE_ATTRIBUTES)
    return false;
  if (FullName(from) == FullName(to))
    return true;
  if (Exists(to))
    return Fail(ERROR_ALREADY_EXISTS);
  const DWORD error = ErrorOfPlace(to);
  if (error)
    return Fail(error);
  Put(to, state.attributes, state.time);
  Put(from, INVALID_FILE_ATTRIBUTES, {});
  return true;
}

bool RehearsedMachine::Delete(const char* path) {
  const DWORD attributes = GetAttributes(path);
  if (attributes == INVALID_FILE_ATTRIBUTES)
    return false;
  if (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY))
    return Fail(ERROR_ACCESS_DENIED);
  Put(path, INVALID_FILE_ATTRIBUTES, {});
  return true;
}

HRESULT RehearsedMachine::GetWriteTime(const char* path, FILETIME& time) const {
  const State* const state = Find(path);
  if (!state)
    return Machine::GetWriteTime(path, time);
  const bool isGone = state->attributes == INVALID_FILE_ATTRIBUTES;
  if (isGone || IsFolder(state->attributes)) {
    const DWORD error = isGone ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED;
    return Reported(HERE, HRESULT_FROM_WIN32(error), "Unable to read '%s'.", path);
  }
  time = state->time;
  return S_OK;
}

HRESULT RehearsedMachine::GetDestinationFile(const CDestinationFolder& folder, const CSourceURL* source,
                                             OwnedText* fileName) {
  if (folder.GetKind() != FolderKind::InternetCache)
    return Machine::GetDestinationFile(folder, source, fileName);
  cacheFile = folder.GetPath() + std::string(kUnknownName);
  *fileName = CopyText(cacheFile.c_str());
  return *fileName ? S_OK : E_OUTOFMEMORY;
}

// Why a transfer could not create its file; 0 when it could.
DWORD RehearsedMachine::ErrorOfCreating(const char* path, DWORD attributes) const {
  if (IsDeviceName(path))
    return ERROR_INVALID_NAME;
  const DWORD existing = GetAttributes(path);
  if (existing == INVALID_FILE_ATTRIBUTES)
    return ErrorOfPlace(path);
  const bool isKept = (existing & kKeptAttributes & ~attributes) != 0;
  return isKept || (existing & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

HRESULT RehearsedMachine::Fetch(const char* source, const char* destination, DWORD attributes, const FILETIME* time,
                                DWORD flags, const char* notFoundText) {
  if (flags & kTransferManifest)
    return Machine::Fetch(source, destination, attributes, time, flags, notFoundText);
  if ((flags & kTransferCookie) || cacheFile == destination)
    return S_OK;  // a store of the system's own
  const DWORD error = ErrorOfCreating(destination, attributes);
  if (error)
    return Reported(HERE, HRESULT_FROM_WIN32(error), "Creating '%s' failed.", destination);
  Put(destination, attributes, time ? *time : Now());
  return S_OK;
}

HRESULT RehearsedMachine::CommitToCache(const CDestinationFolder&, const CSourceURL*, const char*) {
  return S_OK;
}

bool RehearsedMachine::Open(const char*, const char*) {
  return true;
}
