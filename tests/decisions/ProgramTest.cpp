#include "decisions/Program.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "decisions/Existing.h"
#include "decisions/Vectors.h"
#include "support/HResult.h"
#include "support/Turns.h"

// The built program is asked, as a process: what it prints with --json, and how it ends.

namespace {

using Json = nlohmann::json;

constexpr char kWebFolder[] = "http://apps.example.com/";  // never asked: a plan fetches nothing but its manifest

Json Parsed(const ProgramResult& result) {
  const Json json = Json::parse(result.output, nullptr, false);
  if (!json.is_object())
    ADD_FAILURE() << "no JSON: " << result.output << result.errors;
  return json;
}

// The text behind a key; empty for null.
std::string TextAt(const Json& json, const char* key) {
  return json.at(key).is_null() ? std::string() : json.at(key).get<std::string>();
}

std::string Trimmed(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\n";
  const std::size_t start = text.find_first_not_of(kBlanks);
  return start == std::string::npos ? std::string() : text.substr(start, text.find_last_not_of(kBlanks) + 1 - start);
}

class ProgramPermissionTest : public testing::TestWithParam<PermissionGroup> {
 protected:
  ProgramPermissionTest() {
    places.Set("module", program.Folder());
    entries = std::make_unique<GroupEntries>(GetParam(), places, Beside::WhatItNeeds);
    PermitFile content;
    entries->AddTo(content);
    WriteWholeFile(program.PermitPath(), content.Content());
  }

  ~ProgramPermissionTest() override { DeleteUrlCacheEntryA(program.PermitPath().c_str()); }

  void AddArguments(const PermissionQuestion& vector, std::vector<std::string>& arguments) const {
    arguments.push_back("--" + vector.kind);
    arguments.push_back(
        vector.kind == "folder" ? vector.folder.first + "=" + places.Fill(vector.folder.second) : places.Fill(vector.asked));
  }

  ProgramResult Explain(const std::vector<const PermissionQuestion*>& asked) const {
    std::vector<std::string> arguments = {"explain", "--json"};
    for (const PermissionQuestion* const vector : asked)
      AddArguments(*vector, arguments);
    return program.Run(arguments);
  }

  void ExpectNoAnswer(const PermissionQuestion& vector) const {
    const ProgramResult result = Explain({&vector});
    EXPECT_EQ(3u, result.code);
    EXPECT_NE("", result.errors);
  }

  // One process for all of them.
  void ExpectAnswers(const std::vector<const PermissionQuestion*>& asked) const {
    SCOPED_TRACE(GetParam().name);
    const ProgramResult result = Explain(asked);
    const bool isAllPermitted =
        std::all_of(asked.begin(), asked.end(), [](const PermissionQuestion* vector) { return vector->isPermitted; });
    EXPECT_EQ(isAllPermitted ? 0u : 1u, result.code) << result.errors;
    const Json json = Parsed(result);
    ASSERT_TRUE(json.is_object());
    ASSERT_EQ(asked.size(), json.at("questions").size());
    for (std::size_t i = 0; i < asked.size(); ++i) {
      SCOPED_TRACE(GetParam().name + ": " + asked[i]->name);
      ExpectAnswer(*asked[i], json.at("questions").at(i));
    }
  }

  void ExpectAnswer(const PermissionQuestion& vector, const Json& answer) const {
    EXPECT_EQ(vector.kind, answer.at("kind"));
    EXPECT_EQ(vector.isPermitted, answer.at("permitted").get<bool>());
    EXPECT_EQ(vector.by.has_value(), answer.at("by").is_object());
    if (vector.by && answer.at("by").is_object())
      ExpectEntry(*vector.by, answer.at("by"));
    ExpectNearest(vector, answer.at("nearest"));
    if (vector.understood) {
      EXPECT_EQ(places.Fill(*vector.understood), TextAt(answer, "understood"));
    }
  }

