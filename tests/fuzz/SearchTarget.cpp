// The search for the text of a not-found page, for any chunking of the bytes, and the comparison of their number with the
// announced one.

#include "common/Windows.h"

#include <shlwapi.h>

#include <optional>
#include <vector>

#include "CapturedFile.h"
#include "ChunkedInternet.h"
#include "Target.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t kFullChunk = 4096;
constexpr std::size_t kMostChunks = 6;
constexpr HRESULT kAborted = static_cast<HRESULT>(0x80072EFE);

// A byte below 0xF0 is the size of a chunk that stands in the input. From 0xF0 on it is a chunk of up to 4,096 bytes of one
// kind with a few others at its end.
Texts TakeChunks(Input& input) {
  Texts chunks;
  while (!input.IsAtEnd() && chunks.size() < kMostChunks) {
    const unsigned size = input.TakeByte();
    if (size == 0)
      continue;
    if (size < 0xF0) {
      chunks.push_back(input.TakeBytes(size));
    } else {
      std::string chunk(kFullChunk - (size & 0x0F), static_cast<char>(input.TakeByte()));
      const std::string end = input.TakeBytes(input.TakeByte() & 0x3F);
      chunks.push_back(chunk.replace(chunk.size() - end.size(), end.size(), end));
    }
    if (chunks.back().empty())
      chunks.pop_back();
  }
  return chunks;
}

bool Contains(const std::string& bytes, const std::string& text) {
  return StrStrA(bytes.c_str(), text.c_str()) != nullptr;
}

// The number of the chunk with which the text is found.
std::size_t FindChunk(const Texts& chunks, const std::string& text) {
  std::string carried;
  std::size_t number = 0;
  for (; number < chunks.size(); ++number) {
    const std::string& chunk = chunks[number];
    const bool isCarryUsed = !carried.empty() && carried[0] != '\0';
    if (Contains(UpToZero((isCarryUsed ? carried : "") + chunk), text))
      break;
    carried = chunk.size() > text.size() ? chunk.substr(chunk.size() - text.size()) : "";
  }
  return number;
}

std::string Joined(const Texts& chunks) {
  std::string all;
  for (const std::string& chunk : chunks)
    all += chunk;
  return all;
}

// Where no chunk is short, no byte zero and every character one byte, chunks make no difference.
void CheckWithoutChunks(const Texts& chunks, const std::string& text, bool isFound) {
  const std::string all = Joined(chunks);
  bool isPlain = all.find('\0') == std::string::npos && WithoutDoubleBytes(all) == all;
  for (std::size_t i = 0; i + 1 < chunks.size(); ++i)
    isPlain = isPlain && chunks[i].size() > text.size();
  if (isPlain)
    HOLDS(isFound == Contains(all, text));
}

// A decimal number of 64 bits; nothing for any other text.
std::optional<ULONGLONG> Announced(const std::string& text) {
  if (text.empty() || text.size() > 63 || text.find_first_not_of("0123456789") != std::string::npos)
    return std::nullopt;
  const std::string digits = text.substr(std::min(text.find_first_not_of('0'), text.size()));
  const std::string most = "18446744073709551615";
  if (digits.size() > most.size() || (digits.size() == most.size() && digits > most))
    return std::nullopt;
  ULONGLONG number = 0;
  for (const char digit : digits)
    number = number * 10 + static_cast<ULONGLONG>(digit - '0');
  return number;
}

// The number of the read that notices a wrong length: that of a chunk, or of the end of the data.
std::size_t FindWrongLength(const Texts& chunks, ULONGLONG announced) {
  ULONGLONG received = 0;
  for (std::size_t number = 0; number < chunks.size(); ++number) {
    received += chunks[number].size();
    if (received > announced)
      return number;
  }
  return received < announced ? chunks.size() : chunks.size() + 1;
}

}  // namespace

void FuzzSearch(Input& input) {
  const unsigned choices = input.TakeByte();
  UseCodePage(choices & 1);
  const FILETIME time = {choices, 0x01C00000};
  std::string length = choices & 2 ? input.TakeText() : "";
  const std::string text = input.TakeText();
  const Texts chunks = TakeChunks(input);
  if (choices & 4)
    length = std::to_string(Joined(chunks).size());

  const std::size_t found = text.empty() ? chunks.size() : FindChunk(chunks, text);
  const std::optional<ULONGLONG> announced = Announced(length);
  const std::size_t wrong = announced ? FindWrongLength(chunks, *announced) : chunks.size() + 1;
  HRESULT expected = S_OK;
  if (wrong <= chunks.size() && wrong <= found)
    expected = kAborted;
  else if (found < chunks.size())
    expected = kNotFoundResult;
  if (!text.empty())
    CheckWithoutChunks(chunks, text, found < chunks.size());

  const ChunkedInternet internet(chunks, choices & 6 ? &length : nullptr);
  const CapturedFile file;
  const HRESULT hr = DownloadURL("http://h/a", CapturedFile::kPath, FILE_ATTRIBUTE_NORMAL, choices & 8 ? &time : nullptr, 0,
                                 choices & 16 && text.empty() ? nullptr : text.c_str());
  HOLDS(hr == expected);
  HOLDS(internet.IsClosed() && file.IsClosed());
  HOLDS(file.IsThere() == SUCCEEDED(hr));
  if (SUCCEEDED(hr)) {
    HOLDS(file.Bytes() == Joined(chunks));
    HOLDS(file.Time() == (choices & 8 ? ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime : 0));
  }
}
