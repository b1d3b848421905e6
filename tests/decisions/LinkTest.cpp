#include "advice/Link.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <regex>

#include "advice/Words.h"
#include "common/ModulePath.h"
#include "decisions/Existing.h"
#include "decisions/Vectors.h"
#include "open/Launch.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/Program.h"
#include "support/Turns.h"
#include "support/WebServer.h"

// A link is asked: what it fetches, what the log says of it, and how it ends. The manifest comes from the test's server, and
// nothing else leaves the machine.

namespace {

constexpr char kManifest[] = "/decisions.xml";
constexpr char kSourceName[] = "source.txt";

std::string ManifestOf(const std::string& commands) {
  return "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n<VantorManifest "
         "version=\"1.0\">\r\n" +
         commands + "</VantorManifest>\r\n";
}

std::wstring CallFor(const std::string& url) {
  return L"norvikopen.exe /quiet \"norvik:" + WideFromAnsi(url.c_str()) + L"\"";
}

bool IsTaken(const std::string& url) {
  try {
    ManifestOfLink(L"norvik:" + WideFromAnsi(url.c_str()));
    return true;
  } catch (const LinkRefused&) {
    return false;
  }
}

std::string LogOf(const std::string& url) {
  return ReadWholeFile(LogCapture::PathOf(std::regex_replace(url, std::regex("^.*[/\\\\:]|\\.[^.]*$|\\?.*$"), "")));
}

class LinkPermissionTest : public testing::TestWithParam<PermissionGroup> {
 protected:
  LinkPermissionTest() {
    places.Set("module", program.Path());
    const std::string runFolder = places.Fill(kRunFolder);
    CreateDirectoryA(runFolder.c_str(), nullptr);
    for (const char* const name : {"\\source.txt", "\\source.refused"})
      WriteWholeFile(runFolder + name, "source");
  }

  // The program lies in the folder of the test's permission file.
  template <class Work>
  void InItsFolder(Work work) {
    const std::string path = program.File("norvikopen.exe");
    PATCH_IMPORT(place, GetModuleFileNameA, [&](auto, HMODULE, char* buffer, DWORD size) {
      lstrcpynA(buffer, path.c_str(), static_cast<int>(size));
      return static_cast<DWORD>(path.size());
    });
    PATCH_IMPORT(network, InternetOpenUrlA, [&](auto original, HINTERNET session, const char* url, auto... rest) {
      const bool isOurs = std::string(url).rfind(server.Url("/"), 0) == 0;
      opens += isOurs ? 0 : 1;
      if (isOurs)
        return original(session, url, rest...);
      SetLastError(ERROR_INTERNET_CANNOT_CONNECT);
      return static_cast<HINTERNET>(nullptr);
    });
    work();
  }

  void WritePermit(bool isServerPermitted) {
    PermitFile content;
    GroupEntries(GetParam(), places, Beside::AndWhatRunsNeed).AddTo(content);
    if (isServerPermitted)
      content.URL(server.Url("/"));
    WriteWholeFile(program.File("permit.xml"), content.Content());
  }

  void ExpectManifest(const PermissionQuestion& vector) {
    const std::string url = places.Fill(vector.asked);
    opens = 0;
    const int code = Launch(CallFor(url));
    EXPECT_EQ(IsTaken(url) ? 1 : 2, code);
    EXPECT_EQ(IsTaken(url) && vector.isPermitted ? 1 : 0, opens);
    DeleteUrlCacheEntryA(url.c_str());
  }

  std::string Target(const std::string& fileName) const {
    return "<Destination>" + XmlElement("FileName", fileName) + XmlElement("Path", places.Fill(kTarget)) + "</Destination>";
  }

  // The command that asks the question and, when it is answered with yes, ends at something else.
  std::string CommandFor(const PermissionQuestion& vector) const {
    const std::string runFolder = places.Fill(kRunFolder) + "\\";
    std::string source = runFolder + "source.refused";
    std::string destination;
    if (vector.kind == "source") {
      source = places.Fill(vector.asked);
      destination = Target("permitted.txt");
    } else if (vector.kind == "extension") {
      const std::string extension = places.Fill(vector.asked);
      source = runFolder + kSourceName;
      destination = Target(vector.fileName ? *vector.fileName : extension.empty() ? "name" : "name." + extension);
    } else {
      destination = "<Destination>" + XmlElement(vector.folder.first, places.Fill(vector.folder.second)) + "</Destination>";
    }
    return "<Copy>" + XmlElement("Source", source) + destination + "</Copy>\r\n";
  }

