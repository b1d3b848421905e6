// What the documentation shows is done as it says: its manifests run, its permission file is read, and its table of what an
// entry permits holds row by row.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shellapi.h>

#include <regex>
#include <string>
#include <vector>

#include "engine/Execute.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/Pages.h"
#include "support/PermitFile.h"
#include "support/WebServer.h"

namespace {

using Texts = std::vector<std::string>;

Texts Matches(const std::string& text, const std::string& pattern) {
  Texts found;
  const std::regex expression(pattern);
  for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
    found.push_back((*match)[1]);
  return found;
}

// A single command is shown without its manifest.
std::string AsManifest(const std::string& example) {
  if (example.find("<VantorManifest") != std::string::npos)
    return example;
  return "<?xml version=\"1.0\"?>\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\n<VantorManifest version=\"1.0\">\n" +
         example + "</VantorManifest>\n";
}

class ManifestExamplesTest : public testing::TestWithParam<const char*> {
 protected:
  ManifestExamplesTest() {
    char temporary[MAX_PATH];
    GetTempPathA(MAX_PATH, temporary);
    RemoveTree(std::string(temporary) + "Tool");
    permit.URL(server.Url("/")).Extension("ini").Extension("txt").Extension("htm");
    permit.Folder("InternetCache").Folder("Temp", "Tool").Folder("LocalVantorData").Folder("Personal");
    permit.Write();
  }

  // Serves what the example asks for, and gives back the paths in the order of the commands.
  Texts ServeSources(const std::string& example) {
    Texts asked = {"GET /docs-example.xml"};
    for (const std::string& path : Matches(example, "<Source>https://apps\\.example\\.com([^<]*)</Source>")) {
      server.Answer(path, Response().Body("content of " + path));
      asked.push_back("GET " + path);
    }
    return asked;
  }

  const LogCapture log{false};
  WebServer server;
  PermitFile permit;
};

TEST_P(ManifestExamplesTest, RunAsTheyStand) {
  const Texts examples = Blocks(ReadPage(GetParam()), "xml");
  ASSERT_FALSE(examples.empty());
  Texts started;
  PATCH_IMPORT(shell, ShellExecuteExA, [&](auto, SHELLEXECUTEINFOA* start) -> BOOL {
    started.push_back(start->lpFile);
    return TRUE;
  });
  CExecuter executer(0, nullptr);
  for (const std::string& example : examples) {
    SCOPED_TRACE(example);
    const std::size_t askedBefore = server.Asked().size();
    const Texts expected = ServeSources(example);
    ASSERT_GT(expected.size(), 1u);
    const std::string manifest =
        std::regex_replace(AsManifest(example), std::regex("https://apps\\.example\\.com/"), server.Url("/"));
    server.Answer("/docs-example.xml", Response().Body(manifest));
    BString url;
    EXPECT_HRESULT(S_OK, executer.Run(Wide(server.Url("/docs-example.xml")).c_str(), url.Receive()));
    const Texts asked = server.Asked();
    EXPECT_EQ(expected, Texts(asked.begin() + static_cast<std::ptrdiff_t>(askedBefore), asked.end()));
    EXPECT_EQ(example.find("browser=\"true\"") != std::string::npos, !url.IsEmpty());
  }
  EXPECT_FALSE(started.empty());
  DeleteFileA(LogCapture::PathOf("docs-example").c_str());
}

INSTANTIATE_TEST_SUITE_P(Pages, ManifestExamplesTest, testing::Values("README.md", "docs\\manifest.md"),
                         [](const auto& page) { return page.index == 0 ? "Readme" : "Manifest"; });

TEST(PermissionExamplesTest, AreRead) {
  const Texts examples = Blocks(ReadPage("docs\\permissions.md"), "xml");
  ASSERT_FALSE(examples.empty());
  for (const std::string& example : examples) {
    SCOPED_TRACE(example);
    const LogCapture log(false);
    PermitFile permit;
    permit.Write(example);
    HRESULT hr = E_UNEXPECTED;
    const CPermissions permissions(0, L"permit.xml", &hr);
    EXPECT_HRESULT(S_OK, hr);
    EXPECT_HRESULT(S_OK, permissions.IsManifestURLPermitted(L"https://apps.example.com/tools/setup.xml"));
    EXPECT_HRESULT(S_OK, permissions.IsExtensionPermitted("ini"));
  }
}

TEST(PermissionExamplesTest, TheTableOfWhatAnEntryPermitsHolds) {
  const std::regex row("\\n\\| `([^`]+)` \\| `([^`]+)` \\| (yes|no)");
  const std::string page = ReadPage("docs\\permissions.md");
  int rows = 0;
  for (std::sregex_iterator match(page.begin(), page.end(), row), end; match != end; ++match, ++rows) {
    SCOPED_TRACE(match->str());
    const LogCapture log(false);
    PermitFile permit;
    permit.URL((*match)[1]).Extension("exe").Folder("Temp");
    const bool isPermitted = permit.Read()->IsManifestURLPermitted(Wide((*match)[2]).c_str()) == S_OK;
    EXPECT_EQ((*match)[3] == "yes", isPermitted);
  }
  EXPECT_GE(rows, 8);
}

}  // namespace
