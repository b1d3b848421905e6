#pragma once

#include "common/Windows.h"

#include <optional>
#include <string>

// Texts on their way between the module, which speaks the ANSI code page, the system, which speaks UTF-16, and readers, who
// get UTF-8. What cannot be converted becomes a replacement character, unless the function says otherwise.

std::wstring WideFromUtf8(const std::string& text);
std::wstring WideFromAnsi(const char* text);  // null is empty
std::string Utf8(const std::wstring& text);
std::string Utf8(const wchar_t* text, std::size_t length);
std::string Utf8FromAnsi(const char* text);  // null is empty

// The text in the ANSI code page; nothing when a character is not in it.
std::optional<std::string> AnsiFromWide(const std::wstring& text);

// Whether the module can read a text, which is in UTF-8: whether every character is in the ANSI code page.
bool IsInCodePage(const std::string& text);

// The text without the user name and the password of every URL in it: nobody is shown them.
std::string WithoutCredentials(const std::string& text);

// "S_OK", "E_ACCESSDENIED", ...; "0x80072efd" for a code that has no name of its own.
std::string ResultName(HRESULT hr);

// "0x80072efd".
std::string HexCode(HRESULT hr);

// What the system says of the code, without a line end; empty when it says nothing.
std::string SystemText(HRESULT hr);

// What the system says of the code; the code itself, in digits, when the system says nothing.
std::string ReasonText(HRESULT hr);

// "0x80070005, Access is denied."; the code alone when the system says nothing.
std::string CodeAndText(HRESULT hr);
