#pragma once

#include "common/Windows.h"

#include <wininet.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/ImportPatch.h"

// A server's answer that comes in chunks of the target's choice, each in one read, with a Content-Length or without one.
class ChunkedInternet {
 public:
  ChunkedInternet(const std::vector<std::string>& bodyChunks, const std::string* announcedLength)
      : chunks(bodyChunks), length(announcedLength) {}

  bool IsClosed() const { return opened == 2 && closed == 2; }

 private:
  BOOL Read(void* buffer, DWORD size, DWORD* count) {
    *count = 0;
    if (next == chunks.size())
      return TRUE;
    const std::string& chunk = chunks[next++];
    *count = static_cast<DWORD>(chunk.size());
    if (*count > size)
      return FALSE;
    std::memcpy(buffer, chunk.data(), chunk.size());
    return TRUE;
  }

  BOOL Query(DWORD header, void* buffer, DWORD* size) const {
    const bool isThere = header == HTTP_QUERY_CONTENT_LENGTH && length;
    if (!isThere || length->size() >= *size) {
      SetLastError(isThere ? ERROR_INSUFFICIENT_BUFFER : ERROR_HTTP_HEADER_NOT_FOUND);
      return FALSE;
    }
    std::memcpy(buffer, length->c_str(), length->size() + 1);
    return TRUE;
  }

  HINTERNET Open() {
    ++opened;
    return this;
  }

  const std::vector<std::string>& chunks;
  const std::string* length;
  std::size_t next = 0;
  int opened = 0;
  int closed = 0;

  ImportedFunction<struct ChunkedOpen, decltype(&::InternetOpenA)> open{
      "InternetOpenA", [this](auto, auto...) { return Open(); }};
  ImportedFunction<struct ChunkedOpenURL, decltype(&::InternetOpenUrlA)> openURL{
      "InternetOpenUrlA", [this](auto, auto...) { return Open(); }};
  ImportedFunction<struct ChunkedRead, decltype(&::InternetReadFile)> read{
      "InternetReadFile",
      [this](auto, HINTERNET, void* buffer, DWORD size, DWORD* count) { return Read(buffer, size, count); }};
  ImportedFunction<struct ChunkedClose, decltype(&::InternetCloseHandle)> close{
      "InternetCloseHandle", [this](auto, HINTERNET) -> BOOL {
        ++closed;
        return TRUE;
      }};
  ImportedFunction<struct ChunkedQuery, decltype(&::HttpQueryInfoA)> query{
      "HttpQueryInfoA",
      [this](auto, HINTERNET, DWORD header, void* buffer, DWORD* size, auto*) { return Query(header, buffer, size); }};
};
