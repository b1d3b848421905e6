#include "common/PathText.h"

#include <cstdint>

#include "common/Text.h"

namespace {

int UpperCase(unsigned char character) {
  if (character < 0x80)
    return character >= 'a' && character <= 'z' ? character - ('a' - 'A') : character;
  // A pointer below 64 KiB is taken for a character by the call, and comes back as one.
  const auto upper = reinterpret_cast<std::uintptr_t>(CharUpperA(reinterpret_cast<char*>(std::uintptr_t{character})));
  return static_cast<int>(upper & 0xFF);
}

}  // namespace

const char* NextCharacter(const char* position) {
  if (IsDBCSLeadByte(static_cast<BYTE>(*position)) && position[1])
    return position + 2;
  return position + 1;
}

bool IsSeparator(char character) {
  return character == '\\' || character == '/' || character == ':';
}

std::size_t LengthWithoutTrailingSeparator(const char* text, std::size_t length) {
  constexpr std::size_t kRootLength = 7;
  if (length == kRootLength && (BeginsWithNoCase(text, "http://") || BeginsWithNoCase(text, "file://")))
    return length;
  const char* const end = text + length;
  const char* last = end;
  for (const char* position = text; position < end; position = NextCharacter(position))
    last = position;
  if (last + 1 == end && (*last == '\\' || *last == '/'))
    return length - 1;
  return length;
}

const char* BehindLastSeparator(const char* text) {
  const char* found = nullptr;
  for (const char* position = text; *position; position = NextCharacter(position)) {
    if (IsSeparator(*position))
      found = position + 1;
  }
  return found;
}

const char* LastDot(const char* text) {
  const char* found = nullptr;
  const char* position = text;
  for (; *position; position = NextCharacter(position)) {
    if (*position == '.')
      found = position;
  }
  return found ? found : position;
}

const char* BehindLastDot(const char* text) {
  const char* const dot = LastDot(text);
  return *dot ? dot + 1 : dot;
}

int CompareNoCase(const char* text, const char* other, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    const auto a = static_cast<unsigned char>(text[i]);
    const auto b = static_cast<unsigned char>(other[i]);
    if (a == b) {
      if (IsDBCSLeadByte(a) && i + 1 < length) {
        ++i;
        if (text[i] != other[i])
          return static_cast<unsigned char>(text[i]) < static_cast<unsigned char>(other[i]) ? -1 : 1;
      }
      continue;
    }
    if (IsDBCSLeadByte(a) || IsDBCSLeadByte(b) || UpperCase(a) != UpperCase(b))
      return UpperCase(a) < UpperCase(b) ? -1 : 1;
  }
  return 0;
}
