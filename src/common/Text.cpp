#include "common/Text.h"

#include <cstring>
#include <new>

namespace {

bool AsciiEqualNoCase(wchar_t a, wchar_t b) {
  const auto lower = [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; };
  return lower(a) == lower(b);
}

OwnedText Join(const char* const* pieces, std::size_t count) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (!pieces[i])
      return nullptr;
    length += std::strlen(pieces[i]);
  }
  OwnedText joined(new (std::nothrow) char[length + 1]);
  if (!joined)
    return nullptr;
  char* end = joined.get();
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t pieceLength = std::strlen(pieces[i]);
    std::memcpy(end, pieces[i], pieceLength);
    end += pieceLength;
  }
  *end = '\0';
  return joined;
}

}  // namespace

OwnedText AllocateText(std::size_t bytes) {
  return OwnedText(new (std::nothrow) char[bytes]());
}

OwnedText CopyText(const char* text) {
  return text ? CopyText(text, std::strlen(text)) : nullptr;
}

OwnedText CopyText(const char* text, std::size_t length) {
  OwnedText copy(new (std::nothrow) char[length + 1]);
  if (copy) {
    std::memcpy(copy.get(), text, length);
    copy[length] = '\0';
  }
  return copy;
}

OwnedText JoinText(const char* first, const char* second) {
  const char* const pieces[] = {first, second};
  return Join(pieces, 2);
}

OwnedText JoinText(const char* first, const char* second, const char* third) {
  const char* const pieces[] = {first, second, third};
  return Join(pieces, 3);
}

OwnedText JoinText(const char* first, const char* second, const char* third, const char* fourth) {
  const char* const pieces[] = {first, second, third, fourth};
  return Join(pieces, 4);
}

OwnedText NarrowText(const wchar_t* text) {
  if (!text)
    return nullptr;
  const int bytes = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (bytes <= 0)
    return nullptr;
  OwnedText narrow(new (std::nothrow) char[static_cast<std::size_t>(bytes)]);
  if (!narrow || WideCharToMultiByte(CP_ACP, 0, text, -1, narrow.get(), bytes, nullptr, nullptr) <= 0)
    return nullptr;
  return narrow;
}

BString WideText(const char* text) {
  if (!text)
    return BString();
  const int characters = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  if (characters <= 0)
    return BString();
  BString wide(SysAllocStringLen(nullptr, static_cast<UINT>(characters - 1)));
  if (!wide || MultiByteToWideChar(CP_ACP, 0, text, -1, wide.Get(), characters) <= 0)
    return BString();
  return wide;
}

BString JoinBStrings(const BString& first, const BString& second) {
  if (!first || !second)
    return BString();
  const UINT firstLength = SysStringLen(first.Get());
  const UINT secondLength = SysStringLen(second.Get());
  BString joined(SysAllocStringLen(nullptr, firstLength + secondLength));
  if (joined) {
    std::memcpy(joined.Get(), first.Get(), firstLength * sizeof(wchar_t));
    std::memcpy(joined.Get() + firstLength, second.Get(), (secondLength + 1) * sizeof(wchar_t));
  }
  return joined;
}

bool BeginsWithNoCase(const char* text, const char* prefix) {
  for (; *prefix; ++text, ++prefix) {
    if (!*text || !AsciiEqualNoCase(static_cast<unsigned char>(*text), static_cast<unsigned char>(*prefix)))
      return false;
  }
  return true;
}

bool EqualsNoCase(const wchar_t* text, const wchar_t* other) {
  if (!text || !other)
    return false;
  for (; *text && *other; ++text, ++other) {
    if (!AsciiEqualNoCase(*text, *other))
      return false;
  }
  return *text == *other;
}
