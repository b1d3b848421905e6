#include "engine/Machine.h"

#include <shellapi.h>

HRESULT Machine::GetWriteTime(const char* path, FILETIME& time) const {
  return GetFileWriteTime(path, time);
}

HRESULT Machine::GetDestinationFile(const CDestinationFolder& folder, const CSourceURL* source, OwnedText* fileName) {
  return folder.GetDestinationFile(source, fileName);
}

HRESULT Machine::Fetch(const char* source, const char* destination, DWORD attributes, const FILETIME* time, DWORD flags,
                       const char* notFoundText) {
  return FetchURL(source, destination, attributes, time, flags, notFoundText, observer);
}

HRESULT Machine::CommitToCache(const CDestinationFolder& folder, const CSourceURL* source, const char* localFile) {
  return folder.CommitToCache(source, localFile);
}

bool Machine::Open(const char* fileName, const char* folder) {
  SHELLEXECUTEINFOA start = {};
  start.cbSize = sizeof(start);
  start.fMask = SEE_MASK_FLAG_NO_UI;
  start.lpVerb = "open";
  start.lpFile = fileName;
  start.lpDirectory = folder;
  start.nShow = SW_SHOWNORMAL;
  return ShellExecuteExA(&start) != FALSE;
}

Machine& ThisMachine() {
  static WatchedMachine machine;
  return machine;
}
