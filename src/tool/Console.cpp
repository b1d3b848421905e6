#include "tool/Console.h"

#include "common/Windows.h"

#include <algorithm>
#include <cstdlib>

#include "advice/Words.h"

namespace {

constexpr std::size_t kColumns = 100;
constexpr char kEraseLine[] = "\r\x1b[K";

bool isProgressShown = false;

HANDLE Stream(DWORD number) {
  return GetStdHandle(number);
}

bool IsConsole(DWORD number) {
  DWORD mode = 0;
  return GetConsoleMode(Stream(number), &mode) != FALSE;
}

// A console understands the sequences that colour text only when it is told so; one that does not shows none.
bool UnderstandsSequences(DWORD number) {
  constexpr DWORD kSequences = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING
  DWORD mode = 0;
  return GetConsoleMode(Stream(number), &mode) && SetConsoleMode(Stream(number), mode | kSequences);
}

void WriteBytes(HANDLE stream, const std::string& text) {
  for (std::size_t start = 0; start < text.size();) {
    DWORD written = 0;
    if (!WriteFile(stream, text.data() + start, static_cast<DWORD>(text.size() - start), &written, nullptr) || written == 0)
      return;  // nobody reads any more
    start += written;
  }
}

void WriteText(DWORD number, const std::string& text) {
  if (!IsConsole(number))
    return WriteBytes(Stream(number), text);
  constexpr std::size_t kPiece = 8000;  // more than some consoles take at once
  const std::wstring wide = WideFromUtf8(text);
  for (std::size_t start = 0; start < wide.size(); start += kPiece) {
    DWORD written = 0;
    const std::wstring piece = wide.substr(start, kPiece);
    WriteConsoleW(Stream(number), piece.data(), static_cast<DWORD>(piece.size()), &written, nullptr);
  }
}

void ClearProgress() {
  if (!isProgressShown)
    return;
  isProgressShown = false;
  WriteText(STD_ERROR_HANDLE, kEraseLine);
}

const char* Sequence(Colour colour) {
  switch (colour) {
    case Colour::Green:
      return "\x1b[32m";
    case Colour::Yellow:
      return "\x1b[33m";
    case Colour::Red:
      return "\x1b[31m";
    case Colour::Grey:
      return "\x1b[90m";
    case Colour::None:
      break;
  }
  return "";
}

bool BeginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

std::size_t CountColumns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

// As much of the text as has no more columns.
std::string Cut(const std::string& text, std::size_t columns) {
  std::size_t end = 0;
  while (end < text.size() && (!BeginsCharacter(text[end]) || columns-- > 0))
    ++end;
  return text.substr(0, end);
}

}  // namespace

void Print(const std::string& text) {
  ClearProgress();
  WriteText(STD_OUTPUT_HANDLE, text);
}

void PrintError(const std::string& text) {
  ClearProgress();
  WriteText(STD_ERROR_HANDLE, text);
}

std::string InColour(Colour colour, const std::string& text) {
  const bool isColoured = colour != Colour::None && !std::getenv("NO_COLOR") && UnderstandsSequences(STD_OUTPUT_HANDLE);
  return isColoured ? Sequence(colour) + text + "\x1b[0m" : text;
}

void ShowProgress(const std::string& text) {
  if (!UnderstandsSequences(STD_ERROR_HANDLE))
    return;
  WriteText(STD_ERROR_HANDLE, kEraseLine + Cut(text, kColumns - 1));
  isProgressShown = true;
}

std::string Paragraph(std::size_t indent, const std::string& text) {
  const std::string blanks(indent, ' ');
  std::string lines;
  std::string line;
  std::size_t columns = indent;
  for (std::size_t start = text.find_first_not_of(" \r\n\t"); start != std::string::npos;) {
    const std::size_t end = text.find_first_of(" \r\n\t", start);
    const std::string word = text.substr(start, end == std::string::npos ? end : end - start);
    if (!line.empty() && columns + 1 + CountColumns(word) > kColumns) {
      lines += blanks + line + "\n";
      line.clear();
      columns = indent;
    }
    columns += CountColumns(word) + (line.empty() ? 0 : 1);
    line += (line.empty() ? "" : " ") + word;
    start = end == std::string::npos ? end : text.find_first_not_of(" \r\n\t", end);
  }
  return line.empty() ? lines : lines + blanks + line + "\n";
}
