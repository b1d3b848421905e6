#pragma once

#include "common/Windows.h"

#include <cstddef>
#include <memory>
#include <utility>

// Narrow text is in the ANSI code page; owned narrow text is null when it could not be allocated.
using OwnedText = std::unique_ptr<char[]>;

// An owned automation string.
class BString {
 public:
  BString() = default;
  explicit BString(BSTR owned) : text(owned) {}
  BString(BString&& other) noexcept : text(std::exchange(other.text, nullptr)) {}
  BString& operator=(BString&& other) noexcept {
    if (this != &other) {
      SysFreeString(text);
      text = std::exchange(other.text, nullptr);
    }
    return *this;
  }
  BString(const BString&) = delete;
  BString& operator=(const BString&) = delete;
  ~BString() { SysFreeString(text); }

  BSTR Get() const { return text; }
  bool IsEmpty() const { return !text || !*text; }
  BSTR Detach() { return std::exchange(text, nullptr); }
  explicit operator bool() const { return text != nullptr; }

  // The place for a callee to put a string; what was held is freed first.
  BSTR* Receive() {
    SysFreeString(std::exchange(text, nullptr));
    return &text;
  }

 private:
  BSTR text = nullptr;
};

// A zero-filled narrow buffer of `bytes` bytes; null when out of memory.
OwnedText AllocateText(std::size_t bytes);

// A copy of `text`; null when `text` is null or memory has run out.
OwnedText CopyText(const char* text);

// A copy of the first `length` bytes of `text`, zero-terminated.
OwnedText CopyText(const char* text, std::size_t length);

// Two to four texts joined in a new buffer; null when a piece is null or memory has run out.
OwnedText JoinText(const char* first, const char* second);
OwnedText JoinText(const char* first, const char* second, const char* third);
OwnedText JoinText(const char* first, const char* second, const char* third, const char* fourth);

// Wide text in the ANSI code page (characters outside of it become the code page's default character); null when `text` is
// null or memory has run out.
OwnedText NarrowText(const wchar_t* text);

// Narrow text as an automation string; empty (a null string) when `text` is null or memory has run out.
BString WideText(const char* text);

// Two automation strings joined; null when either is null or memory has run out.
BString JoinBStrings(const BString& first, const BString& second);

// True when `text` begins with `prefix`, which is ASCII, whatever the case of either.
bool BeginsWithNoCase(const char* text, const char* prefix);

// True when the texts are equal whatever their case; null equals nothing.
bool EqualsNoCase(const wchar_t* text, const wchar_t* other);
