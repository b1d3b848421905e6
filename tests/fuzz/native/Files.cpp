// Files that take every byte and keep none, folders that are all there, and an Internet without servers. Targets patch what
// they look at.

#include "common/Windows.h"

#include <algorithm>
#include <cstring>

#include "Patchable.h"

namespace {
char sink[4096];

// Every byte is read, so that the sanitizer sees bytes that are not the caller's.
void Swallow(const void* bytes, DWORD size) {
  const char* position = static_cast<const char*>(bytes);
  while (size > 0) {
    const DWORD part = std::min<DWORD>(size, sizeof(sink));
    std::memcpy(sink, position, part);
    position += part;
    size -= part;
  }
}

template <class Result>
Result Refuse(Result result, DWORD error) {
  SetLastError(error);
  return result;
}

}  // namespace

PATCHABLE(HANDLE, CreateFileA,
          (const char* name, DWORD access, DWORD sharing, void* security, DWORD disposition, DWORD attributes, HANDLE model),
          (name, access, sharing, security, disposition, attributes, model)) {
  Swallow(name, static_cast<DWORD>(std::strlen(name)));

  return sink;
}

PATCHABLE(BOOL, CloseHandle, (HANDLE file), (file)) {
  return file == sink;
}

PATCHABLE(BOOL, WriteFile, (HANDLE file, const void* bytes, DWORD size, DWORD* count, void* overlapped),
          (file, bytes, size, count, overlapped)) {
  Swallow(bytes, size);
  *count = size;
  return TRUE;
}

BOOL ReadFile(HANDLE, void*, DWORD, DWORD* count, void*) {
  *count = 0;
  return TRUE;
}

DWORD GetFileSize(HANDLE, DWORD*) {
  return 0;
}

DWORD GetFileType(HANDLE) {
  return FILE_TYPE_DISK;
}

DWORD SetFilePointer(HANDLE, LONG, LONG*, DWORD) {
  return 0;
}

BOOL GetFileTime(HANDLE, FILETIME*, FILETIME*, FILETIME* write) {
  *write = {};
  return TRUE;
}

PATCHABLE(BOOL, SetFileTime, (HANDLE file, const FILETIME* creation, const FILETIME* access, const FILETIME* write),
          (file, creation, access, write)) {
  return TRUE;
}

PATCHABLE(DWORD, GetFileAttributesA, (const char* name), (name)) {
  Swallow(name, static_cast<DWORD>(std::strlen(name)));
  return FILE_ATTRIBUTE_DIRECTORY;
}

BOOL SetFileAttributesA(const char*, DWORD) {
  return TRUE;
}

PATCHABLE(BOOL, DeleteFileA, (const char* name), (name)) {
  return Refuse(FALSE, ERROR_FILE_NOT_FOUND);
}

PATCHABLE(BOOL, MoveFileA, (const char* name, const char* newName), (name, newName)) {
  return Refuse(FALSE, ERROR_FILE_NOT_FOUND);
}

PATCHABLE(BOOL, CreateDirectoryA, (const char* name, void* security), (name, security)) {
  return Refuse(FALSE, ERROR_ALREADY_EXISTS);
}

PATCHABLE(HINTERNET, InternetOpenA, (const char* agent, DWORD access, const char* proxy, const char* bypass, DWORD flags),
          (agent, access, proxy, bypass, flags)) {
  return Refuse(nullptr, ERROR_ACCESS_DENIED);
}

PATCHABLE(HINTERNET, InternetOpenUrlA,
          (HINTERNET session, const char* url, const char* headers, DWORD length, DWORD flags, DWORD_PTR context),
          (session, url, headers, length, flags, context)) {
  return Refuse(nullptr, ERROR_ACCESS_DENIED);
}

PATCHABLE(BOOL, InternetReadFile, (HINTERNET connection, void* buffer, DWORD size, DWORD* count),
          (connection, buffer, size, count)) {
  return Refuse(FALSE, ERROR_ACCESS_DENIED);
}

PATCHABLE(BOOL, InternetCloseHandle, (HINTERNET handle), (handle)) {
  return Refuse(FALSE, ERROR_ACCESS_DENIED);
}

PATCHABLE(BOOL, HttpQueryInfoA, (HINTERNET connection, DWORD header, void* buffer, DWORD* size, DWORD* index),
          (connection, header, buffer, size, index)) {
  return Refuse(FALSE, ERROR_HTTP_HEADER_NOT_FOUND);
}

PATCHABLE(BOOL, InternetSetCookieA, (const char* url, const char* name, const char* data), (url, name, data)) {
  return Refuse(FALSE, ERROR_ACCESS_DENIED);
}
