#pragma once

#include "common/Windows.h"

#include <cstddef>
#include <cstdint>
#include <string>

// What the fuzz targets share. A target takes the bytes of an input apart, calls the code under test with them and checks
// what holds for every input. The targets are built twice: natively, for the fuzzer (tests/fuzz/native), and for Windows,
// where ReplayTest.cpp runs the inputs that are kept.

// Ends the process natively, so that the fuzzer keeps the input; fails the test under Windows.
void Broken(const char* promise, const char* file, int line);

#define HOLDS(promise) ((promise) ? static_cast<void>(0) : Broken(#promise, __FILE__, __LINE__))

// Chooses between the two code pages of the native build. Under Windows the system's own stays.
void UseCodePage(bool isDoubleByte);

// The bytes of an input, taken from the front. Behind the end there are zeros and empty texts.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : position(data), end(data + size) {}

  bool IsAtEnd() const { return position == end; }
  unsigned TakeByte() { return position < end ? *position++ : 0; }
  std::uint64_t TakeNumber(int bytes);

  // At most `count` bytes.
  std::string TakeBytes(std::size_t count);

  // The bytes before the next zero byte, or to the end; the zero byte is taken too.
  std::string TakeText();

  // Everything that is left, with runs written out: 0xFE, a count and a byte stand for 8 times as many of that byte; a count
  // of zero for the byte itself. Ends once there are 10,000 bytes.
  std::string TakeRuns();

 private:
  const std::uint8_t* position;
  const std::uint8_t* end;
};

// The text with both bytes of every double-byte character replaced by letters: what is left is what a scan may take for a
// separator, a dot or a question mark. Of the same length.
std::string WithoutDoubleBytes(const std::string& text);

// ASCII letters in lower case.
std::string Lowered(std::string text);

bool BeginsWith(const std::string& text, const std::string& prefix);

// The text as a call that takes zero-terminated text sees it.
std::string UpToZero(const std::string& text);

// The targets.
void FuzzURL(Input& input);
void FuzzTime(Input& input);
void FuzzHead(Input& input);
void FuzzLogName(Input& input);
void FuzzRename(Input& input);
void FuzzSearch(Input& input);
void FuzzCookie(Input& input);
void FuzzLink(Input& input);
