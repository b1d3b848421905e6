// The correction and the split of URLs, and their comparison as prefixes.

#include "common/Windows.h"

#include <cstring>

#include "Target.h"
#include "common/ModulePath.h"
#include "transfer/SourceURL.h"
#include "transfer/URLText.h"

namespace {

constexpr char kSeparators[] = "\\/:";

const char* const kModulePaths[] = {"C:\\apps\\norvik.dll", "", "norvik.dll", "\\\\server\\share\\norvik.dll"};

std::string Corrected(const std::string& text, const std::string& moduleFolder) {
  const std::string lower = Lowered(text);
  for (const char* const scheme : {"http:", "https:"}) {
    if (lower == scheme)
      return lower + "//";
    if (BeginsWith(lower, scheme))
      return scheme + text.substr(std::strlen(scheme));
  }
  std::string path = text;
  if (BeginsWith(lower, "file:"))
    path = text.size() > 7 ? text.substr(7) : "";
  if (path.empty())
    return "file://";
  if (WithoutDoubleBytes(path).find_first_of(kSeparators) != std::string::npos)
    return "file://" + path;
  return "file://" + moduleFolder + "\\" + path;
}

std::string Stripped(const std::string& folder) {
  const std::string lower = Lowered(folder);
  const char last = folder.empty() ? '\0' : WithoutDoubleBytes(folder).back();
  if (lower == "http://" || lower == "file://" || (last != '\\' && last != '/'))
    return folder;
  return folder.substr(0, folder.size() - 1);
}

bool IsText(const char* text, const std::string& expected) {
  return text && text == expected;
}

void CheckSplit(const std::string& url, bool hasName, const char* folder, const char* fileName, const char* extension) {
  const std::string single = WithoutDoubleBytes(url);
  const std::size_t separator = single.find_last_of(kSeparators);
  HOLDS(hasName == (separator != std::string::npos));
  if (!hasName) {
    HOLDS(IsText(folder, Stripped(url)));
    HOLDS(!fileName && !extension);
    return;
  }
  const std::size_t start = separator + 1;
  HOLDS(IsText(folder, Stripped(url.substr(0, start))));
  const std::size_t query = single.find_last_of('?');
  const bool hasQuery = query != std::string::npos && query >= start;
  const std::size_t end = hasQuery ? query : url.size();
  HOLDS(IsText(fileName, url.substr(start, end - start)));

  // Put together again: at most one separator is lost.
  const std::string front = folder;
  HOLDS(front.size() == start || front.size() + 1 == start);
  HOLDS(front + url.substr(front.size(), start - front.size()) + fileName + url.substr(end) == url);

  const std::size_t dot = single.find_last_of('.');
  if (dot == std::string::npos || dot < start)
    HOLDS(!extension);
  else
    HOLDS(IsText(extension, dot < end ? url.substr(dot + 1, end - dot - 1) : url.substr(dot + 1)));
}

// A full file name is split as it is, and so is a text without a separator.
void CheckSplitAlone(const std::string& text) {
  OwnedText folder, fileName, extension;
  const HRESULT hr = SplitURL(text.c_str(), folder, fileName, &extension);
  HOLDS(hr == S_OK || hr == S_FALSE);
  CheckSplit(text, hr == S_OK, folder.get(), fileName.get(), extension.get());
}

std::string Behind(const std::string& text, char character) {
  const std::size_t found = WithoutDoubleBytes(text).find_last_of(character);
  return found == std::string::npos ? "" : text.substr(found + 1);
}

void CheckURL(const CSourceURL& url, HRESULT hr, const std::string& narrow) {
  const std::string whole = Corrected(narrow, GetModuleFolder());
  HOLDS(hr == S_OK || hr == S_FALSE);
  HOLDS(IsText(url.GetURL(), whole));
  HOLDS(IsText(CorrectURL(whole.c_str()).get(), whole));
  const bool isWeb = BeginsWith(whole, "http:") || BeginsWith(whole, "https:");
  HOLDS(IsWebURL(narrow.c_str()) == isWeb);
  HOLDS(url.IsLocal() == !isWeb);
  HOLDS(IsText(url.GetLocation(), isWeb ? whole : whole.substr(7)));
  HOLDS(url.GetLocation() >= url.GetURL() && url.GetLocation() <= url.GetURL() + whole.size());
  CheckSplitAlone(narrow);
  CheckSplit(whole, hr == S_OK, url.GetFolder(), url.GetFileName(), url.GetStoredExtension());
  HOLDS(IsText(url.GetExtension(), url.GetFileName() ? Behind(url.GetFileName(), '.') : ""));
}

std::string Uppered(const std::string& text) {
  const std::string single = WithoutDoubleBytes(text);
  std::string upper = text;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (single[i] == text[i]) {
      const auto character = static_cast<std::uintptr_t>(static_cast<BYTE>(text[i]));
      upper[i] = static_cast<char>(reinterpret_cast<std::uintptr_t>(CharUpperA(reinterpret_cast<char*>(character))));
    }
  }
  return upper;
}

int SignOf(int number) {
  return (number > 0) - (number < 0);
}

void CheckCompare(const CSourceURL& entry, const CSourceURL& url) {
  const int result = SignOf(entry.Compare(&url));
  if (entry.IsLocal() != url.IsLocal()) {
    HOLDS(result == (url.IsLocal() ? -1 : 1));
    return;
  }
  const std::string folder = entry.GetFolder();
  std::string pattern = url.GetFolder();
  if (pattern.size() < folder.size()) {
    HOLDS(result == -1);
    return;
  }
  pattern.resize(folder.size());
  if (url.IsLocal())
    HOLDS((result == 0) == (Uppered(folder) == Uppered(pattern)));
  else
    HOLDS(result == SignOf(folder.compare(pattern)));
}

// Narrow bytes become a wide text by the code page, or are its units as they stand.
std::wstring Wide(const std::string& bytes, bool areUnits) {
  if (!areUnits)
    return WideText(bytes.c_str()).Get();
  std::wstring wide;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const unsigned unit = static_cast<BYTE>(bytes[i]) | static_cast<unsigned>(static_cast<BYTE>(bytes[i + 1])) << 8;
    wide += static_cast<wchar_t>(unit);
  }
  return wide.c_str();
}

}  // namespace

void FuzzURL(Input& input) {
  const unsigned choices = input.TakeByte();
  UseCodePage(choices & 1);
  SetModulePath(kModulePaths[choices >> 1 & 3]);
  const bool areUnits = choices & 8;
  const std::size_t length = input.TakeByte();
  const std::wstring first = Wide(input.TakeBytes(length), areUnits);
  const std::wstring second = Wide(input.TakeRuns(), areUnits);

  HRESULT result = E_UNEXPECTED;
  HRESULT otherResult = E_UNEXPECTED;
  const CSourceURL url(first.c_str(), SourceRole::PermittedEntry, &result);
  const CSourceURL other(second.c_str(), SourceRole::Command, &otherResult);
  CheckURL(url, result, NarrowText(first.c_str()).get());
  CheckURL(other, otherResult, NarrowText(second.c_str()).get());
  CheckCompare(url, other);
  CheckCompare(other, url);
  HOLDS(url.Compare(&url) == 0);
  url.Dump();
}
