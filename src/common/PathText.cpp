#include "common/PathText.h"

#include "common/Text.h"

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

const char* BehindLastDot(const char* text) {
  const char* found = nullptr;
  const char* position = text;
  for (; *position; position = NextCharacter(position)) {
    if (*position == '.')
      found = position + 1;
  }
  return found ? found : position;
}
