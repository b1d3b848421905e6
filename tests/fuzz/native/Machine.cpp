// The machine without its stores and its shell, which no target asks for.

#include "engine/Machine.h"

#include "transfer/FileUtilities.h"

HRESULT Machine::GetWriteTime(const char* path, FILETIME& time) const {
  return GetFileWriteTime(path, time);
}

HRESULT Machine::GetDestinationFile(const CDestinationFolder&, const CSourceURL*, OwnedText*) {
  return E_FAIL;
}

HRESULT Machine::Fetch(const char* source, const char* destination, DWORD attributes, const FILETIME* time, DWORD flags,
                       const char* notFoundText) {
  return FetchURL(source, destination, attributes, time, flags, notFoundText, observer);
}

HRESULT Machine::CommitToCache(const CDestinationFolder&, const CSourceURL*, const char*) {
  return E_FAIL;
}

bool Machine::Open(const char*, const char*) {
  return false;
}

Machine& ThisMachine() {
  static WatchedMachine machine;
  return machine;
}
