#include "advice/Words.h"

#include <algorithm>
#include <iterator>
#include <new>

#include "common/Text.h"

namespace {

constexpr int kHexDigits = 8;

std::wstring Wide(UINT codePage, const char* text, std::size_t length) {
  if (length == 0)
    return {};
  const int size = MultiByteToWideChar(codePage, 0, text, static_cast<int>(length), nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(codePage, 0, text, static_cast<int>(length), wide.data(), size);
  return wide;
}

struct NamedResult {
  HRESULT hr;
  const char* name;
};

constexpr NamedResult kNamedResults[] = {
    {S_OK, "S_OK"},
    {S_FALSE, "S_FALSE"},
    {E_FAIL, "E_FAIL"},
    {E_ACCESSDENIED, "E_ACCESSDENIED"},
    {E_INVALIDARG, "E_INVALIDARG"},
    {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
    {E_POINTER, "E_POINTER"},
    {E_UNEXPECTED, "E_UNEXPECTED"},
    {E_NOTIMPL, "E_NOTIMPL"},
};

}  // namespace

std::wstring WideFromUtf8(const std::string& text) {
  return Wide(CP_UTF8, text.data(), text.size());
}

std::wstring WideFromAnsi(const char* text) {
  return text ? Wide(CP_ACP, text, std::char_traits<char>::length(text)) : std::wstring();
}

std::string Utf8(const wchar_t* text, std::size_t length) {
  // Most texts are ASCII, and documents have many of them.
  if (std::all_of(text, text + length, [](wchar_t character) { return character < 0x80; }))
    return std::string(text, text + length);
  const int count = static_cast<int>(length);
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, count, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, count, narrow.data(), size, nullptr, nullptr);
  return narrow;
}

std::string Utf8(const std::wstring& text) {
  return Utf8(text.data(), text.size());
}

std::string Utf8FromAnsi(const char* text) {
  return Utf8(WideFromAnsi(text));
}

// The way back tells whether a character was lost: some that are not in the code page become one that is like them.
std::optional<std::string> AnsiFromWide(const std::wstring& text) {
  const OwnedText narrow = NarrowText(text.c_str());
  if (!narrow)
    throw std::bad_alloc();
  if (WideFromAnsi(narrow.get()) != text)
    return std::nullopt;
  return std::string(narrow.get());
}

bool IsInCodePage(const std::string& text) {
  const auto isAscii = [](char character) { return static_cast<unsigned char>(character) < 0x80; };
  return std::all_of(text.begin(), text.end(), isAscii) || AnsiFromWide(WideFromUtf8(text)).has_value();
}

std::string WithoutCredentials(const std::string& text) {
  // Scanned by hand: a text of any length must cost no stack.
  std::string shown;
  std::size_t position = 0;
  for (;;) {
    const std::size_t slashes = text.find("//", position);
    if (slashes == std::string::npos)
      break;
    const std::size_t start = slashes + 2;
    const std::size_t end = text.find_first_of("/\\?#'\" \t\r\n", start);
    const std::size_t at = text.rfind('@', end);  // none of the characters that end it is one
    const bool isScheme = slashes > 0 && text[slashes - 1] == ':';
    const bool hasCredentials = isScheme && at != std::string::npos && at >= start;
    shown.append(text, position, start - position);
    position = hasCredentials ? at + 1 : start;
  }
  return shown.append(text, position, std::string::npos);
}

std::string ResultName(HRESULT hr) {
  for (const NamedResult& named : kNamedResults) {
    if (named.hr == hr)
      return named.name;
  }
  return HexCode(hr);
}

std::string HexCode(HRESULT hr) {
  std::string code = "0x";
  for (int digit = kHexDigits - 1; digit >= 0; --digit)
    code += "0123456789abcdef"[(static_cast<DWORD>(hr) >> (4 * digit)) & 0xF];
  return code;
}

std::string SystemText(HRESULT hr) {
  wchar_t text[512] = L"";
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                                      static_cast<DWORD>(hr), 0, text, static_cast<DWORD>(std::size(text)), nullptr);
  std::wstring found(text, length);
  while (!found.empty() && (found.back() == L'\r' || found.back() == L'\n' || found.back() == L' '))
    found.pop_back();
  return Utf8(found);
}

std::string ReasonText(HRESULT hr) {
  const std::string text = SystemText(hr);
  return text.empty() ? HexCode(hr) : text;
}

std::string CodeAndText(HRESULT hr) {
  const std::string text = SystemText(hr);
  return text.empty() ? HexCode(hr) : HexCode(hr) + ", " + text;
}
