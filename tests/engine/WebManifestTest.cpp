// Manifests and files on a web server, run as a page would have them run.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include "engine/EngineFixture.h"
#include "engine/Execute.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/WebServer.h"

namespace {

using Texts = std::vector<std::string>;

// A server whose folder /apps/ is permitted, and an executer.
class WebManifestTest : public testing::Test {
 protected:
  WebManifestTest() {
    DeleteFileA(LogCapture::PathOf("web").c_str());
    permit.URL(server.Url("/apps/")).Extension("txt").Extension("htm").Folder("Path", destination.Path());
    permit.Write();
    HRESULT hr = E_UNEXPECTED;
    executer = std::make_unique<CExecuter>(0, &hr);
    EXPECT_HRESULT(S_OK, hr);
  }

  std::string PathElement() const { return "<Path>" + destination.Path() + "</Path>"; }

  std::string Copy(const std::string& path, const std::string& options = "", const std::string& rest = "") const {
    return CopyElement(server.Url(path), PathElement() + options, rest);
  }

  HRESULT Run(const std::string& path, BSTR* navigateURL = nullptr) {
    return executer->Run(Wide(server.Url(path)).c_str(), navigateURL);
  }

  // Runs a manifest with these commands.
  HRESULT RunCommands(const std::string& commands, BSTR* navigateURL = nullptr) {
    server.Answer("/apps/web.xml", Response().Body(ManifestText(commands)));
    return Run("/apps/web.xml", navigateURL);
  }

  std::string Names() const { return NamesIn(destination.Path()); }

  static std::string LastMessage() {
    const auto entries = LogCapture::Parse(ReadWholeFile(LogCapture::PathOf("web")));
    return entries.empty() ? "" : entries.back().message;
  }

