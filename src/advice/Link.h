#pragma once

#include <stdexcept>
#include <string>

// A link that starts a manifest: `norvik:` and the manifest's URL as it stands. Anybody may write one, and any program may
// call with anything, so nothing in it is corrected or decoded: what is checked is what is fetched.

// A link, or the command line that brought it, is not taken. what() is a sentence for the reader, in UTF-8.
class LinkRefused : public std::runtime_error {
 public:
  explicit LinkRefused(const std::string& sentence) : std::runtime_error(sentence) {}
};

// What the system hands over when it starts the program for a link.
struct LinkCall {
  std::wstring link;
  bool isQuiet = false;
};

// Reads a raw command line: the program's name, `/quiet` or nothing, and one argument, in quotes or without. Between the
// quotes everything belongs to the argument, so that no part of it becomes a second one or an option. LinkRefused for
// anything else.
LinkCall ReadLinkCall(const std::wstring& commandLine);

// The most characters that a manifest's URL may have in a link. Browsers drop longer links without a word.
constexpr std::size_t kMaximumLinkedCharacters = 2000;

// The manifest's URL in a link. LinkRefused for another scheme around it, and for everything inside but a URL that begins
// with http:// or https:// and has only printable ASCII characters without space, quote and backslash.
std::wstring ManifestOfLink(const std::wstring& link);
