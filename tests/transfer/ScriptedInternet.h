#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "support/ImportPatch.h"

// WinINet with a body of the test's own. A read gives bytes of one chunk only, so that the borders between the chunks are
// exactly the test's, and writes no byte more than it reports. One object at a time.
class ScriptedInternet {
 public:
  explicit ScriptedInternet(std::vector<std::string> bodyChunks) : chunks(std::move(bodyChunks)) {}

  // The read number `call`, counted from 1, fails.
  void FailRead(int call, DWORD error) {
    failedRead = call;
    readError = error;
  }

  // The server's answer has this header (an HTTP_QUERY_ number); it has no other ones.
  void Announce(DWORD header, const std::string& value) { headers[header] = value; }

  int Reads() const { return reads; }
  DWORD LargestRead() const { return largestRead; }

  // Whether both handles were opened and closed, each once.
  bool IsClosed() const { return opened == 2 && closed == 2; }

 private:
  static HINTERNET Handle(int number) { return reinterpret_cast<HINTERNET>(static_cast<INT_PTR>(number)); }

  BOOL Read(HINTERNET connection, void* buffer, DWORD size, DWORD* count) {
    EXPECT_EQ(Handle(2), connection);
    largestRead = size > largestRead ? size : largestRead;
    if (++reads == failedRead) {
      SetLastError(readError);
      return FALSE;
    }
    *count = 0;
    if (chunk == chunks.size())
      return TRUE;
    const std::string& bytes = chunks[chunk];
    const std::size_t left = bytes.size() - position;
    *count = static_cast<DWORD>(left < size ? left : size);
    std::memcpy(buffer, bytes.data() + position, *count);
    position += *count;
    if (position == bytes.size()) {
      ++chunk;
      position = 0;
    }
    return TRUE;
  }

  BOOL Query(DWORD header, void* buffer, DWORD* size) {
    const auto found = headers.find(header);
    const bool fits = found != headers.end() && found->second.size() < *size;
    if (!fits) {
      SetLastError(found == headers.end() ? ERROR_HTTP_HEADER_NOT_FOUND : ERROR_INSUFFICIENT_BUFFER);
      return FALSE;
    }
    std::memcpy(buffer, found->second.c_str(), found->second.size() + 1);
    *size = static_cast<DWORD>(found->second.size());
    return TRUE;
  }

  std::map<DWORD, std::string> headers;
  std::vector<std::string> chunks;
  std::size_t chunk = 0;
  std::size_t position = 0;
  int failedRead = 0;
  DWORD readError = 0;
  int reads = 0;
  DWORD largestRead = 0;
  int opened = 0;
  int closed = 0;

  ImportedFunction<struct ScriptedOpen, decltype(&::InternetOpenA)> open{
      "InternetOpenA", [this](auto, const char* agent, DWORD access, const char* proxy, const char* bypass, DWORD flags) {
        EXPECT_STREQ("Norvik", agent);
        EXPECT_EQ(DWORD{INTERNET_OPEN_TYPE_PRECONFIG}, access);
        EXPECT_EQ(nullptr, proxy);
        EXPECT_EQ(nullptr, bypass);
        EXPECT_EQ(0u, flags);
        return Handle(++opened);
      }};
  ImportedFunction<struct ScriptedOpenUrl, decltype(&::InternetOpenUrlA)> openUrl{
      "InternetOpenUrlA",
      [this](auto, HINTERNET session, const char*, const char* headers, DWORD length, DWORD flags, DWORD_PTR context) {
    EXPECT_EQ(Handle(1), session);
    EXPECT_EQ(nullptr, headers);
    EXPECT_EQ(0u, length);
    EXPECT_EQ(0x84000000u, flags);
    EXPECT_EQ(0u, context);
    return Handle(++opened);
      }};
  ImportedFunction<struct ScriptedRead, decltype(&::InternetReadFile)> readFile{
      "InternetReadFile", [this](auto, HINTERNET connection, void* buffer, DWORD size, DWORD* count) {
        return Read(connection, buffer, size, count);
      }};
  ImportedFunction<struct ScriptedClose, decltype(&::InternetCloseHandle)> close{
      "InternetCloseHandle", [this](auto, HINTERNET handle) {
        ++closed;
        EXPECT_EQ(Handle(opened + 1 - closed), handle);  // the connection before its session
        return TRUE;
      }};
  ImportedFunction<struct ScriptedQuery, decltype(&::HttpQueryInfoA)> query{
      "HttpQueryInfoA", [this](auto, HINTERNET connection, DWORD header, void* buffer, DWORD* size, DWORD*) {
        EXPECT_EQ(Handle(2), connection);
        return Query(header, buffer, size);
      }};
};
