#include "advice/Prolog.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr char kDocumentType[] = "<!DOCTYPE";
constexpr char kEmptyType[] = "<!DOCTYPE x>";  // no longer than the shortest that is one

// Steps through markup; at the end it stays there.
class Scanner {
 public:
  explicit Scanner(const std::string& scannedText) : text(scannedText) {}

  std::size_t Position() const { return position; }
  bool IsAtEnd() const { return position >= text.size(); }
  char Current() const { return text[position]; }
  bool IsAt(const char* sought) const { return text.compare(position, std::char_traits<char>::length(sought), sought) == 0; }

  void Step() { ++position; }
  void SkipBlanks() { position = std::min(text.find_first_not_of(" \t\r\n", position), text.size()); }

  // Goes behind the next `end`, which may not overlap the first `length` characters.
  void SkipBehind(const char* end, std::size_t length) {
    const std::size_t found = text.find(end, std::min(position + length, text.size()));
    position = found == std::string::npos ? text.size() : found + std::char_traits<char>::length(end);
  }

  // Goes behind a comment, an instruction or a text in quotes; false when it is at none of them.
  bool SkipOpaque() {
    if (IsAt("<!--"))
      SkipBehind("-->", 4);
    else if (IsAt("<?"))
      SkipBehind("?>", 2);
    else if (!IsAtEnd() && (Current() == '"' || Current() == '\''))
      SkipBehind(Current() == '"' ? "\"" : "'", 1);
    else
      return false;
    return true;
  }

 private:
  const std::string& text;
  std::size_t position = 0;
};

// Goes behind a document type, at which the scanner is.
void SkipDocumentType(Scanner& scanner) {
  bool isInSubset = false;
  while (!scanner.IsAtEnd()) {
    if (scanner.SkipOpaque())
      continue;
    const char character = scanner.Current();
    scanner.Step();
    if (character == '[')
      isInSubset = true;
    else if (character == ']')
      isInSubset = false;
    else if (character == '>' && !isInSubset)
      return;
  }
}

// Goes to the first thing that is no comment and no instruction.
void SkipBeforeDocumentType(Scanner& scanner) {
  if (scanner.IsAt(kByteOrderMark))
    scanner.SkipBehind(kByteOrderMark, 0);
  scanner.SkipBlanks();
  while (!scanner.IsAtEnd() && scanner.Current() == '<' && scanner.SkipOpaque())
    scanner.SkipBlanks();
}

}  // namespace

std::string WithoutDocumentType(std::string bytes) {
  Scanner scanner(bytes);
  SkipBeforeDocumentType(scanner);
  if (!scanner.IsAt(kDocumentType))
    return bytes;
  const std::size_t start = scanner.Position();
  SkipDocumentType(scanner);
  const auto blank = [](char character) { return character == '\n' || character == '\r' ? character : ' '; };
  const std::size_t length = scanner.Position() - start;
  std::string replacement = bytes.substr(start, length);
  std::transform(replacement.begin(), replacement.end(), replacement.begin(), blank);
  const std::size_t room = std::char_traits<char>::length(kEmptyType);
  replacement.replace(0, std::min(room, replacement.find_first_of("\r\n")), kEmptyType);
  return bytes.replace(start, length, replacement);
}

bool HasWideCharacters(const std::string& bytes) {
  return bytes.compare(0, 2, "\xFF\xFE") == 0 || bytes.compare(0, 2, "\xFE\xFF") == 0 ||
         bytes.substr(0, 4).find('\0') != std::string::npos;
}
