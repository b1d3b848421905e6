#include "transfer/FileWriter.h"

bool FileWriter::Create(DWORD attributes) {
  file = FileHandle(CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, attributes, nullptr));
  // A name such as nul.txt is that of a device in every folder: it swallows the bytes, or hands them to a printer.
  if (file && IsDevice(file)) {
    file = FileHandle();
    SetLastError(ERROR_INVALID_NAME);
  }
  isCreated = static_cast<bool>(file);
  return isCreated;
}

bool FileWriter::Write(const void* bytes, DWORD count) {
  DWORD written = 0;
  if (!WriteFile(file.Get(), bytes, count, &written, nullptr))
    return false;
  if (written == count)
    return true;
  SetLastError(ERROR_WRITE_FAULT);
  return false;
}

bool FileWriter::SetTime(const FILETIME& newTime) {
  return SetFileTime(file.Get(), &newTime, &newTime, &newTime) != FALSE;
}

bool FileWriter::Close() {
  return file.Close();
}

void FileWriter::Delete() {
  if (!isCreated || DeleteFileA(path))
    return;
  // A file with the read-only attribute resists; it got the attribute when it was created.
  SetFileAttributesA(path, FILE_ATTRIBUTE_NORMAL);
  DeleteFileA(path);
}
