// The built program for links, as the system starts it: what it fetches, what it leaves and how it ends. No window can be
// made where these tests run.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <thread>

#include "advice/Words.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/PermitFile.h"
#include "support/Program.h"
#include "support/WebServer.h"

namespace {

class LaunchTest : public testing::Test {
 protected:
  LaunchTest() {
    for (const char* const file : {"norvikopen.exe", "norvik.dll"})
      CopyBuilt(file, program.Path());
    WritePermit(server.Url("/apps/"));
    server.Answer("/apps/start.xml", Response().Body(Manifest(Copy(server.Url("/apps/a.txt")))));
    server.Answer("/apps/a.txt", Response().Body("a"));
  }
  ~LaunchTest() override { DeleteFileA(LogCapture::PathOf("start").c_str()); }

  void WritePermit(const std::string& url) const {
    WriteWholeFile(
        program.File("permit.xml"),
        "<?xml version=\"1.0\"?><!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\"><VantorPermissions version=\"1.0\">"
        "<Source>" +
            XmlElement("URL", url) + "<Extension>txt</Extension></Source><Destination>" + XmlElement("Path", target.Path()) +
            "</Destination></VantorPermissions>");
  }

  static std::string Manifest(const std::string& commands) {
    return "<?xml version=\"1.0\"?><!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\"><VantorManifest version=\"1.0\">" +
           commands + "</VantorManifest>";
  }

  std::string Copy(const std::string& source) const {
    return "<Copy>" + XmlElement("Source", source) + "<Destination>" + XmlElement("Path", target.Path()) +
           "</Destination></Copy>";
  }

  // The arguments stand behind the program's name as they are.
  ProgramResult Start(const std::wstring& arguments) const {
    return RunCommandLine(L"\"" + WideFromAnsi(program.File("norvikopen.exe").c_str()) + L"\" " + arguments, program.Path());
  }

  std::wstring Link(const std::string& path) const { return L"\"norvik:" + WideFromAnsi(server.Url(path).c_str()) + L"\""; }

  std::vector<std::string> Log() const {
    return LogCapture::MessagesOf(LogCapture::Parse(ReadWholeFile(LogCapture::PathOf("start"))));
  }

