#include "support/WebServer.h"

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "support/Socket.h"

namespace {

const char kVariable[] = "NORVIK_TEST_SERVER";

std::string ToHex(const std::string& text) {
  static const char digits[] = "0123456789abcdef";
  std::string hex;
  for (const unsigned char c : text) {
    hex += digits[c >> 4];
    hex += digits[c & 15];
  }
  return hex;
}

std::string FromHex(const std::string& hex) {
  std::string text;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    text += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return text;
}

// Keeps the thread's last error, so that a handler of a patched call may use the server.
std::string Command(const std::string& command) {
  const DWORD error = GetLastError();
  std::string reply;
  if (const int port = WebServer::Port("control")) {
    LocalConnection connection(port);
    connection.Send(command + "\n");
    reply = connection.ReceiveAll();
  }
  SetLastError(error);
  return reply;
}

std::string UrlAt(const char* scheme, const char* port, const std::string& path) {
  return std::string(scheme) + "://localhost:" + std::to_string(WebServer::Port(port)) + path;
}

Request ParseRequest(const std::string& line) {
  Request request;
  std::istringstream words(line);
  std::string path, header;
  words >> request.port >> request.method >> path;
  request.path = FromHex(path);
  while (words >> header) {
    const std::size_t colon = header.find(':');
    request.headers.emplace_back(FromHex(header.substr(0, colon)), FromHex(header.substr(colon + 1)));
  }
  return request;
}

}  // namespace

Response Response::Raw() {
  Response response;
  response.hasHead = false;
  return response;
}

Response& Response::Status(const std::string& codeAndReason) {
  status = codeAndReason;
  return *this;
}

Response& Response::Header(const std::string& name, const std::string& value) {
  headers += name + ": " + value + "\r\n";
  return *this;
}

Response& Response::Redirect(const std::string& location) {
  return Status("302 Found").Header("Location", location);
}

Response& Response::Length(unsigned long long bytes) {
  length = bytes;
  isLengthGiven = true;
  return *this;
}

Response& Response::NoLength() {
  hasLength = false;
  return *this;
}

Response& Response::Body(const std::string& bytes) {
  steps += " send:" + ToHex(bytes);
  length += isLengthGiven ? 0 : bytes.size();
  return *this;
}

Response& Response::Repeat(const std::string& pattern, unsigned long long bytes) {
  steps += " repeat:" + ToHex(pattern) + ":" + std::to_string(bytes);
  length += isLengthGiven ? 0 : bytes;
  return *this;
}

Response& Response::Chunk(const std::string& bytes) {
  isChunked = true;
  std::ostringstream size;
  size << std::hex << bytes.size();
  return Body(size.str() + "\r\n" + bytes + "\r\n");
}

Response& Response::Hold() {
  steps += " hold";
  return *this;
}

Response& Response::Reset() {
  steps += " reset";
  return *this;
}

std::string Response::Head() const {
  std::string head = "HTTP/1.1 " + status + "\r\n" + headers;
  if (isChunked)
    head += "Transfer-Encoding: chunked\r\n";
  else if (hasLength)
    head += "Content-Length: " + std::to_string(length) + "\r\n";
  return head + "Connection: close\r\n\r\n";
}

std::string Response::Steps() const {
  return (hasHead ? " send:" + ToHex(Head()) : "") + steps + (isChunked ? " send:" + ToHex("0\r\n\r\n") : "");
}

std::string Request::Header(const std::string& name) const {
  for (const auto& [key, value] : headers) {
    if (!lstrcmpiA(key.c_str(), name.c_str()))
      return value;
  }
  return std::string();
}

WebServer::WebServer() {
  Command("clear");
}

int WebServer::Port(const std::string& name) {
  const char* const variable = std::getenv(kVariable);
  std::istringstream words(variable ? variable : "");
  std::string word;
  while (words >> word) {
    if (!word.compare(0, name.size() + 1, name + "="))
      return std::atoi(word.c_str() + name.size() + 1);
  }
  ADD_FAILURE() << kVariable << " names no port '" << name
                << "': start this program with scripts/run-windows-program --server";
  return 0;
}

std::string WebServer::Url(const std::string& path) const {
  return UrlAt("http", "http", path);
}

std::string WebServer::SecureUrl(const std::string& path) const {
  return UrlAt("https", "good", path);
}

std::string WebServer::UntrustedUrl(const std::string& path) const {
  return UrlAt("https", "untrusted", path);
}

std::string WebServer::ExpiredUrl(const std::string& path) const {
  return UrlAt("https", "expired", path);
}

std::string WebServer::WrongNameUrl(const std::string& path) const {
  return UrlAt("https", "wrong-name", path);
}

std::string WebServer::RefusedUrl(const std::string& path) const {
  return UrlAt("http", "refused", path);
}

void WebServer::Answer(const std::string& path, const Response& response) {
  Command("answer " + ToHex(path) + response.Steps());
}

std::vector<Request> WebServer::Requests() const {
  std::vector<Request> requests;
  std::istringstream lines(Command("requests"));
  std::string line;
  while (std::getline(lines, line))
    requests.push_back(ParseRequest(line));
  return requests;
}

std::vector<std::string> WebServer::Asked() const {
  std::vector<std::string> asked;
  for (const Request& request : Requests())
    asked.push_back(request.method + " " + request.path);
  return asked;
}

void WebServer::AwaitHold(const std::string& path) const {
  EXPECT_EQ("yes", Command("held " + ToHex(path))) << "no answer for " << path << " stands at a Hold";
}

void WebServer::Release(const std::string& path) const {
  EXPECT_NE("0", Command("release " + ToHex(path))) << "no answer for " << path << " stands at a Hold";
}
