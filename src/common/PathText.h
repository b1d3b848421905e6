#pragma once

#include <cstddef>

// Scanning of paths and URLs in the ANSI code page. In a double-byte code page the second byte of a character may look like
// a separator; every scan here steps over whole characters.

// The character behind the one at `position`, which is not the terminator. A lead byte before the terminator counts alone.
const char* NextCharacter(const char* position);

// True for the three characters that end a folder in a path or URL: `\`, `/` and `:`.
bool IsSeparator(char character);

// The number of bytes of `text` (its first `length` bytes) without one trailing `\` or `/`. Empty text, "http://" and
// "file://" stay whole, and so does a text whose last byte is the second of a double-byte character.
std::size_t LengthWithoutTrailingSeparator(const char* text, std::size_t length);

// The text behind the last separator of `text`; null when it holds none.
const char* BehindLastSeparator(const char* text);

// The last dot of `text`, dots before a separator included; its terminator when there is no dot.
const char* LastDot(const char* text);

// The text behind the last dot of `text`, dots before a separator included; its terminator when there is no dot.
const char* BehindLastDot(const char* text);

// Compares the first `length` bytes of two texts, which both have them, without regard to case: negative, zero or positive.
// The case of a character is the ANSI code page's, character by character and whatever the language; the two bytes of a
// double-byte character are compared as they are.
int CompareNoCase(const char* text, const char* other, std::size_t length);
