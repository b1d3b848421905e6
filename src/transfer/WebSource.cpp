#include "transfer/WebSource.h"

#include <cstring>

#include "common/SystemError.h"
#include "log/LogFile.h"

namespace {

constexpr SourceFile kSourceFile = {"FileUtilities", 2000};
constexpr char kAgent[] = "Norvik";

// Always from the server, and nothing of it is left in the browser's cache.
constexpr DWORD kOpenFlags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE;

constexpr DWORD kHeaderBytes = 64;

bool HasHeader(HINTERNET connection, DWORD header) {
  char value[kHeaderBytes];
  DWORD size = sizeof(value);
  return HttpQueryInfoA(connection, header, value, &size, nullptr) || GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

// Some systems take a connection that ends before the status line for an answer with status 0 and without a body; others
// fail to open it.
bool IsAnswered(HINTERNET connection) {
  char status[kHeaderBytes];
  DWORD size = sizeof(status);
  return !HttpQueryInfoA(connection, HTTP_QUERY_STATUS_CODE, status, &size, nullptr) || std::strcmp(status, "0") != 0;
}

// A decimal number without anything else; false when it is none or does not fit.
bool ParseNumber(const char* text, ULONGLONG& number) {
  constexpr ULONGLONG kMaximum = ~ULONGLONG{0};
  if (!*text)
    return false;
  number = 0;
  for (; *text; ++text) {
    if (*text < '0' || *text > '9')
      return false;
    const auto digit = static_cast<ULONGLONG>(*text - '0');
    if (number > (kMaximum - digit) / 10)
      return false;
    number = number * 10 + digit;
  }
  return true;
}

}  // namespace

HRESULT WebSource::Open(const char* url) {
  session = InternetHandle(InternetOpenA(kAgent, INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
  if (!session)
    return Traced(HERE, ResultFromLastError());
  connection = InternetHandle(InternetOpenUrlA(session.Get(), url, nullptr, 0, kOpenFlags, 0));
  if (!connection)
    return Reported(HERE, ResultFromLastError(), "Opening '%s' failed.", url);
  if (!IsAnswered(connection.Get()))
    return Reported(HERE, ResultFromError(ERROR_INTERNET_CONNECTION_ABORTED), "Opening '%s' failed.", url);
  ReadAnnouncedBytes();
  return S_OK;
}

// A length counts only when it is that of the bytes as they come: not of a body in chunks, nor of one that the transport may
// unpack.
void WebSource::ReadAnnouncedBytes() {
  char length[kHeaderBytes];
  DWORD size = sizeof(length);
  isLengthAnnounced =
      !HasHeader(connection.Get(), HTTP_QUERY_TRANSFER_ENCODING) &&
      !HasHeader(connection.Get(), HTTP_QUERY_CONTENT_ENCODING) &&
      HttpQueryInfoA(connection.Get(), HTTP_QUERY_CONTENT_LENGTH, length, &size, nullptr) &&
      ParseNumber(length, announcedBytes);
}

bool WebSource::Read(void* buffer, DWORD size, DWORD& count) {
  count = 0;
  if (!InternetReadFile(connection.Get(), buffer, size, &count))
    return false;
  receivedBytes += count;
  const bool isEnd = count == 0;
  if (isLengthAnnounced && (receivedBytes > announcedBytes || (isEnd && receivedBytes < announcedBytes))) {
    SetLastError(ERROR_INTERNET_CONNECTION_ABORTED);
    return false;
  }
  return true;
}
