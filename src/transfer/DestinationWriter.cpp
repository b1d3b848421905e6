#include "transfer/DestinationWriter.h"

#include <wininet.h>

#include <algorithm>
#include <cstring>

#include "transfer/CookieText.h"

namespace {

constexpr std::size_t kFirstCookieCapacity = 4096;

}  // namespace

bool DestinationWriter::Create(DWORD attributes) {
  isCreated = isCookie ? CreateCookie() : CreateFileAnew(attributes);
  return isCreated;
}

bool DestinationWriter::CreateFileAnew(DWORD attributes) {
  file = FileHandle(CreateFileA(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, attributes, nullptr));
  // A name such as nul.txt is that of a device in every folder: it swallows the bytes, or hands them to a printer.
  if (file && IsDevice(file)) {
    file = FileHandle();
    SetLastError(ERROR_INVALID_NAME);
  }
  return static_cast<bool>(file);
}

bool DestinationWriter::CreateCookie() {
  cookieValue = AllocateText(kFirstCookieCapacity);
  cookieCapacity = kFirstCookieCapacity;
  if (!cookieValue)
    SetLastError(ERROR_OUTOFMEMORY);
  return cookieValue != nullptr;
}

bool DestinationWriter::Write(const void* bytes, DWORD count) {
  if (isCookie)
    return AppendToCookie(bytes, count);
  DWORD written = 0;
  if (!WriteFile(file.Get(), bytes, count, &written, nullptr))
    return false;
  if (written == count)
    return true;
  SetLastError(ERROR_WRITE_FAULT);
  return false;
}

bool DestinationWriter::AppendToCookie(const void* bytes, DWORD count) {
  const std::size_t needed = cookieLength + count + 1;
  if (needed > cookieCapacity) {
    const std::size_t capacity = std::max(needed, cookieCapacity * 2);
    OwnedText grown = AllocateText(capacity);
    if (!grown) {
      SetLastError(ERROR_OUTOFMEMORY);
      return false;
    }
    std::memcpy(grown.get(), cookieValue.get(), cookieLength);
    cookieValue = std::move(grown);
    cookieCapacity = capacity;
  }
  std::memcpy(cookieValue.get() + cookieLength, bytes, count);
  cookieLength += count;
  cookieValue[cookieLength] = '\0';
  return true;
}

bool DestinationWriter::SetTime(const FILETIME& newTime) {
  if (isCookie) {
    cookieExpiry = newTime;
    return true;
  }
  return SetFileTime(file.Get(), &newTime, &newTime, &newTime) != FALSE;
}

bool DestinationWriter::Close() {
  if (!isCreated)
    return true;
  return isCookie ? SetCookie() : file.Close();
}

bool DestinationWriter::SetCookie() {
  const OwnedText text = BuildCookieText(cookieValue.get(), cookieExpiry);
  cookieValue.reset();
  return text && InternetSetCookieA(name, nullptr, text.get());
}

void DestinationWriter::Delete() {
  if (isCookie || !isCreated || DeleteFileA(name))
    return;
  // A file with the read-only attribute resists; it got the attribute when it was created.
  SetFileAttributesA(name, FILE_ATTRIBUTE_NORMAL);
  DeleteFileA(name);
}
