#include <gtest/gtest.h>
#include <wininet.h>

#include <regex>

#include "decisions/Existing.h"
#include "decisions/Vectors.h"
#include "host/ControlFixture.h"
#include "support/ImportPatch.h"

// The built module is asked, by a host that knows nothing of what is inside: a run of a manifest, its log and its files.

namespace {

constexpr char kLog[] = "decisions";
constexpr char kNothingPermitted[] = "ERROR 0x8000ffff 'Copy' command failed.";
constexpr char kSource[] = "source.txt";
constexpr char kSourceOfNoEntry[] = "source.refused";

std::string LogFolder() {
  const std::string path = LogCapture::PathOf(kLog);
  return path.substr(0, path.rfind('\\') + 1);
}

// The log of a manifest bears the manifest's name.
void DeleteAllLogs() {
  for (const WIN32_FIND_DATAW& entry : EntriesOf(Wide(LogFolder())))
    DeleteFileW((Wide(LogFolder()) + entry.cFileName).c_str());
}

std::string AllLogs() {
  std::string text;
  for (const WIN32_FIND_DATAW& entry : EntriesOf(Wide(LogFolder())))
    text += ReadWholeFile(Wide(LogFolder()) + entry.cFileName);
  return text;
}

class DecisionsModuleTest : public ModuleTest {
 protected:
  DecisionsModuleTest() {
    places.Set("module", installed.Folder());
    runFolder = places.Fill(kRunFolder);
    CreateDirectoryA(runFolder.c_str(), nullptr);
    WriteWholeFile(runFolder + "\\" + kSource, "source");
    WriteWholeFile(runFolder + "\\" + kSourceOfNoEntry, "source");
  }

  void TearDown() override {
    control.Reset();
    DeleteUrlCacheEntryA(ManifestPath().c_str());
    DeleteAllLogs();
    ModuleTest::TearDown();
  }

  std::string ManifestPath() const { return runFolder + "\\decisions.xml"; }

  HRESULT Run(const std::string& command) {
    DeleteAllLogs();
    DeleteUrlCacheEntryA(ManifestPath().c_str());
    WriteWholeFile(ManifestPath(),
                   "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n"
                   "<VantorManifest version=\"1.0\">\r\n" +
                       command + "</VantorManifest>\r\n");
    return control->Execute(Automation(ManifestPath()).Get());
  }

  // Without the lists that debug logging adds to messages.
  void CreateControl() {
    control = module.CreateControl();
    control->SetEnableLogDebug(VARIANT_FALSE);
  }

  // The first line of the message of a refusal; empty without one.
  static std::string Refusal() {
    static const std::regex pattern("ERROR 0x80070005 (URL|Extension|Destination folder) '[^]*");
    for (const std::string& head : Heads(kLog)) {
      if (std::regex_match(head, pattern))
        return head;
    }
    return {};
  }

  Places places;
  std::string runFolder;
  Microsoft::WRL::ComPtr<IAXNorvik> control;
};

class ModulePermissionTest : public DecisionsModuleTest, public testing::WithParamInterface<PermissionGroup> {
 protected:
  ModulePermissionTest() {
    PermitFile content;
    GroupEntries(GetParam(), places, Beside::AndWhatRunsNeed).AddTo(content);
    WriteWholeFile(installed.PermitPath(), content.Content());
    CreateControl();
  }

  std::string Target(const std::string& fileName) const {
    return "<Destination>" + XmlElement("FileName", fileName) + XmlElement("Path", places.Fill(kTarget)) + "</Destination>";
  }

  static std::string Copy(const std::string& source, const std::string& destination) {
    return "<Copy>" + XmlElement("Source", source) + destination + "</Copy>\r\n";
  }

  static std::string LocationOf(const std::string& url) { return url.rfind("file://", 0) == 0 ? url.substr(7) : url; }

  void ExpectManifest(const PermissionQuestion& vector) {
    DeleteAllLogs();
    const std::string url = places.Fill(vector.asked);
    const HRESULT hr = control->Execute(Automation(url).Get());
    const bool isRefused = AllLogs().find("\tManifest URL '") != std::string::npos;
    EXPECT_EQ(vector.isPermitted, !isRefused);
    EXPECT_EQ(vector.isPermitted, hr != E_ACCESSDENIED);
    EXPECT_TRUE(FAILED(hr)) << "there is no such manifest";
    DeleteUrlCacheEntryA(url.c_str());
  }

  // A plain name at the end: nothing but the server can keep such a source from being fetched.
  static bool HasPlainName(const std::string& url) { return std::regex_search(url, std::regex("/[a-z0-9]+\\.exe$")); }

  // Nothing leaves the machine: a web source that is permitted fails when it is opened.
  void ExpectSource(const PermissionQuestion& vector) {
    const std::string url = places.Fill(vector.asked);
    EXPECT_HRESULT(S_FALSE, Run(Copy(url, Target("permitted.txt"))));
    const std::string refusal = Refusal();
    EXPECT_EQ(vector.isPermitted, refusal.rfind("ERROR 0x80070005 URL '", 0) != 0) << refusal;
    if (!vector.isPermitted && vector.understood) {
      EXPECT_EQ("ERROR 0x80070005 URL '" + LocationOf(places.Fill(*vector.understood)) + "' is not permitted.", refusal);
    }
    if (vector.isPermitted && vector.understood && vector.understood->rfind("http", 0) == 0 && HasPlainName(url)) {
      EXPECT_EQ(1, opens);
    }
    if (!vector.isPermitted) {
      EXPECT_EQ(0, opens);
    }
  }

