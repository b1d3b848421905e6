// Texts in memory: copying, searching and formatting them, and the system's allocators for them.

#include "common/Windows.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

DWORD lastError = 0;

constexpr std::size_t kLongestFormatted = 1024;  // of wsprintf, its terminator not counted

const char* Next(const char* position) {
  return position + (IsDBCSLeadByte(static_cast<BYTE>(*position)) && position[1] ? 2 : 1);
}

}  // namespace

DWORD GetLastError() {
  return lastError;
}

void SetLastError(DWORD error) {
  lastError = error;
}

char* lstrcpynA(char* copy, const char* text, int bytes) {
  int length = 0;
  for (; length < bytes - 1 && text[length]; ++length)
    copy[length] = text[length];
  if (bytes > 0)
    copy[length] = '\0';
  return copy;
}

// Steps over whole characters; the bytes are compared as they are.
char* StrStrA(const char* text, const char* sought) {
  const std::size_t length = std::strlen(sought);
  const char* const end = text + std::strlen(text);
  for (; length > 0 && text + length <= end; text = Next(text)) {
    std::size_t same = 0;
    while (same < length && text[same] == sought[same])
      ++same;
    if (same == length)
      return const_cast<char*>(text);
  }
  return nullptr;
}

// The conversions in use (%s %d %x, with widths) mean the same to the C library.
int wvnsprintfA(char* buffer, int bytes, const char* format, va_list arguments) {
  const int length = std::vsnprintf(buffer, static_cast<std::size_t>(bytes), format, arguments);
  return length < bytes ? length : -1;
}

int wnsprintfA(char* buffer, int bytes, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = wvnsprintfA(buffer, bytes, format, arguments);
  va_end(arguments);
  return length;
}

int wsprintfA(char* buffer, const char* format, ...) {
  char formatted[kLongestFormatted + 1];
  va_list arguments;
  va_start(arguments, format);
  wvnsprintfA(formatted, sizeof(formatted), format, arguments);
  va_end(arguments);
  const std::size_t length = std::strlen(formatted);
  std::memcpy(buffer, formatted, length + 1);
  return static_cast<int>(length);
}

// Wide formats hold %s (a wide text) and %d at most.
int wvnsprintfW(wchar_t* buffer, int characters, const wchar_t* format, va_list arguments) {
  std::wstring text;
  for (; *format; ++format) {
    if (*format != L'%') {
      text += *format;
      continue;
    }
    ++format;
    if (*format == L's')
      text += va_arg(arguments, const wchar_t*);
    else if (*format == L'd')
      text += std::to_wstring(va_arg(arguments, int));
  }
  const std::size_t length = std::min(text.size(), static_cast<std::size_t>(characters - 1));
  std::memcpy(buffer, text.c_str(), length * sizeof(wchar_t));
  buffer[length] = L'\0';
  return text.size() == length ? static_cast<int>(length) : -1;
}

// The length in bytes stands before the text.
BSTR SysAllocStringLen(const wchar_t* text, UINT characters) {
  const std::size_t bytes = characters * sizeof(wchar_t);
  auto* const memory = static_cast<std::size_t*>(std::malloc(sizeof(std::size_t) + bytes + sizeof(wchar_t)));
  *memory = characters;
  auto* const string = reinterpret_cast<wchar_t*>(memory + 1);
  if (text)
    std::memcpy(string, text, bytes);
  string[characters] = L'\0';
  return string;
}

void SysFreeString(BSTR text) {
  if (text)
    std::free(reinterpret_cast<std::size_t*>(text) - 1);
}

UINT SysStringLen(BSTR text) {
  return text ? static_cast<UINT>(reinterpret_cast<std::size_t*>(text)[-1]) : 0;
}

void* LocalAlloc(UINT, SIZE_T bytes) {
  return std::calloc(1, bytes);
}

void* LocalFree(void* memory) {
  std::free(memory);
  return nullptr;
}

DWORD FormatMessageA(DWORD, const void*, DWORD, DWORD, char* buffer, DWORD, va_list*) {
  static constexpr char kText[] = "It failed.\r\n";
  char* const text = static_cast<char*>(LocalAlloc(LPTR, sizeof(kText)));
  std::memcpy(text, kText, sizeof(kText));
  std::memcpy(buffer, &text, sizeof(text));
  return sizeof(kText) - 1;
}
