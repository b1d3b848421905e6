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

// Whether a place that somebody named is on the web, as the module sees it.
bool IsOnTheWeb(const std::wstring& place);

// The full path of a place on this machine: a path, or a `file:` URL.
std::wstring LocalPath(const std::wstring& place);

// The place as the module takes it: a URL as it is, and a path by PathForModule, whatever folder it was relative to.
// Unanswered when it has characters that the code page lacks, or is empty.
std::wstring PlaceForModule(const std::wstring& place);

// The path by which the module can open a file: the path itself, or its short form when it has characters that are not in
// the code page. Unanswered, with a sentence that says so, when there is no such form.
std::wstring PathForModule(const std::wstring& path);
