#pragma once

#include "common/Windows.h"

#include <stdexcept>
#include <string>

// A question that could not be answered: a file that cannot be read, a server that is not reached. what() is a sentence for
// the reader, in UTF-8.
class Unanswered : public std::runtime_error {
 public:
  explicit Unanswered(const std::string& sentence) : std::runtime_error(sentence) {}
};

// The bytes of a file, which may lie anywhere and be named in any characters. Unanswered when it cannot be read, is a device
// or has more than 64 MiB.
std::string ReadDocument(const std::wstring& path);

// The full path of a file as it was named on a command line.
std::wstring FullPath(const std::wstring& path);

// The path by which the module can open a file: the path itself, or its short form when it has characters that are not in
// the code page. Unanswered, with a sentence that says so, when there is no such form.
std::wstring PathForModule(const std::wstring& path);
