#include "advice/Document.h"

#include <cwchar>
#include <iterator>

#include "advice/Words.h"
#include "common/Handles.h"
#include "common/SystemError.h"
#include "common/Text.h"
#include "transfer/SourceURL.h"
#include "transfer/URLText.h"

namespace {

constexpr wchar_t kFileScheme[] = L"file:";
constexpr LONGLONG kMaximumBytes = 64LL * 1024 * 1024;

[[noreturn]] void CannotRead(const std::wstring& path, HRESULT hr) {
  throw Unanswered("'" + Utf8(path) + "' cannot be read: " + ReasonText(hr));
}

}  // namespace

std::string ReadDocument(const std::wstring& path) {
  const FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file)
    CannotRead(path, ResultFromLastError());
  if (IsDevice(file))
    CannotRead(path, HRESULT_FROM_WIN32(ERROR_INVALID_NAME));
  LARGE_INTEGER size;
  if (!GetFileSizeEx(file.Get(), &size))
    CannotRead(path, ResultFromLastError());
  if (size.QuadPart > kMaximumBytes)
    throw Unanswered("'" + Utf8(path) + "' has more than 64 MiB, which no manifest and no permission file needs.");
  std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
  DWORD count = 0;
  if (!ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr))
    CannotRead(path, ResultFromLastError());
  bytes.resize(count);
  return bytes;
}

std::wstring FullPath(const std::wstring& path) {
  const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  const DWORD length = GetFullPathNameW(path.c_str(), size, full.data(), nullptr);
  if (length == 0 || length >= size)
    return path;
  full.resize(length);
  return full;
}

bool IsOnTheWeb(const std::wstring& place) {
  const OwnedText narrow = NarrowText(place.c_str());
  return narrow && IsWebURL(narrow.get());
}

std::wstring LocalPath(const std::wstring& place) {
  if (_wcsnicmp(place.c_str(), kFileScheme, std::size(kFileScheme) - 1) != 0)
    return FullPath(place);
  const CSourceURL url(place.c_str(), SourceRole::Manifest, nullptr);
  return WideFromAnsi(url.GetLocation());
}

std::wstring PlaceForModule(const std::wstring& place) {
  if (place.empty())
    throw Unanswered("An empty name is no place.");
  if (!IsOnTheWeb(place))
    return PathForModule(LocalPath(place));
  if (!AnsiFromWide(place))
    throw Unanswered("The module cannot ask for '" + WithoutCredentials(Utf8(place)) +
                     "': it has characters that the code page of this machine lacks.");
  return place;
}

std::wstring PathForModule(const std::wstring& path) {
  if (AnsiFromWide(path))
    return path;
  wchar_t shortPath[MAX_PATH] = L"";
  const DWORD length = GetShortPathNameW(path.c_str(), shortPath, MAX_PATH);
  if (length > 0 && length < MAX_PATH && AnsiFromWide(shortPath))
    return shortPath;
  throw Unanswered(
      "The module cannot open '" + Utf8(path) + "': the name has characters that the code page of this machine lacks.");
}