  void ExpectExtension(const PermissionQuestion& vector) {
    const std::string extension = places.Fill(vector.asked);
    const std::string fileName = vector.fileName ? *vector.fileName : extension.empty() ? "name" : "name." + extension;
    const HRESULT hr = Run(Copy(runFolder + "\\" + kSource, Target(fileName)));
    EXPECT_HRESULT(vector.isPermitted ? S_OK : S_FALSE, hr);
    EXPECT_EQ(vector.isPermitted ? "" : "ERROR 0x80070005 Extension '" + extension + "' is not permitted.", Refusal());
    EXPECT_EQ(vector.isPermitted, FileExistsAt(places.Fill(kTarget) + "\\" + kSource));
    RemoveTree(places.Fill(kTarget));
  }

  // A folder that is permitted is not written: the extension is refused, which is asked about behind the folder.
  void ExpectFolder(const PermissionQuestion& vector) {
    const auto& [kind, text] = vector.folder;
    const std::string destination = "<Destination>" + XmlElement(kind, places.Fill(text)) + "</Destination>";
    EXPECT_HRESULT(S_FALSE, Run(Copy(runFolder + "\\" + kSourceOfNoEntry, destination)));
    if (vector.isPermitted) {
      EXPECT_EQ("ERROR 0x80070005 Extension 'refused' is not permitted.", Refusal());
    } else {
      ExpectFolderRefused();
    }
  }

  // Without a single entry there is nothing to compare with, and no refusal but a failure.
  static void ExpectFolderRefused() {
    static const std::regex pattern("ERROR 0x80070005 Destination folder '[^]*' doesn't have permission\\.");
    const std::string refusal = Refusal();
    const Lines heads = Heads(kLog);
    EXPECT_TRUE(std::regex_match(refusal, pattern) || (heads.size() == 2 && heads[0] == kNothingPermitted)) << refusal;
  }

  void Expect(const PermissionQuestion& vector) {
    opens = 0;
    if (vector.kind == "manifest")
      ExpectManifest(vector);
    else if (vector.kind == "source")
      ExpectSource(vector);
    else if (vector.kind == "extension")
      ExpectExtension(vector);
    else
      ExpectFolder(vector);
  }

  int opens = 0;
};

TEST_P(ModulePermissionTest, DecidesAsTheVectorsSay) {
  const auto open = [this](auto...) {
    ++opens;
    SetLastError(ERROR_INTERNET_CANNOT_CONNECT);
    return static_cast<HINTERNET>(nullptr);
  };
  PATCH_IMPORT(nothingLeaves, InternetOpenUrlA, open, module.Handle());
  for (const PermissionQuestion& vector : GetParam().questions) {
    SCOPED_TRACE(GetParam().name + ": " + vector.name);
    if (vector.isForRun)
      Expect(vector);
  }
}

INSTANTIATE_TEST_SUITE_P(Groups, ModulePermissionTest, testing::ValuesIn(PermissionGroups()), TestNameOf<PermissionGroup>);

class ModuleFileTest : public DecisionsModuleTest, public testing::WithParamInterface<FileQuestion> {
 protected:
  ModuleFileTest() : vector(GetParam()) {
    PermitFile permit;
    permit.URL(server.Url("/")).URL(runFolder + "\\").Extension("txt").Folder("Path", base.Path());
    WriteWholeFile(installed.PermitPath(), permit.Content());
    CreateControl();
  }

  // The code with which the command failed; S_OK when the log knows of no failure.
  static HRESULT FailureInLog() {
    HRESULT hr = S_OK;
    for (const LogEntry& entry : Entries(kLog)) {
      if (entry.message.find("'Copy' command") != std::string::npos)
        hr = entry.code;
    }
    return hr;
  }

  const FileQuestion& vector;
  WebServer server;
  TemporaryFolder base;
};

TEST_P(ModuleFileTest, BecomesWhatTheVectorSays) {
  SCOPED_TRACE(vector.name);
  const ExistingFileOnDisk existing(vector, base.Path(), 1);
  EXPECT_HRESULT(FAILED(vector.run) ? S_FALSE : S_OK, Run(existing.Command(server.Url("/"), runFolder)));
  EXPECT_HRESULT(FAILED(vector.run) ? vector.run : S_OK, FailureInLog());
  EXPECT_EQ(vector.action == "cancel",
            AllLogs().find("'" + existing.Path() + "' exists, canceling operation.") != std::string::npos);
  existing.ExpectOutcome();
}

INSTANTIATE_TEST_SUITE_P(Questions, ModuleFileTest, testing::ValuesIn(FileQuestions()), TestNameOf<FileQuestion>);

}  // namespace
