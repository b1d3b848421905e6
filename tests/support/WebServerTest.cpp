#include "support/WebServer.h"

#include "common/Windows.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <wininet.h>

#include <cstdlib>

#include "support/Socket.h"

namespace {

constexpr char kRequest[] = "GET /a HTTP/1.1\r\nHost: h\r\n\r\n";
constexpr char kHead[] = "HTTP/1.1 200 OK\r\n";
constexpr char kHeadEnd[] = "Connection: close\r\n\r\n";

// A connection to the plain port that has asked for "/a".
class Asked : public LocalConnection {
 public:
  Asked() : LocalConnection(WebServer::Port("http")) { Send(kRequest); }
};

// The answer's bytes as they come over the wire.
std::string BytesOf(const Response& response) {
  WebServer server;
  server.Answer("/a", response);
  Asked connection;
  const std::string bytes = connection.ReceiveAll();
  EXPECT_FALSE(connection.IsReset());
  return bytes;
}

// What WinINet makes of a URL.
struct Download {
  DWORD error = 0;  // of the call that failed, 0 when none did
  DWORD status = 0;
  std::string body;  // what was read until then
};

void ReadAll(HINTERNET request, Download& download) {
  DWORD size = sizeof(download.status);
  HttpQueryInfoA(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &download.status, &size, nullptr);
  char block[4096];
  DWORD count = 0;
  BOOL isRead;
  while ((isRead = InternetReadFile(request, block, sizeof(block), &count)) && count > 0)
    download.body.append(block, count);
  download.error = isRead ? 0 : GetLastError();
}

Download Get(const std::string& url) {
  Download download;
  const HINTERNET internet = InternetOpenA("support_tests", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
  const HINTERNET request =
      InternetOpenUrlA(internet, url.c_str(), nullptr, 0, INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE, 0);
  if (request)
    ReadAll(request, download);
  else
    download.error = GetLastError();
  InternetCloseHandle(request);
  InternetCloseHandle(internet);
  return download;
}

struct BytesRow {
  const char* name;
  Response response;
  std::string bytes;
};

class ResponseTest : public testing::TestWithParam<BytesRow> {};

TEST_P(ResponseTest, SendsTheseBytes) {
  EXPECT_EQ(GetParam().bytes, BytesOf(GetParam().response));
}

INSTANTIATE_TEST_SUITE_P(
    , ResponseTest,
    testing::Values(
        BytesRow{"Empty", Response(), std::string(kHead) + "Content-Length: 0\r\n" + kHeadEnd},
        BytesRow{"Body", Response().Body("ab").Body(std::string("\0c", 2)),
                 std::string(kHead) + "Content-Length: 4\r\n" + kHeadEnd + std::string("ab\0c", 4)},
        BytesRow{"StatusAndHeaders", Response().Status("500 Broken").Header("X-One", "1").Header("X-Two", "2"),
                 std::string("HTTP/1.1 500 Broken\r\nX-One: 1\r\nX-Two: 2\r\nContent-Length: 0\r\n") + kHeadEnd},
        BytesRow{"Redirect", Response().Redirect("/b"),
                 std::string("HTTP/1.1 302 Found\r\nLocation: /b\r\nContent-Length: 0\r\n") + kHeadEnd},
        BytesRow{"LengthTooLong", Response().Length(100).Body("short"),
                 std::string(kHead) + "Content-Length: 100\r\n" + kHeadEnd + "short"},
        BytesRow{"LengthTooShort", Response().Body("longer").Length(2),
                 std::string(kHead) + "Content-Length: 2\r\n" + kHeadEnd + "longer"},
        BytesRow{"NoLength", Response().NoLength().Body("to the end"), std::string(kHead) + kHeadEnd + "to the end"},
        BytesRow{"Repeat", Response().Repeat("abc", 7), std::string(kHead) + "Content-Length: 7\r\n" + kHeadEnd + "abcabca"},
        BytesRow{"Chunks", Response().Chunk("one").Chunk("sixteen letters!"),
                 std::string(kHead) + "Transfer-Encoding: chunked\r\n" + kHeadEnd +
                     "3\r\none\r\n10\r\nsixteen letters!\r\n0\r\n\r\n"},
        BytesRow{"MalformedChunk", Response().NoLength().Header("Transfer-Encoding", "chunked").Body("zz\r\n"),
                 std::string(kHead) + "Transfer-Encoding: chunked\r\n" + kHeadEnd + "zz\r\n"},
        BytesRow{"RawBytes", Response::Raw().Body("no HTTP at all"), "no HTTP at all"},
        BytesRow{"NoAnswer", Response::Raw(), ""}),
    [](const testing::TestParamInfo<BytesRow>& row) { return std::string(row.param.name); });

TEST(WebServerTest, ALongBodyIsMadeWhileItIsSent) {
  const unsigned long long bytes = 3'000'001;
  const std::string answer = BytesOf(Response::Raw().Repeat("0123456789", bytes));
  ASSERT_EQ(bytes, answer.size());
  for (std::size_t i = 0; i < answer.size(); ++i)
    ASSERT_EQ(static_cast<char>('0' + i % 10), answer[i]) << i;
}

TEST(WebServerTest, AResetCanEndAnAnswer) {
  WebServer server;
  server.Answer("/a", Response::Raw().Body("abc").Hold().Reset());
  Asked connection;
  EXPECT_EQ("abc", connection.Receive(3));
  server.AwaitHold("/a");
  server.Release("/a");
  EXPECT_EQ("", connection.ReceiveAll());
  EXPECT_TRUE(connection.IsReset());
}

TEST(WebServerTest, AHeldAnswerGoesOnWhenItIsReleased) {
  WebServer server;
  server.Answer("/a", Response::Raw().Hold().Body("one").Hold().Body("two"));
  Asked connection;
  server.AwaitHold("/a");
  server.Release("/a");
  EXPECT_EQ("one", connection.Receive(3));
  server.AwaitHold("/a");
  server.Release("/a");
  EXPECT_EQ("two", connection.ReceiveAll());
  EXPECT_FALSE(connection.IsReset());
}

TEST(WebServerTest, ReleasingWhatIsNotHeldFailsTheTest) {
  WebServer server;
  EXPECT_NONFATAL_FAILURE(server.Release("/a"), "no answer for /a stands at a Hold");
}

TEST(WebServerTest, TheRequestsAreRemembered) {
  WebServer server;
  LocalConnection connection(WebServer::Port("http"));
  connection.Send("HEAD /a.asp?x=1%202&y HTTP/1.0\r\nHost: h\r\nX-Empty:\r\nUser-Agent: a client: one\r\n\r\n");
  connection.ReceiveAll();
  Asked().ReceiveAll();
  const std::vector<Request> requests = server.Requests();
  ASSERT_EQ(2u, requests.size());
  ASSERT_EQ(3u, requests[0].headers.size());
  EXPECT_EQ("X-Empty", requests[0].headers[1].first);
  EXPECT_EQ("http", requests[0].port);
  EXPECT_EQ("HEAD", requests[0].method);
  EXPECT_EQ("/a.asp?x=1%202&y", requests[0].path);
  EXPECT_EQ("a client: one", requests[0].Header("user-agent"));
  EXPECT_EQ("", requests[0].Header("Accept"));
  EXPECT_EQ((std::vector<std::string>{"HEAD /a.asp?x=1%202&y", "GET /a"}), server.Asked());
}

TEST(WebServerTest, AMalformedRequestIsRememberedAndRefused) {
  WebServer server;
  server.Answer("/a", Response().Body("a"));
  LocalConnection connection(WebServer::Port("http"));
  connection.Send("GET /a\r\nX-Forged: yes\r\n\r\n");
  EXPECT_EQ("", connection.ReceiveAll());
  EXPECT_TRUE(connection.IsReset());
  EXPECT_EQ((std::vector<std::string>{"malformed GET /a"}), server.Asked());
  EXPECT_EQ("yes", server.Requests().at(0).Header("X-Forged"));
}

TEST(WebServerTest, ARequestIsThereBeforeItsAnswer) {
  WebServer server;
  server.Answer("/a", Response::Raw().Hold());
  Asked connection;
  server.AwaitHold("/a");
  EXPECT_EQ(std::vector<std::string>{"GET /a"}, server.Asked());
}

TEST(WebServerTest, APathWithoutAnAnswerIsNotFound) {
  WebServer server;
  const Download download = Get(server.Url("/nothing"));
  EXPECT_EQ(404u, download.status);
  EXPECT_EQ("not found", download.body);
}

TEST(WebServerTest, EveryObjectBeginsAnew) {
  WebServer first;
  first.Answer("/a", Response().Body("old"));
  Get(first.Url("/a"));
  WebServer second;
  EXPECT_EQ(0u, second.Requests().size());
  EXPECT_EQ(404u, Get(second.Url("/a")).status);
}

TEST(WebServerTest, ANewObjectResetsWhatIsStillHeld) {
  WebServer first;
  first.Answer("/a", Response::Raw().Body("abc").Hold().Body("def"));
  Asked connection;
  EXPECT_EQ("abc", connection.Receive(3));
  first.AwaitHold("/a");
  WebServer second;
  EXPECT_EQ("", connection.ReceiveAll());
  EXPECT_TRUE(connection.IsReset());
}

TEST(WebServerTest, ARedirectIsFollowed) {
  WebServer server;
  server.Answer("/a", Response().Redirect(server.SecureUrl("/b")));
  server.Answer("/b", Response().Body("there"));
  EXPECT_EQ("there", Get(server.Url("/a")).body);
  EXPECT_EQ((std::vector<std::string>{"GET /a", "GET /b"}), server.Asked());
}

TEST(WebServerTest, TheRefusedPortTakesNoConnection) {
  EXPECT_EQ(DWORD{ERROR_INTERNET_CANNOT_CONNECT}, Get(WebServer().RefusedUrl("/a")).error);
}

TEST(WebServerTest, ACertificateOfTheTrustedAuthorityIsAccepted) {
  WebServer server;
  server.Answer("/a", Response().NoLength().Body("hello"));
  const Download download = Get(server.SecureUrl("/a"));
  EXPECT_EQ(0u, download.error);
  EXPECT_EQ("hello", download.body);
  ASSERT_EQ(1u, server.Requests().size());
  EXPECT_EQ("good", server.Requests()[0].port);
}

TEST(WebServerTest, CertificatesThatAreNotInOrderAreRefusedBeforeAnythingIsAskedFor) {
  WebServer server;
  EXPECT_EQ(DWORD{ERROR_INTERNET_INVALID_CA}, Get(server.UntrustedUrl("/a")).error);
  EXPECT_EQ(DWORD{ERROR_INTERNET_SEC_CERT_DATE_INVALID}, Get(server.ExpiredUrl("/a")).error);
  EXPECT_EQ(DWORD{ERROR_INTERNET_SEC_CERT_CN_INVALID}, Get(server.WrongNameUrl("/a")).error);
  EXPECT_EQ(0u, server.Requests().size());
}

TEST(WebServerTest, WithoutAServerTheTestFails) {
  const std::string variable = std::getenv("NORVIK_TEST_SERVER");
  _putenv("NORVIK_TEST_SERVER=");
  EXPECT_NONFATAL_FAILURE(WebServer(), "start this program with scripts/run-windows-program --server");
  _putenv(("NORVIK_TEST_SERVER=" + variable).c_str());
}

}  // namespace
