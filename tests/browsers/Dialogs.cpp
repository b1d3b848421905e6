// dialogs: reads the windows that norvikopen.exe shows, as a screen reader would: one line for the window's title and for
// each text in it, with the kind of window in front, and a line break as \n. dialogs press TEXT: presses the button with
// this text. The exit code is 1 when there is none.

#include "common/Windows.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr wchar_t kTitle[] = L"Norvik";

std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

std::wstring ClassOf(HWND window) {
  wchar_t name[256] = L"";
  GetClassNameW(window, name, 256);
  return name;
}

BOOL CALLBACK Collect(HWND window, LPARAM windows) {
  if (IsWindowVisible(window))
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
  return TRUE;
}

BOOL CALLBACK CollectTitled(HWND window, LPARAM windows) {
  return TextOf(window) == kTitle ? Collect(window, windows) : TRUE;
}

std::vector<HWND> Dialogs() {
  std::vector<HWND> dialogs;
  EnumWindows(&CollectTitled, reinterpret_cast<LPARAM>(&dialogs));
  return dialogs;
}

std::vector<HWND> PartsOf(HWND dialog) {
  std::vector<HWND> parts;
  EnumChildWindows(dialog, &Collect, reinterpret_cast<LPARAM>(&parts));
  return parts;
}

// The system's buttons mark the letter that presses them.
std::wstring WithoutMark(std::wstring text) {
  const std::size_t mark = text.find(L'&');
  return mark == std::wstring::npos ? text : text.erase(mark, 1);
}

std::string Utf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  std::string bytes(static_cast<std::size_t>(length) * 3, '\0');
  bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(
      CP_UTF8, 0, text.c_str(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr)));
  return bytes;
}

std::string OnOneLine(const std::string& text) {
  std::string line;
  for (const char character : text) {
    if (character == '\n')
      line += "\\n";
    else if (character != '\r')
      line += character;
  }
  return line;
}

void Print(HWND window) {
  const std::string text = OnOneLine(Utf8(WithoutMark(TextOf(window))));
  if (!text.empty())
    std::printf("%s: %s\n", Utf8(ClassOf(window)).c_str(), text.c_str());
}

int Read() {
  for (HWND dialog : Dialogs()) {
    Print(dialog);
    for (HWND part : PartsOf(dialog))
      Print(part);
  }
  return 0;
}

// A message that waits: pressed has been when this ends.
int Press(const std::wstring& text) {
  for (HWND dialog : Dialogs()) {
    for (HWND part : PartsOf(dialog)) {
      if (ClassOf(part) == L"Button" && WithoutMark(TextOf(part)) == text) {
        SendMessageW(part, BM_CLICK, 0, 0);
        return 0;
      }
    }
  }
  return 1;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  return count == 3 && std::wstring(arguments[1]) == L"press" ? Press(arguments[2]) : Read();
}
