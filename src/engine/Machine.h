#pragma once

#include "common/Windows.h"

#include "common/FileSystem.h"
#include "common/Text.h"
#include "transfer/DestinationFolder.h"
#include "transfer/SourceURL.h"
#include "transfer/Transfer.h"

// What a run works on: everything that it asks of the machine and does to it goes through here. This is the machine itself;
// a rehearsal's overrides what would change it. The manifest is always fetched for good (kTransferManifest), into the
// Internet cache.
class Machine : public FileSystem {
 public:
  // `transferObserver` (may be null) hears of the bytes of every file, and outlives the machine.
  explicit constexpr Machine(TransferObserver* transferObserver = nullptr) : observer(transferObserver) {}

  // The last-write time of a file (GetFileWriteTime).
  virtual HRESULT GetWriteTime(const char* path, FILETIME& time) const;

  // The full name for a file from `source` (CDestinationFolder::GetDestinationFile); in the Internet cache, a file of that
  // name is there from now on.
  virtual HRESULT GetDestinationFile(const CDestinationFolder& folder, const CSourceURL* source, OwnedText* fileName);

  // Brings the bytes (FetchURL).
  virtual HRESULT Fetch(const char* source, const char* destination, DWORD attributes, const FILETIME* time, DWORD flags,
                        const char* notFoundText);

  // CDestinationFolder's operation of this name.
  virtual HRESULT CommitToCache(const CDestinationFolder& folder, const CSourceURL* source, const char* localFile);

  // Lets the shell open a file, whose name is given without its folder; false with the reason in the thread's last error.
  virtual bool Open(const char* fileName, const char* folder);

 protected:
  ~Machine() = default;

 private:
  TransferObserver* observer;
};

// The machine, with a transfer that somebody may listen to.
class WatchedMachine final : public Machine {
 public:
  using Machine::Machine;
};

// The one that nobody watches.
Machine& ThisMachine();
