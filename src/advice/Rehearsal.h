#pragma once

#include "common/Windows.h"

#include <map>
#include <string>

#include "engine/Machine.h"

// A machine on which a run changes nothing: it keeps account of the files and folders that the run would have written, moved
// and made, so that a later command meets what an earlier one did. Only the manifest itself is fetched, into the Internet
// cache. Every other transfer succeeds, as far as its file could be created.
class RehearsedMachine final : public Machine {
 public:
  // `transferObserver` (may be null) hears of the manifest's bytes.
  explicit RehearsedMachine(TransferObserver* transferObserver = nullptr) : Machine(transferObserver) {}

  // What a run would find under that name from now on; the time is that of the last write.
  void Put(const char* path, DWORD attributes, const FILETIME& time);

  DWORD GetAttributes(const char* path) const override;
  bool SetAttributes(const char* path, DWORD attributes) override;
  bool CreateFolder(const char* path) override;
  bool Move(const char* from, const char* to) override;
  bool Delete(const char* path) override;

  HRESULT GetWriteTime(const char* path, FILETIME& time) const override;
  HRESULT GetDestinationFile(const CDestinationFolder& folder, const CSourceURL* source, OwnedText* fileName) override;
  HRESULT Fetch(const char* source, const char* destination, DWORD attributes, const FILETIME* time, DWORD flags,
                const char* notFoundText) override;
  HRESULT CommitToCache(const CDestinationFolder& folder, const CSourceURL* source, const char* localFile) override;
  bool Open(const char* fileName, const char* folder) override;

 private:
  struct State {
    DWORD attributes;  // INVALID_FILE_ATTRIBUTES when the file is gone
    FILETIME time;
  };

  const State* Find(const char* path) const;
  State StateOf(const char* path) const;
  DWORD AttributesOnDisk(const char* path) const;
  DWORD ErrorOfCreating(const char* path, DWORD attributes) const;
  DWORD ErrorOfPlace(const char* path) const;

  std::string cacheFile;                // the name that stands for the next file of the Internet cache
  std::map<std::string, State> states;  // by the full path in capital letters
};
