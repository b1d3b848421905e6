#include "transfer/DestinationFolder.h"

#include <wininet.h>

#include <cstring>

#include "common/PathText.h"
#include "common/SystemError.h"
#include "log/LogFile.h"

namespace {

constexpr SourceFile kSourceFile = {"DestinationFolder"};
constexpr char kClassName[] = "CDestinationFolder";

constexpr ULONGLONG kCacheLifetime = 36000000000ull;  // one hour in units of 100 nanoseconds

void StoreResult(HRESULT* result, HRESULT hr) {
  if (result)
    *result = hr;
}

FILETIME UniversalTime(ULONGLONG localTime) {
  FILETIME local;
  local.dwLowDateTime = static_cast<DWORD>(localTime);
  local.dwHighDateTime = static_cast<DWORD>(localTime >> 32);
  FILETIME universal = {};
  LocalFileTimeToFileTime(&local, &universal);
  return universal;
}

ULONGLONG LocalTimeNow() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  FILETIME local = {};
  SystemTimeToFileTime(&now, &local);
  return (static_cast<ULONGLONG>(local.dwHighDateTime) << 32) | local.dwLowDateTime;
}

HRESULT CreateCacheFile(const CSourceURL& source, OwnedText* fileName) {
  char localName[MAX_PATH] = "";
  if (!CreateUrlCacheEntryA(source.GetLocation(), 0, source.GetExtension(), localName, 0))
    return Traced(HERE, ResultFromLastError());
  *fileName = CopyText(localName);  // null without memory, which the transfer refuses as a missing name
  if (!*fileName)
    DeleteFileA(localName);
  return S_OK;
}

}  // namespace

CDestinationFolder::CDestinationFolder(FolderKind folderKind, const wchar_t* text, HRESULT* result) : kind(folderKind) {
  StoreResult(result, Resolve(text));
}

CDestinationFolder::CDestinationFolder(FolderKind folderKind, HRESULT* result) : kind(folderKind) {
  StoreResult(result, ResolveFolder(kind, "", path));
}

CDestinationFolder::CDestinationFolder(const char* folderPath, HRESULT* result) : kind(FolderKind::Path) {
  StoreResult(result, ResolveFolder(kind, folderPath, path));
}

CDestinationFolder::CDestinationFolder(const wchar_t* folderPath, HRESULT* result) : kind(FolderKind::Path) {
  StoreResult(result, Resolve(folderPath));
}

HRESULT CDestinationFolder::Resolve(const wchar_t* text) {
  const OwnedText narrow = NarrowText(text ? text : L"");
  if (!narrow)
    return Traced(HERE, E_OUTOFMEMORY);
  return ResolveFolder(kind, narrow.get(), path);
}

bool CDestinationFolder::IsKindOf(const char* name) const {
  return name && !std::strcmp(name, kClassName);
}

void CDestinationFolder::Dump() const {
  LogText(path.get());
}

int CDestinationFolder::Compare(const CListItem* other) const {
  const bool isFolder = other && other->IsKindOf(kClassName);
  const char* const pattern = isFolder ? static_cast<const CDestinationFolder*>(other)->GetPath() : nullptr;
  if (!path || !pattern)
    return path ? 1 : pattern ? -1 : 0;
  const std::size_t length = std::strlen(path.get());
  if (std::strlen(pattern) < length)
    return -1;
  return CompareNoCase(path.get(), pattern, length);
}

bool CDestinationFolder::FileExists(const char* fileName, const FileSystem& files) const {
  return !IsStore() && files.Exists(fileName);
}

HRESULT CDestinationFolder::CreateFolder(FileSystem& files) const {
  if (IsStore())
    return S_OK;
  if (!path)
    return Traced(HERE, E_UNEXPECTED);
  const HRESULT hr = CreatePath(path.get(), files);
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to create path '%s'.", path.get());
  return hr;
}

HRESULT CDestinationFolder::GetDestinationFile(const CSourceURL* source, OwnedText* fileName) const {
  if (fileName)
    fileName->reset();
  if (!path)
    return Traced(HERE, E_UNEXPECTED);
  if (!source || !fileName)
    return Traced(HERE, E_INVALIDARG);
  if (kind == FolderKind::InternetCache)
    return CreateCacheFile(*source, fileName);

  const char* const sourceName = source->GetFileName();
  if (kind == FolderKind::Cookie)
    *fileName = CopyText(source->GetURL());
  else if (sourceName && *sourceName)
    *fileName = JoinText(path.get(), "\\", sourceName);
  else
    *fileName = CopyText(path.get());
  return *fileName ? S_OK : Traced(HERE, E_OUTOFMEMORY);
}

void CDestinationFolder::DiscardCacheFile(const char* localFile) const {
  if (kind == FolderKind::InternetCache && localFile)
    DeleteFileA(localFile);
}

HRESULT CDestinationFolder::CommitToCache(const CSourceURL* source, const char* localFile) const {
  if (kind != FolderKind::InternetCache)
    return S_OK;
  if (!path)
    return Traced(HERE, E_UNEXPECTED);
  if (!source || !localFile)
    return Traced(HERE, E_INVALIDARG);

  const ULONGLONG now = LocalTimeNow();
  if (!CommitUrlCacheEntryA(source->GetLocation(), localFile, UniversalTime(now + kCacheLifetime), UniversalTime(now),
                            NORMAL_CACHE_ENTRY, nullptr, 0, source->GetExtension(), nullptr)) {
    const HRESULT hr = Reported(HERE, ResultFromLastError(), "Unable to commit cache entry.\r\n\tURL: '%s'\r\n\tPath: '%s'",
                                source->GetLocation(), localFile);
    return Traced(HERE, hr);
  }
  return S_OK;
}