  void ExpectNearest(const PermissionQuestion& vector, const Json& nearest) const {
    if (vector.reason) {
      EXPECT_EQ(*vector.reason, nearest.is_object() ? TextAt(nearest, "reason") : "nothing is near");
    }
    if (vector.nearest && nearest.is_object())
      ExpectEntry({"URL", *vector.nearest}, nearest);
    if (vector.isPermitted) {
      EXPECT_TRUE(nearest.is_null());
    }
  }

  void ExpectEntry(const FolderElement& entry, const Json& found) const {
    EXPECT_EQ(Trimmed(places.Fill(entry.second)), TextAt(found, "entry"));
    EXPECT_EQ(entries->LineOf({entry.first, places.Fill(entry.second)}), found.at("line").get<int>());
  }

  InstalledProgram program;
  Places places;
  std::unique_ptr<GroupEntries> entries;
};

const bool kAreExplanationsShared = ShareCases("ProgramPermissionTest", "ExplainsAsTheVectorsSay");

TEST_P(ProgramPermissionTest, ExplainsAsTheVectorsSay) {
  std::vector<const PermissionQuestion*> asked;
  for (const PermissionQuestion& vector : GetParam().questions) {
    SCOPED_TRACE(GetParam().name + ": " + vector.name);
    if (vector.isUnresolved)
      ExpectNoAnswer(vector);
    else
      asked.push_back(&vector);
  }
  if (!asked.empty())
    ExpectAnswers(asked);
}

INSTANTIATE_TEST_SUITE_P(Groups, ProgramPermissionTest, testing::ValuesIn(PermissionGroups()), TestNameOf<PermissionGroup>);

class ProgramFileTest : public testing::Test {
 protected:
  ProgramFileTest() : runFolder(program.Folder() + "\\run"), manifestPath(runFolder + "\\decisions.xml") {
    CreateDirectoryA(runFolder.c_str(), nullptr);
    PermitFile permit;
    permit.URL(kWebFolder).URL(runFolder + "\\").Extension("txt").Folder("Path", base.Path());
    WriteWholeFile(program.PermitPath(), permit.Content());
    std::string commands;
    for (const FileQuestion& vector : FileQuestions()) {
      files.push_back(std::make_unique<ExistingFileOnDisk>(vector, base.Path(), files.size()));
      commands += files.back()->Command(kWebFolder, runFolder);
    }
    WriteWholeFile(manifestPath,
                   "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n"
                   "<VantorManifest version=\"1.0\">\r\n" +
                       commands + "</VantorManifest>\r\n");
  }

  ~ProgramFileTest() override {
    DeleteUrlCacheEntryA(program.PermitPath().c_str());
    DeleteUrlCacheEntryA(manifestPath.c_str());
  }

  void ExpectCommand(const FileQuestion& vector, const ExistingFileOnDisk& file, const Json& command) {
    EXPECT_EQ(file.Path(), TextAt(command, "destination"));
    EXPECT_EQ(vector.action, TextAt(command, "action"));
    EXPECT_EQ(file.MovedTo(), TextAt(command, "movedTo"));
    EXPECT_HRESULT(vector.run, static_cast<HRESULT>(std::stoul(TextAt(command, "code"), nullptr, 16)));
    file.ExpectUntouched();
  }

  InstalledProgram program;
  TemporaryFolder base;
  const std::string runFolder;
  const std::string manifestPath;
  std::vector<std::unique_ptr<ExistingFileOnDisk>> files;
};

const bool kIsPlanShared = ShareCases("ProgramFileTest", "PlansAsTheVectorsSay");

TEST_F(ProgramFileTest, PlansAsTheVectorsSay) {
  const ProgramResult result = program.Run({"plan", "--json", manifestPath});
  EXPECT_EQ(1u, result.code) << result.errors;
  const Json json = Parsed(result);
  ASSERT_TRUE(json.is_object());
  ASSERT_EQ(files.size(), json.at("commands").size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    SCOPED_TRACE(FileQuestions()[i].name);
    ExpectCommand(FileQuestions()[i], *files[i], json.at("commands").at(i));
  }
}

}  // namespace