  WebServer server;
  TemporaryFolder program;
  TemporaryFolder target;
};

TEST_F(LaunchTest, ALinkRunsItsManifest) {
  EXPECT_EQ(0u, Start(Link("/apps/start.xml")).code);
  EXPECT_EQ("a", ReadWholeFile(target.File("a.txt")));
  EXPECT_EQ((std::vector<std::string>{"GET /apps/start.xml", "GET /apps/a.txt"}), server.Asked());
}

TEST_F(LaunchTest, NothingOfTheURLIsChanged) {
  const std::string path = "/apps//start.xml?a=%22&b=%41/c&d=..";
  server.Answer(path, Response().Body(Manifest("")));
  EXPECT_EQ(0u, Start(Link(path)).code);
  EXPECT_EQ(std::vector<std::string>{"GET " + path}, server.Asked());
}

TEST_F(LaunchTest, WhatIsNotPermittedIsNotAskedFor) {
  EXPECT_EQ(1u, Start(Link("/elsewhere/start.xml")).code);
  EXPECT_EQ(std::vector<std::string>(), server.Asked());
}

TEST_F(LaunchTest, AFailedCommandIsTold) {
  server.Answer("/apps/start.xml", Response().Body(Manifest(Copy(server.Url("/elsewhere/a.txt")))));
  EXPECT_EQ(1u, Start(Link("/apps/start.xml")).code);
  EXPECT_EQ(1u, Start(L"/quiet " + Link("/apps/start.xml")).code);
  EXPECT_FALSE(FileExistsAt(target.File("a.txt")));
}

TEST_F(LaunchTest, APermissionFileThatCannotBeUsedIsAnUnansweredQuestion) {
  WriteWholeFile(program.File("permit.xml"), "no markup");
  EXPECT_EQ(3u, Start(Link("/apps/start.xml")).code);
  EXPECT_EQ(std::vector<std::string>(), server.Asked());
}

TEST_F(LaunchTest, AServerThatIsNotReachedIsAFailure) {
  WritePermit(server.RefusedUrl("/"));
  EXPECT_EQ(1u, Start(L"\"norvik:" + WideFromAnsi(server.RefusedUrl("/start.xml").c_str()) + L"\"").code);
}

struct WrongRow {
  const char* name;
  std::wstring arguments;  // {url} stands for the manifest's URL
};

class WrongCallTest : public LaunchTest, public testing::WithParamInterface<WrongRow> {};

// The permission file is not read either: one that cannot be used would change the code.
TEST_P(WrongCallTest, IsRefusedBeforeAnythingIsRead) {
  WriteWholeFile(program.File("permit.xml"), "no markup");
  std::wstring arguments = GetParam().arguments;
  const std::size_t place = arguments.find(L"{url}");
  if (place != std::wstring::npos)
    arguments.replace(place, 5, WideFromAnsi(server.Url("/apps/start.xml").c_str()));
  EXPECT_EQ(2u, Start(arguments).code);
  EXPECT_EQ(std::vector<std::string>(), server.Asked());
}

INSTANTIATE_TEST_SUITE_P(
    , WrongCallTest,
    testing::Values(
        WrongRow{"Nothing", L""}, WrongRow{"EmptyQuotes", L"\"\""},
        WrongRow{"Two", L"\"norvik:{url}\" \"norvik:http://h/\""}, WrongRow{"WithoutScheme", L"\"{url}\""},
        WrongRow{"AnOptionInFront", L"/permit=x \"norvik:{url}\""}, WrongRow{"AnOptionBehind", L"\"norvik:{url}\" --permit"},
        WrongRow{"AnOptionInsideTheQuotes", L"\"--permit norvik:{url}\""},
        WrongRow{"QuietBehind", L"\"norvik:{url}\" /quiet"}, WrongRow{"QuietAlone", L"/quiet"},
        WrongRow{"AQuoteInside", L"\"norvik:{url}\" \""}, WrongRow{"AQuoteInTheURL", L"\"norvik:{url}\"x\""},
        WrongRow{"ABackslashAtTheEnd", L"\"norvik:{url}\\\""}, WrongRow{"NULByName", L"NUL"},
        WrongRow{"NULInside", L"\"norvik:NUL\""}, WrongRow{"File", L"\"norvik:file:///C:/start.xml\""},
        WrongRow{"UNC", L"\"norvik:\\\\server\\share\\start.xml\""}, WrongRow{"NoASCII", L"\"norvik:{url}\x4E00\""},
        WrongRow{"LongOnes", L"\"norvik:{url}" + std::wstring(30000, L'x') + L"\""},
        WrongRow{"HalfACharacter", L"\"norvik:{url}\xD800\""}, WrongRow{"AFolderAbove", L"\"norvik:{url}/../start.xml\""},
        WrongRow{"ATab", L"\"norvik:{url}\t\""}),
    [](const testing::TestParamInfo<WrongRow>& row) { return std::string(row.param.name); });

// The second start leaves the log of the first one as it is, and says what it did behind it.
TEST_F(LaunchTest, AManifestThatIsRunningIsNotStartedAgain) {
  server.Answer(
      "/apps/start.xml", Response().Body(Manifest(Copy(server.Url("/elsewhere/b.txt")) + Copy(server.Url("/apps/a.txt")))));
  server.Answer("/apps/a.txt", Response().Body("a").Hold().Body("b"));
  ProgramResult first;
  std::thread running([&] { first = Start(Link("/apps/start.xml")); });
  server.AwaitHold("/apps/a.txt");
  EXPECT_EQ(0u, Start(Link("/apps/start.xml")).code);
  EXPECT_EQ(2u, server.Asked().size());
  const std::vector<std::string> log = Log();
  EXPECT_EQ("INFO '" + server.Url("/apps/start.xml") + "' is running already, and was not started again.", log.back());
  EXPECT_LT(1u, log.size());
  server.Release("/apps/a.txt");
  running.join();
  EXPECT_EQ(1u, first.code);
  EXPECT_EQ("ab", ReadWholeFile(target.File("a.txt")));
  server.Answer("/apps/a.txt", Response().Body("c"));
  EXPECT_EQ(1u, Start(Link("/apps/start.xml")).code);
  EXPECT_EQ(4u, server.Asked().size()) << "it ran to its end, and may run again";
}

TEST_F(LaunchTest, AnotherManifestRunsBesideIt) {
  server.Answer("/apps/a.txt", Response().Body("a").Hold().Body("b"));
  server.Answer("/apps/other.xml", Response().Body(Manifest(Copy(server.Url("/apps/b.txt")))));
  server.Answer("/apps/b.txt", Response().Body("b"));
  std::thread running([&] { Start(Link("/apps/start.xml")); });
  server.AwaitHold("/apps/a.txt");
  EXPECT_EQ(0u, Start(Link("/apps/other.xml")).code);
  EXPECT_EQ("b", ReadWholeFile(target.File("b.txt")));
  server.Release("/apps/a.txt");
  running.join();
  DeleteFileA(LogCapture::PathOf("other").c_str());
}

}  // namespace
