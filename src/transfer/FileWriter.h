#pragma once

#include "common/Handles.h"
#include "transfer/DestinationWriter.h"

// Writes a file, which nobody else can open meanwhile.
class FileWriter : public DestinationWriter {
 public:
  // `filePath` has to outlive the writer.
  explicit FileWriter(const char* filePath) : path(filePath) {}

  // An existing file is emptied. A name that stands for a device is refused (ERROR_INVALID_NAME).
  bool Create(DWORD attributes) override;

  // A system that takes fewer bytes than these has failed (ERROR_WRITE_FAULT).
  bool Write(const void* bytes, DWORD count) override;

  // Sets the creation, last-access and last-write time.
  bool SetTime(const FILETIME& newTime) override;

  bool Close() override;

  // A read-only file, too.
  void Delete() override;

 private:
  const char* path;
  bool isCreated = false;
  FileHandle file;
};
