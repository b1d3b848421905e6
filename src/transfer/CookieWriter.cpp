#include "transfer/CookieWriter.h"

#include <wininet.h>

#include <algorithm>
#include <cstring>

#include "transfer/CookieText.h"

namespace {

constexpr std::size_t kFirstCapacity = 4096;

OwnedText AllocateValue(std::size_t bytes) {
  OwnedText value = AllocateText(bytes);
  if (!value)
    SetLastError(ERROR_OUTOFMEMORY);
  return value;
}

}  // namespace

bool CookieWriter::Create(DWORD /*attributes*/) {
  value = AllocateValue(kFirstCapacity);
  capacity = kFirstCapacity;
  return value != nullptr;
}

bool CookieWriter::Write(const void* bytes, DWORD count) {
  const std::size_t needed = length + count + 1;
  if (needed > capacity) {
    const std::size_t grownCapacity = std::max(needed, capacity * 2);
    OwnedText grown = AllocateValue(grownCapacity);
    if (!grown)
      return false;
    std::memcpy(grown.get(), value.get(), length);
    value = std::move(grown);
    capacity = grownCapacity;
  }
  std::memcpy(value.get() + length, bytes, count);
  length += count;
  value[length] = '\0';
  return true;
}

bool CookieWriter::SetTime(const FILETIME& newTime) {
  expiry = newTime;
  return true;
}

bool CookieWriter::Close() {
  if (!value)
    return true;
  const OwnedText text = BuildCookieText(value.get(), expiry);
  value.reset();
  return text && InternetSetCookieA(url, nullptr, text.get());
}
