#include "transfer/URLText.h"

#include <algorithm>
#include <cstring>

#include "common/ModulePath.h"
#include "common/PathText.h"

namespace {

constexpr char kHttp[] = "http:";
constexpr char kHttps[] = "https:";
constexpr char kFile[] = "file:";
constexpr char kFileRoot[] = "file://";

// The part of a text behind its first `length` characters; the terminator when it is shorter.
const char* Behind(const char* text, std::size_t length) {
  return text + std::min(length, std::strlen(text));
}

OwnedText CorrectFileName(const char* url) {
  // "file://" is taken to stand there in full: a "file:" without the slashes loses two more characters.
  const char* const path = BeginsWithNoCase(url, kFile) ? Behind(url, std::strlen(kFileRoot)) : url;
  if (!*path)
    return CopyText(kFileRoot);
  if (BehindLastSeparator(path))
    return JoinText(kFileRoot, path);
  return JoinText(kFileRoot, GetModuleFolder(), "\\", path);
}

}  // namespace

bool IsWebURL(const char* url) {
  return BeginsWithNoCase(url, kHttp) || BeginsWithNoCase(url, kHttps);
}

OwnedText CorrectURL(const char* url) {
  for (const char* const scheme : {kHttp, kHttps}) {
    if (!BeginsWithNoCase(url, scheme))
      continue;
    const char* const rest = url + std::strlen(scheme);
    return JoinText(scheme, *rest ? rest : "//");
  }
  return CorrectFileName(url);
}

HRESULT SplitURL(const char* url, OwnedText& folder, OwnedText& fileName, OwnedText* extension) {
  const char* nameStart = nullptr;
  const char* extensionStart = nullptr;
  const char* queryStart = nullptr;
  const char* position = url;
  for (; *position; position = NextCharacter(position)) {
    if (IsSeparator(*position)) {
      nameStart = position + 1;
      extensionStart = queryStart = nullptr;
    } else if (*position == '.') {
      extensionStart = position + 1;
    } else if (*position == '?') {
      queryStart = position;
    }
  }

  const std::size_t folderLength = static_cast<std::size_t>((nameStart ? nameStart : position) - url);
  folder = CopyText(url, LengthWithoutTrailingSeparator(url, folderLength));
  fileName.reset();
  if (extension)
    extension->reset();
  if (!nameStart)
    return S_FALSE;

  const char* const end = queryStart ? queryStart : position;
  fileName = CopyText(nameStart, static_cast<std::size_t>(end - nameStart));
  if (extension && extensionStart) {
    // A dot inside the query starts an extension that runs to the end of the URL.
    const char* const extensionEnd = extensionStart <= end ? end : position;
    *extension = CopyText(extensionStart, static_cast<std::size_t>(extensionEnd - extensionStart));
  }
  return S_OK;
}
