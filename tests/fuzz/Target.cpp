#include "Target.h"

#include <algorithm>

namespace {

constexpr std::size_t kMostRunBytes = 10000;

}  // namespace

std::uint64_t Input::TakeNumber(int bytes) {
  std::uint64_t number = 0;
  for (int i = 0; i < bytes; ++i)
    number = number << 8 | TakeByte();
  return number;
}

std::string Input::TakeBytes(std::size_t count) {
  count = std::min(count, static_cast<std::size_t>(end - position));
  const std::string bytes(position, position + count);
  position += count;
  return bytes;
}

std::string Input::TakeText() {
  const std::uint8_t* const zero = std::find(position, end, std::uint8_t{0});
  const std::string text(position, zero);
  position = zero == end ? end : zero + 1;
  return text;
}

std::string Input::TakeRuns() {
  std::string bytes;
  while (!IsAtEnd() && bytes.size() < kMostRunBytes) {
    const auto byte = static_cast<char>(TakeByte());
    if (byte != '\xFE') {
      bytes += byte;
      continue;
    }
    const std::size_t count = TakeByte() * std::size_t{8};
    bytes.append(std::max(count, std::size_t{1}), static_cast<char>(TakeByte()));
  }
  return bytes;
}

std::string WithoutDoubleBytes(const std::string& text) {
  std::string single = text;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (IsDBCSLeadByte(static_cast<BYTE>(text[i]))) {
      single[i] = single[i + 1] = 'D';
      ++i;
    }
  }
  return single;
}

std::string Lowered(std::string text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z')
      character = static_cast<char>(character - 'A' + 'a');
  }
  return text;
}

bool BeginsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

std::string UpToZero(const std::string& text) {
  return text.substr(0, text.find('\0'));
}