  const LogCapture log{false};
  const TemporaryFolder destination;
  WebServer server;
  PermitFile permit;
  std::unique_ptr<CExecuter> executer;
};

TEST_F(WebManifestTest, ItsFilesAreCopiedAndTheLastOneIsHandedToTheBrowser) {
  const std::string large(100000, 'x');
  server.Answer("/apps/a.txt", Response().Body("first"));
  server.Answer("/apps/sub/b.txt", Response().Body(large));
  server.Answer("/apps/c.htm", Response().Chunk("<html>").Chunk("</html>"));
  ReceivedText navigateURL;
  EXPECT_HRESULT(
      S_OK,
      RunCommands(Copy("/apps/a.txt", "<Attributes><FileTime>2002-06-25T12:00:00Z</FileTime></Attributes>") +
                      Copy("/apps/sub/b.txt") + OpenElement("browser=\"true\"", server.Url("/apps/c.htm"), PathElement()),
                  navigateURL.Receive()));
  EXPECT_EQ("a.txt b.txt c.htm", Names());
  EXPECT_EQ("first", ReadWholeFile(destination.File("a.txt")));
  EXPECT_TRUE(FileTimeOf(2002, 6, 25, 12) == GetFileWriteTimeOf(destination.File("a.txt")));
  EXPECT_TRUE(large == ReadWholeFile(destination.File("b.txt")));
  EXPECT_EQ("<html></html>", ReadWholeFile(destination.File("c.htm")));
  EXPECT_EQ(Wide("file://" + destination.File("c.htm")), navigateURL.Text());
  EXPECT_EQ((Texts{"GET /apps/web.xml", "GET /apps/a.txt", "GET /apps/sub/b.txt", "GET /apps/c.htm"}), server.Asked());
}

TEST_F(WebManifestTest, ARefusedManifestIsNeverAskedFor) {
  EXPECT_HRESULT(E_ACCESSDENIED, Run("/other/web.xml"));
  EXPECT_EQ(Texts(), server.Asked());
  EXPECT_EQ("Manifest URL '" + server.Url("/other/web.xml") + "' is not permitted.", LastMessage());
}

TEST_F(WebManifestTest, ARefusedFileIsNeverAskedFor) {
  server.Answer("/apps/b.txt", Response().Body("b"));
  EXPECT_HRESULT(S_FALSE, RunCommands(Copy("/other/a.txt") + Copy("/apps/a.bat") + Copy("/apps/b.txt")));
  EXPECT_EQ((Texts{"GET /apps/web.xml", "GET /apps/b.txt"}), server.Asked());
  EXPECT_EQ("b.txt", Names());
}

TEST_F(WebManifestTest, TheDocumentTypeThatItNamesIsNeverFetched) {
  server.Answer("/apps/evil.dtd", Response().Body("<!ELEMENT VantorManifest ANY>"));
  server.Answer("/apps/web.xml", Response().Body("<?xml version=\"1.0\"?><!DOCTYPE VantorManifest SYSTEM \"" +
                                                 server.Url("/apps/evil.dtd") + "\"><VantorManifest version=\"1.0\"/>"));
  EXPECT_HRESULT(S_OK, Run("/apps/web.xml"));
  EXPECT_EQ(Texts{"GET /apps/web.xml"}, server.Asked());
}

TEST_F(WebManifestTest, APageThatSaysNotFoundIsNoFile) {
  server.Answer("/apps/a.txt", Response().Body("<html>Sorry: Page Missing</html>"));
  server.Answer("/apps/b.txt", Response().Body("good"));
  EXPECT_HRESULT(S_FALSE, RunCommands(Copy("/apps/a.txt", "", "<NotFoundHTML>Page Missing</NotFoundHTML>") +
                                      Copy("/apps/b.txt", "", "<NotFoundHTML>Page Missing</NotFoundHTML>")));
  EXPECT_EQ("b.txt", Names());
  EXPECT_EQ("good", ReadWholeFile(destination.File("b.txt")));
}

TEST_F(WebManifestTest, WithoutANotFoundTextAServersErrorPageIsTheFile) {
  server.Answer("/apps/a.txt", Response().Status("404 Not Found").Body("Page Missing"));
  EXPECT_HRESULT(S_OK, RunCommands(Copy("/apps/a.txt")));
  EXPECT_EQ("Page Missing", ReadWholeFile(destination.File("a.txt")));
}

TEST_F(WebManifestTest, AQueryIsNoPartOfTheFileName) {
  server.Answer("/apps/a.txt?version=2", Response().Body("two"));
  EXPECT_HRESULT(S_OK, RunCommands(Copy("/apps/a.txt?version=2")));
  EXPECT_EQ("a.txt", Names());
  EXPECT_EQ("two", ReadWholeFile(destination.File("a.txt")));
}

TEST_F(WebManifestTest, AFileThatCannotBeReadToItsEndIsNotLeftBehind) {
  server.Answer("/apps/a.txt", Response().Body(std::string(10000, 'x')));
  PATCH_IMPORT(reads, InternetReadFile, [](auto original, HINTERNET file, LPVOID buffer, DWORD size, LPDWORD count) -> BOOL {
    const BOOL isRead = original(file, buffer, size, count);
    if (!isRead || *count < 100 || *static_cast<char*>(buffer) != 'x')
      return isRead;
    SetLastError(ERROR_INTERNET_CONNECTION_RESET);
    return FALSE;
  });
  EXPECT_HRESULT(S_FALSE, RunCommands(CopyElement(server.Url("/apps/a.txt"), PathElement())));
  EXPECT_EQ("", Names());
  EXPECT_EQ("'Copy' command failed.", LastMessage());
}

TEST_F(WebManifestTest, AnErrorPageIsNoManifest) {
  server.Answer("/apps/web.xml", Response().Status("404 Not Found").Body("<html><body>Not found</body></html>"));
  EXPECT_HRESULT(E_FAIL, Run("/apps/web.xml"));
  const std::string start = "Failed to copy '" + server.Url("/apps/web.xml") + "' to '";
  EXPECT_EQ(start, LastMessage().substr(0, start.size()));
}

TEST_F(WebManifestTest, AServerThatIsNotThereIsItsFailure) {
  permit.URL(server.RefusedUrl("/")).Write();
  CExecuter other(0, nullptr);
  const HRESULT hr = other.Run(Wide(server.RefusedUrl("/web.xml")).c_str(), nullptr);
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072EFD), hr);
  EXPECT_EQ(Texts(), server.Asked());
}

TEST_F(WebManifestTest, EveryRunAsksTheServerAgain) {
  server.Answer("/apps/a.txt", Response().Body("one"));
  EXPECT_HRESULT(S_OK, RunCommands(Copy("/apps/a.txt")));
  server.Answer("/apps/a.txt", Response().Body("two"));
  EXPECT_HRESULT(S_OK, RunCommands(Copy("/apps/a.txt")));
  EXPECT_EQ("two", ReadWholeFile(destination.File("a.txt")));
  EXPECT_EQ((Texts{"GET /apps/web.xml", "GET /apps/a.txt", "GET /apps/web.xml", "GET /apps/a.txt"}), server.Asked());
}

}  // namespace
