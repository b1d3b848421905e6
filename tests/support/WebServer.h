#pragma once

#include <string>
#include <utility>
#include <vector>

// What the scripted web server answers. It is built in the order in which it is sent:
//
//   Response().Body("text")                               status 200 and a true length
//   Response().Status("500 Broken").Body("sorry")
//   Response().Redirect("/elsewhere.exe")
//   Response().Length(100).Body("only ten b")             promises more than it sends, then closes
//   Response().Length(100).Body("only ten b").Reset()     the same, ending with a reset
//   Response().Body("first").Hold().Body("second")        WebServer::Release lets it go on
//   Response().Chunk("one").Chunk("two")                  chunked, with the last chunk
//   Response().Header("Transfer-Encoding", "chunked").NoLength().Body("zz\r\n")
//   Response::Raw().Body("no HTTP at all")                Response::Raw() alone closes without an answer
//
// The connection is closed after every answer.
class Response {
 public:
  Response() = default;

  // An answer without status line and headers: the bodies are everything that is sent.
  static Response Raw();

  Response& Status(const std::string& codeAndReason);
  Response& Header(const std::string& name, const std::string& value);
  Response& Redirect(const std::string& location);

  // The Content-Length instead of the true one; none at all with NoLength: the body runs until the connection closes.
  Response& Length(unsigned long long bytes);
  Response& NoLength();

  Response& Body(const std::string& bytes);

  // `bytes` bytes that repeat `pattern`; they are made while they are sent.
  Response& Repeat(const std::string& pattern, unsigned long long bytes);

  Response& Chunk(const std::string& bytes);
  Response& Hold();

  // Bytes that the client has not received yet may be lost.
  Response& Reset();

  // The answer as the words of a command for the server.
  std::string Steps() const;

 private:
  std::string Head() const;

  bool hasHead = true;
  bool hasLength = true;
  bool isChunked = false;
  unsigned long long length = 0;
  bool isLengthGiven = false;
  std::string status = "200 OK";
  std::string headers;
  std::string steps;
};

struct Request {
  std::string port;  // "http", "good", "untrusted", "expired" or "wrong-name"
  std::string method;
  std::string path;  // with the query
  std::vector<std::pair<std::string, std::string>> headers;

  // The value of a header, whose name is compared without regard to case; empty when there is none.
  std::string Header(const std::string& name) const;
};

// The web server beside this test program (scripts/run-windows-program --server). Every object begins with no answers and no
// requests; a path without an answer gets status 404. It is spoken to over a plain socket, so that a test may patch WinINet.
class WebServer {
 public:
  WebServer();

  // The number of one of the server's ports: "http", "good", ... as the requests name them.
  static int Port(const std::string& name);

  // The URL of a path that begins with a slash.
  std::string Url(const std::string& path) const;

  // The same over TLS: with a certificate that is in order, or with one that is refused for one reason.
  std::string SecureUrl(const std::string& path) const;
  std::string UntrustedUrl(const std::string& path) const;
  std::string ExpiredUrl(const std::string& path) const;
  std::string WrongNameUrl(const std::string& path) const;

  // Nobody listens there.
  std::string RefusedUrl(const std::string& path) const;

  void Answer(const std::string& path, const Response& response);

  // The requests so far, in the order of their arrival. A request is there before its answer begins.
  std::vector<Request> Requests() const;

  // The requests so far as "GET /path", for an assertion on all of them at once.
  std::vector<std::string> Asked() const;

  // Waits until an answer for the path stands at its Hold; a failure of the test when none gets there.
  void AwaitHold(const std::string& path) const;

  // Lets the answers for the path go on that stand at a Hold now; a failure of the test when there is none.
  void Release(const std::string& path) const;
};