  static bool IsRefusalOf(const std::string& kind, const std::string& log) {
    const std::string begin = kind == "source" ? "URL '" : kind == "extension" ? "Extension '" : "Destination folder '";
    const std::size_t refused = log.find("0x80070005");
    return refused != std::string::npos && log.find("\t" + begin) != std::string::npos;
  }

  void ExpectCommand(const PermissionQuestion& vector) {
    server.Answer(kManifest, Response().Body(ManifestOf(CommandFor(vector))));
    opens = 0;
    const int code = Launch(CallFor(server.Url(kManifest)));
    const std::string log = LogOf(kManifest);
    EXPECT_EQ(vector.kind == "extension" && vector.isPermitted ? 0 : 1, code) << log;
    const bool isNothingPermitted = log.find("0x8000ffff") != std::string::npos;
    EXPECT_EQ(!vector.isPermitted, IsRefusalOf(vector.kind, log) || isNothingPermitted) << log;
    if (!vector.isPermitted) {
      EXPECT_EQ(0, opens);
    }
    RemoveTree(places.Fill(kTarget));
  }

  WebServer server;
  TemporaryFolder program;
  Places places;
  int opens = 0;
};

const bool kAreLinksShared = ShareCases("LinkPermissionTest", "DecidesAsTheVectorsSay");

TEST_P(LinkPermissionTest, DecidesAsTheVectorsSay) {
  InItsFolder([this] {
    for (const PermissionQuestion& vector : GetParam().questions) {
      SCOPED_TRACE(GetParam().name + ": " + vector.name);
      if (!vector.isForRun)
        continue;
      WritePermit(vector.kind != "manifest");
      if (vector.kind == "manifest")
        ExpectManifest(vector);
      else
        ExpectCommand(vector);
    }
  });
  DeleteUrlCacheEntryA(program.File("permit.xml").c_str());
}

INSTANTIATE_TEST_SUITE_P(Groups, LinkPermissionTest, testing::ValuesIn(PermissionGroups()), TestNameOf<PermissionGroup>);

// All questions in one manifest, and the built program.
const bool kIsFileLinkShared = ShareCases("LinkFileTest", "LeavesWhatTheVectorsSay");

TEST(LinkFileTest, LeavesWhatTheVectorsSay) {
  WebServer server;
  const TemporaryFolder program;
  const TemporaryFolder base;
  const std::string runFolder = program.File("run");
  CreateDirectoryA(runFolder.c_str(), nullptr);
  CopyBuilt("norvikopen.exe", program.Path());
  PermitFile permit;
  permit.URL(server.Url("/")).URL(runFolder + "\\").Extension("txt").Folder("Path", base.Path());
  WriteWholeFile(program.File("permit.xml"), permit.Content());
  std::vector<std::unique_ptr<ExistingFileOnDisk>> files;
  std::string commands;
  for (const FileQuestion& vector : FileQuestions()) {
    files.push_back(std::make_unique<ExistingFileOnDisk>(vector, base.Path(), files.size()));
    commands += files.back()->Command(server.Url("/"), runFolder);
  }
  server.Answer(kManifest, Response().Body(ManifestOf(commands)));
  const std::wstring folder = WideFromAnsi(program.Path().c_str());
  EXPECT_EQ(1u, RunCommandLine(L"\"" + folder + L"\\norvikopen.exe\" /quiet \"norvik:" +
                                   WideFromAnsi(server.Url(kManifest).c_str()) + L"\"",
                               program.Path())
                    .code);
  for (std::size_t i = 0; i < files.size(); ++i) {
    SCOPED_TRACE(FileQuestions()[i].name);
    files[i]->ExpectOutcome();
  }
}

}  // namespace
