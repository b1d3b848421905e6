#include "support/WebServer.h"

#include <gtest/gtest.h>

#include "common/Windows.h"

#include <wininet.h>

namespace {

// What WinINet makes of a URL: the error of the call that failed, 0 when none did, and what was read until then.
struct Download {
  DWORD openError = 0;
  DWORD readError = 0;
  DWORD status = 0;
  std::string body;
};

DWORD StatusOf(HINTERNET request) {
  DWORD status = 0, size = sizeof(status);
  HttpQueryInfoA(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr);
  return status;
}

Download Get(const std::string& url) {
  Download download;
  const HINTERNET internet = InternetOpenA("support_tests", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
  const HINTERNET request = InternetOpenUrlA(internet, url.c_str(), nullptr, 0,
                                             INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE, 0);
  if (!request) {
    download.openError = GetLastError();
  } else {
    download.status = StatusOf(request);
    char block[4096];
    DWORD count = 0;
    BOOL isRead;
    while ((isRead = InternetReadFile(request, block, sizeof(block), &count)) && count > 0)
      download.body.append(block, count);
    download.readError = isRead ? 0 : GetLastError();
    InternetCloseHandle(request);
  }
  InternetCloseHandle(internet);
  return download;
}

TEST(WebServerTest, AnswersWhatTheTestGave) {
  WebServer server;
  server.Answer("/a.txt", Response().Body("hello"));
  const Download download = Get(server.Url("/a.txt"));
  EXPECT_EQ(0u, download.openError);
  EXPECT_EQ(200u, download.status);
  EXPECT_EQ("hello", download.body);
}

TEST(WebServerTest, APathWithoutAnAnswerIsNotFound) {
  WebServer server;
  EXPECT_EQ(404u, Get(server.Url("/nothing")).status);
}

TEST(WebServerTest, ACertificateOfTheTrustedAuthorityIsAccepted) {
  WebServer server;
  server.Answer("/a.txt", Response().Body("hello"));
  const Download download = Get(server.SecureUrl("/a.txt"));
  EXPECT_EQ(0u, download.openError);
  EXPECT_EQ("hello", download.body);
}

TEST(WebServerTest, CertificatesThatAreNotInOrderAreRefusedBeforeAnythingIsAskedFor) {
  WebServer server;
  EXPECT_EQ(DWORD{ERROR_INTERNET_INVALID_CA}, Get(server.UntrustedUrl("/a.txt")).openError);
  EXPECT_EQ(DWORD{ERROR_INTERNET_SEC_CERT_DATE_INVALID}, Get(server.ExpiredUrl("/a.txt")).openError);
  EXPECT_EQ(DWORD{ERROR_INTERNET_SEC_CERT_CN_INVALID}, Get(server.WrongNameUrl("/a.txt")).openError);
  EXPECT_EQ(0u, server.Requests().size());
}

}  // namespace
