// The ANSI code page, one of two:
//  - single-byte: the first 256 characters are themselves; fullwidth forms become the ASCII characters that they resemble,
//  as
//    the best fit of 1252 does; case as in 1252.
//  - double-byte: lead bytes 0x81-0x9F and 0xE0-0xFC, second bytes 0x40-0x7E and 0x80-0xFC, as in 932, for the characters
//    from U+4E00 on in their order; 0xA1-0xDF are the halfwidth Katakana. Only ASCII letters have a case.
// What a code page does not hold becomes '?', and bytes that are no character become U+FFFD.

#include "common/Windows.h"

#include <cstdint>

#include "../Target.h"

namespace {

constexpr unsigned kFirstDoubleByte = 0x4E00;
constexpr unsigned kLeadBytes = 31 + 29;
constexpr unsigned kSecondBytes = 63 + 125;
constexpr unsigned kNoCharacter = 0xFFFD;

bool isDoubleBytePage = false;

bool IsLeadByte(unsigned byte) {
  return isDoubleBytePage && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC));
}

bool IsSecondByte(unsigned byte) {
  return byte >= 0x40 && byte <= 0xFC && byte != 0x7F;
}

unsigned DoubleByteCharacter(unsigned lead, unsigned second) {
  const unsigned row = lead - (lead >= 0xE0 ? 0xE0 - 31 : 0x81);
  const unsigned column = second - (second >= 0x80 ? 0x41 : 0x40);
  return kFirstDoubleByte + row * kSecondBytes + column;
}

// The bytes of one character, one or two, in `bytes`.
int Encode(unsigned character, unsigned (&bytes)[2]) {
  if (isDoubleBytePage && character >= kFirstDoubleByte && character < kFirstDoubleByte + kLeadBytes * kSecondBytes) {
    const unsigned row = (character - kFirstDoubleByte) / kSecondBytes;
    const unsigned column = (character - kFirstDoubleByte) % kSecondBytes;
    bytes[0] = row + (row >= 31 ? 0xE0 - 31 : 0x81);
    bytes[1] = column + (column >= 63 ? 0x41 : 0x40);
    return 2;
  }
  bytes[0] = '?';
  if (character < (isDoubleBytePage ? 0x80u : 0x100u))
    bytes[0] = character;
  else if (isDoubleBytePage && character >= 0xFF61 && character <= 0xFF9F)
    bytes[0] = character - 0xFF61 + 0xA1;
  else if (!isDoubleBytePage && character >= 0xFF01 && character <= 0xFF5E)
    bytes[0] = character - 0xFF01 + 0x21;
  return 1;
}

unsigned SingleByteCharacter(unsigned byte) {
  if (!isDoubleBytePage || byte < 0x80)
    return byte;
  return byte >= 0xA1 && byte <= 0xDF ? byte - 0xA1 + 0xFF61 : kNoCharacter;
}

unsigned Upper(unsigned byte) {
  if (byte >= 'a' && byte <= 'z')
    return byte - 0x20;
  if (isDoubleBytePage)
    return byte;
  if (byte == 0x9A || byte == 0x9C || byte == 0x9E)
    return byte - 0x10;
  if (byte == 0xFF)
    return 0x9F;
  return byte >= 0xE0 && byte != 0xF7 ? byte - 0x20 : byte;
}

// Puts `value` at `position` of a buffer with room for `room` values; a room of 0 only counts. False when it is full.
template <class Character>
bool Put(Character* buffer, int room, int position, unsigned value) {
  if (room == 0)
    return true;
  if (position >= room) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return false;
  }
  buffer[position] = static_cast<Character>(value);
  return true;
}

}  // namespace

void UseCodePage(bool isDoubleByte) {
  isDoubleBytePage = isDoubleByte;
}

BOOL IsDBCSLeadByte(BYTE byte) {
  return IsLeadByte(byte);
}

// A pointer below 64 KiB is a character, the only form that is used.
char* CharUpperA(char* text) {
  return reinterpret_cast<char*>(std::uintptr_t{Upper(static_cast<BYTE>(reinterpret_cast<std::uintptr_t>(text)))});
}

// The text ends with a zero (its length is given as -1), which is converted too.
int WideCharToMultiByte(UINT, DWORD, const wchar_t* text, int, char* narrow, int room, const char*, BOOL*) {
  int count = 0;
  for (;; ++text) {
    unsigned bytes[2];
    const int size = Encode(static_cast<unsigned>(*text), bytes);
    for (int i = 0; i < size; ++i) {
      if (!Put(narrow, room, count++, bytes[i]))
        return 0;
    }
    if (!*text)
      return count;
  }
}

int MultiByteToWideChar(UINT, DWORD, const char* text, int, wchar_t* wide, int room) {
  const auto* byte = reinterpret_cast<const BYTE*>(text);
  int count = 0;
  for (;; ++byte) {
    unsigned character = SingleByteCharacter(*byte);
    if (IsLeadByte(*byte) && byte[1]) {
      character = IsSecondByte(byte[1]) ? DoubleByteCharacter(byte[0], byte[1]) : kNoCharacter;
      ++byte;
    }
    if (!Put(wide, room, count++, character))
      return 0;
    if (!*byte)
      return count;
  }
}
