#include "advice/Link.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::wstring_view kScheme = L"norvik:";
constexpr std::wstring_view kQuiet = L"/quiet";
constexpr std::wstring_view kBlanks = L" \t";
constexpr wchar_t kQuote = L'"';

std::wstring_view WithoutBlanksInFront(std::wstring_view text) {
  const std::size_t start = text.find_first_not_of(kBlanks);
  return start == std::wstring_view::npos ? std::wstring_view() : text.substr(start);
}

std::wstring_view WithoutBlanksBehind(std::wstring_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// What stands behind the program's name: a name in quotes ends with the next one, any other with a blank.
std::wstring_view BehindProgram(std::wstring_view commandLine) {
  const bool isQuoted = !commandLine.empty() && commandLine.front() == kQuote;
  const std::size_t end = isQuoted ? commandLine.find(kQuote, 1) : commandLine.find_first_of(kBlanks);
  return end == std::wstring_view::npos ? std::wstring_view() : commandLine.substr(end + 1);
}

bool IsQuietOption(std::wstring_view text) {
  return text.substr(0, kQuiet.size()) == kQuiet && text.find_first_of(kBlanks) == kQuiet.size();
}

// ASCII letters only: a scheme has no others (RFC 3986).
wchar_t LowerLetter(wchar_t character) {
  return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

bool BeginsWithScheme(std::wstring_view text, std::wstring_view scheme) {
  return text.size() >= scheme.size() &&
         std::equal(scheme.begin(), scheme.end(), text.begin(),
                    [](wchar_t wanted, wchar_t character) { return wanted == LowerLetter(character); });
}

bool IsRefusedCharacter(wchar_t character) {
  return character <= L' ' || character > L'~' || character == kQuote || character == L'\\';
}

bool IsDotSegment(std::wstring_view segment) {
  std::wstring plain(segment);
  for (std::size_t escape = plain.find(L'%'); escape != std::wstring::npos; escape = plain.find(L'%', escape + 1)) {
    if (plain.compare(escape, 3, L"%2e") == 0 || plain.compare(escape, 3, L"%2E") == 0)
      plain.replace(escape, 3, L".");
  }
  return plain == L"." || plain == L"..";
}

// The system takes `/../` out of a URL, of its query too, before it asks the server, and servers take it out of the path
// however it is written: what is asked for would be in another folder than what was checked.
bool HasDotSegment(std::wstring_view url) {
  while (!url.empty()) {
    const std::size_t end = url.find_first_of(L"/?#");
    if (IsDotSegment(url.substr(0, end)))
      return true;
    url = end == std::wstring_view::npos ? std::wstring_view() : url.substr(end + 1);
  }
  return false;
}

}  // namespace

LinkCall ReadLinkCall(const std::wstring& commandLine) {
  LinkCall call;
  std::wstring_view rest = WithoutBlanksBehind(WithoutBlanksInFront(BehindProgram(commandLine)));
  if (IsQuietOption(rest)) {
    call.isQuiet = true;
    rest = WithoutBlanksInFront(rest.substr(kQuiet.size()));
  }
  if (rest.size() > 1 && rest.front() == kQuote && rest.back() == kQuote)
    rest = rest.substr(1, rest.size() - 2);
  else if (rest.find_first_of(kBlanks) != std::wstring_view::npos)
    throw LinkRefused("The program takes one link, and was called with more.");
  if (rest.empty())
    throw LinkRefused("The program was called without a link.");
  call.link = rest;
  return call;
}

std::wstring ManifestOfLink(const std::wstring& link) {
  if (!BeginsWithScheme(link, kScheme))
    throw LinkRefused("The link does not begin with 'norvik:'.");
  std::wstring_view url = link;
  url.remove_prefix(kScheme.size());
  if (url.size() > kMaximumLinkedCharacters)
    throw LinkRefused("The URL in the link has more than 2,000 characters.");
  if (std::any_of(url.begin(), url.end(), IsRefusedCharacter))
    throw LinkRefused(
        "The URL in the link has a character that no URL has: a space, a quote, a backslash, or one that is not ASCII.");
  if (HasDotSegment(url))
    throw LinkRefused("The URL in the link has '.' or '..' in the place of a folder's name.");
  for (const std::wstring_view scheme : {L"http://", L"https://"}) {
    if (BeginsWithScheme(url, scheme) && url.size() > scheme.size())
      return std::wstring(url);
  }
  throw LinkRefused(
      "A link can start a manifest on the web only: behind 'norvik:' stands a URL that begins with http:// or https://.");
}
