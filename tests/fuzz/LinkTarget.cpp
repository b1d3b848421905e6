// The command line of a link, and the manifest's URL in it.

#include "common/Windows.h"

#include <cstring>

#include "Target.h"
#include "advice/Link.h"

namespace {

constexpr wchar_t kProgram[] = L"\"C:\\norvikopen.exe\" ";
constexpr char kRefused[] = " \"\\";

std::wstring Widened(const std::string& bytes, bool areUnits) {
  std::wstring wide;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    unsigned unit = static_cast<unsigned char>(bytes[i]);
    if (areUnits && i + 1 < bytes.size())
      unit |= static_cast<unsigned>(static_cast<unsigned char>(bytes[++i])) << 8;
    wide += static_cast<wchar_t>(unit);
  }
  return wide;
}

bool IsNarrow(const std::wstring& text) {
  for (const wchar_t character : text) {
    if (character >= 0x80)
      return false;
  }
  return true;
}

std::string Narrowed(const std::wstring& text) {
  std::string narrow;
  for (const wchar_t character : text)
    narrow += static_cast<char>(character);
  return narrow;
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t found = text.find(from); found != std::string::npos; found = text.find(from, found + to.size()))
    text.replace(found, from.size(), to);
}

// With every end of a segment written as a slash, and slashes around.
bool HasDots(std::string url) {
  url = Lowered(url);
  ReplaceAll(url, "%2e", ".");
  ReplaceAll(url, "?", "/");
  ReplaceAll(url, "#", "/");
  url = "/" + url + "/";
  return url.find("/./") != std::string::npos || url.find("/../") != std::string::npos;
}

bool IsWebAddress(const std::string& url) {
  const std::string lower = Lowered(url);
  return (BeginsWith(lower, "http://") && url.size() > 7) || (BeginsWith(lower, "https://") && url.size() > 8);
}

bool IsGood(const std::wstring& link) {
  if (!IsNarrow(link))
    return false;
  const std::string text = Narrowed(link);
  if (!BeginsWith(Lowered(text), "norvik:"))
    return false;
  const std::string url = text.substr(7);
  for (const char character : url) {
    if (character < ' ' || character > '~' || std::memchr(kRefused, character, sizeof(kRefused) - 1))
      return false;
  }
  return url.size() <= 2000 && IsWebAddress(url) && !HasDots(url);
}

void CheckLink(const std::wstring& link) {
  try {
    const std::wstring url = ManifestOfLink(link);
    HOLDS(IsGood(link));
    HOLDS(url == link.substr(7));
  } catch (const LinkRefused&) {
    HOLDS(!IsGood(link));
  }
}

// What stands between the quotes arrives as it is, whatever it is.
void CheckQuoted(const std::wstring& argument) {
  try {
    const LinkCall call = ReadLinkCall(kProgram + (L"\"" + argument + L"\""));
    HOLDS(call.link == argument && !call.isQuiet);
  } catch (const LinkRefused&) {
    HOLDS(argument.empty());
  }
}

void CheckRaw(const std::wstring& commandLine) {
  try {
    const LinkCall call = ReadLinkCall(commandLine);
    HOLDS(!call.link.empty());
    HOLDS(commandLine.find(call.link) != std::wstring::npos);
    CheckLink(call.link);
  } catch (const LinkRefused& refused) {
    HOLDS(*refused.what() != '\0');
  }
}

}  // namespace

void FuzzLink(Input& input) {
  const bool areUnits = input.TakeByte() & 1;
  const std::wstring text = Widened(input.TakeRuns(), areUnits);
  CheckRaw(text);
  CheckRaw(kProgram + text);
  CheckQuoted(text);
  CheckLink(text);
  CheckLink(L"norvik:" + text);
  CheckLink(L"norvik:http://" + text);
}
