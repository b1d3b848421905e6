#include "advice/Outcome.h"

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shellapi.h>
#include <wininet.h>

#include <cstdlib>

#include "advice/Document.h"
#include "advice/Words.h"
#include "engine/EngineFixture.h"
#include "engine/FileDecision.h"
#include "support/ImportPatch.h"
#include "support/Seed.h"
#include "support/Turns.h"
#include "support/WebServer.h"

namespace {

std::string PolicyElement(const std::string& policy) {
  return policy.empty() ? "" : "<IfFileExists><" + policy + "/></IfFileExists>";
}

// What a plan and a run both tell of a command; `nothing` and times of their own are left out.
std::string TextOf(const CommandOutcome& command) {
  return std::to_string(command.number) + " " + command.command + " " + std::to_string(command.line) + " " + command.source +
         " " + NameOf(command.action) + " " + command.destination.value_or("-") + " " + command.movedTo.value_or("-") + " " +
         ResultName(command.result) + " " + command.reason;
}

std::vector<std::string> TextsOf(const RunOutcome& outcome) {
  const bool isCacheOpened = !outcome.commands.empty() && outcome.commands.back().command == "Open" &&
                             outcome.commands.back().action == CommandAction::Cache;
  const std::string navigate = isCacheOpened ? "-" : outcome.navigate.value_or("-");
  std::vector<std::string> texts = {ResultName(outcome.result) + " " + outcome.reason + " " + navigate};
  for (const CommandOutcome& command : outcome.commands) {
    CommandOutcome shown = command;
    if (shown.action == CommandAction::Cache)
      shown.destination.reset();  // the cache chooses the name
    texts.push_back(TextOf(shown));
  }
  return texts;
}

class OutcomeTest : public testing::Test {
 protected:
  OutcomeTest() { fixture.WriteSource("a.txt", "new"); }

  std::wstring WriteManifest(const std::string& commands) const {
    return WideFromAnsi(fixture.WriteSource("m.xml", ManifestText(commands)).c_str());
  }

  std::string CopyOfA(const std::string& policy = "") const {
    return CopyElement(fixture.Source("a.txt"), fixture.PathElement() + PolicyElement(policy));
  }

  // What a plan says; it must leave the destination alone, and the run behind it must say the same.
  RunOutcome PlanAndRun(const std::string& commands) const {
    const std::wstring manifest = WriteManifest(commands);
    const auto before = Contents(fixture.destination.Path());
    const RunOutcome plan = PlanManifest(manifest, {});
    EXPECT_EQ(before, Contents(fixture.destination.Path()));
    EXPECT_EQ(TextsOf(RunManifest(manifest, {}, nullptr)), TextsOf(plan));
    return plan;
  }

  static std::vector<std::string> Contents(const std::string& folder) {
    std::vector<std::string> contents;
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileA(search, &found)) {
      const std::string name = found.cFileName;
      const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
      contents.push_back(
          name + " " + std::to_string(found.dwFileAttributes) + " " + (isFolder ? "" : ReadWholeFile(folder + "\\" + name)));
    }
    FindClose(search);
    return contents;
  }

  const LogCapture log{false};
  CopyFixture fixture;
};

TEST_F(OutcomeTest, ANewFileIsWritten) {
  const RunOutcome plan = PlanAndRun(CopyOfA());
  ASSERT_EQ(1u, plan.commands.size());
  const CommandOutcome& command = plan.commands[0];
  EXPECT_STREQ("write", NameOf(command.action));
  EXPECT_EQ(fixture.Destination("a.txt"), command.destination);
  EXPECT_EQ("file://" + fixture.Source("a.txt"), command.source);
  EXPECT_EQ("Copy", command.command);
  EXPECT_EQ(3, command.line);
  EXPECT_HRESULT(S_OK, command.result);
  EXPECT_EQ("", command.reason);
  EXPECT_EQ("new", ReadWholeFile(fixture.Destination("a.txt")));
}

struct ActionRow {
  const char* policy;
  const char* action;
  HRESULT result;
};

class ExistingFileOutcomeTest : public OutcomeTest, public testing::WithParamInterface<ActionRow> {};

TEST_P(ExistingFileOutcomeTest, IsPlannedAsItIsRun) {
  fixture.WriteDestination("a.txt", "old");
  const CommandOutcome command = PlanAndRun(CopyOfA(GetParam().policy)).commands.at(0);
  EXPECT_STREQ(GetParam().action, NameOf(command.action));
  EXPECT_HRESULT(GetParam().result, command.result);
  EXPECT_EQ(fixture.Destination("a.txt"), command.destination);
  EXPECT_EQ(FAILED(GetParam().result), !command.reason.empty());
  EXPECT_EQ(std::string("Rename") == GetParam().policy, command.movedTo == fixture.Destination("a.000"));
}

INSTANTIATE_TEST_SUITE_P(, ExistingFileOutcomeTest,
                         testing::Values(ActionRow{"Overwrite", "replace", S_OK}, ActionRow{"Skip", "leave", S_FALSE},
                                         ActionRow{"Cancel", "cancel", kCancelledResult},
                                         ActionRow{"Rename", "move-aside", S_OK}, ActionRow{"Update", "leave", S_FALSE}),
                         [](const testing::TestParamInfo<ActionRow>& row) { return std::string(row.param.policy); });

TEST_F(OutcomeTest, AProtectedFileIsRefusedOrForced) {
  fixture.WriteDestination("a.txt", "old");
  ASSERT_TRUE(SetFileAttributesA(fixture.Destination("a.txt").c_str(), FILE_ATTRIBUTE_READONLY));
  const CommandOutcome refused = PlanAndRun(CopyOfA("Overwrite")).commands.at(0);
  EXPECT_STREQ("refuse", NameOf(refused.action));
  EXPECT_EQ("The file is read-only or hidden, and the command does not force it.", refused.reason);
  EXPECT_STREQ("replace", NameOf(PlanAndRun(CopyOfA("Overwrite force=\"true\"")).commands.at(0).action));
}

TEST_F(OutcomeTest, ALaterCommandMeetsWhatAnEarlierOneDid) {
  const RunOutcome plan =
      PlanAndRun(CopyOfA() + CopyOfA("Rename") + CopyOfA("Rename") + CopyOfA("Skip") + CopyOfA("Cancel"));
  ASSERT_EQ(5u, plan.commands.size());
  EXPECT_EQ(fixture.Destination("a.000"), plan.commands[1].movedTo);
  EXPECT_EQ(fixture.Destination("a.001"), plan.commands[2].movedTo);
  EXPECT_STREQ("leave", NameOf(plan.commands[3].action));
  EXPECT_STREQ("cancel", NameOf(plan.commands[4].action));
  EXPECT_HRESULT(S_FALSE, plan.result);
}

TEST_F(OutcomeTest, WhatIsNotPermittedIsRefusedWithItsReason) {
  const RunOutcome plan = PlanAndRun(CopyElement("http://elsewhere/a.txt", fixture.PathElement()) +
                                     CopyElement(fixture.Source("a.bad"), fixture.PathElement()) +
                                     CopyElement(fixture.Source("a.txt"), "<Path>C:\\Elsewhere</Path>"));
  ASSERT_EQ(3u, plan.commands.size());
  EXPECT_EQ("URL 'http://elsewhere/a.txt' is not permitted.", plan.commands[0].reason);
  EXPECT_EQ("Extension 'bad' is not permitted.", plan.commands[1].reason);
  EXPECT_EQ("Destination folder 'C:\\Elsewhere' doesn't have permission.", plan.commands[2].reason);
  for (const CommandOutcome& command : plan.commands) {
    EXPECT_STREQ("refuse", NameOf(command.action));
    EXPECT_EQ(std::nullopt, command.destination);
    EXPECT_HRESULT(E_ACCESSDENIED, command.result);
  }
}

TEST_F(OutcomeTest, AFileForTheBrowserIsNavigatedTo) {
  fixture.WriteSource("p.htm", "page");
  const RunOutcome plan = PlanAndRun(OpenElement("browser=\"true\"", fixture.Source("p.htm"), fixture.PathElement()));
  EXPECT_EQ("file://" + fixture.Destination("p.htm"), plan.navigate);
  EXPECT_EQ("Open", plan.commands.at(0).command);
}

TEST_F(OutcomeTest, APlanOpensNothing) {
  int opened = 0;
  PATCH_IMPORT(shell, ShellExecuteExA, [&](auto, auto...) {
    ++opened;
    return TRUE;
  });
  const std::wstring manifest = WriteManifest(OpenElement("", fixture.Source("a.txt"), fixture.PathElement()));
  const RunOutcome plan = PlanManifest(manifest, {});
  EXPECT_HRESULT(S_OK, plan.result);
  EXPECT_EQ(0, opened);
  EXPECT_EQ(TextsOf(RunManifest(manifest, {}, nullptr)), TextsOf(plan));
  EXPECT_EQ(1, opened);
}

TEST_F(OutcomeTest, TheInternetCacheChoosesItsName) {
  const RunOutcome plan = PlanAndRun(CopyElement(fixture.Source("a.txt"), "<InternetCache/>"));
  EXPECT_STREQ("cache", NameOf(plan.commands.at(0).action));
  EXPECT_EQ(std::nullopt, plan.commands.at(0).destination);
}

TEST_F(OutcomeTest, AManifestThatIsNotPermittedHasNoCommands) {
  const TemporaryFolder elsewhere;
  WriteWholeFile(elsewhere.File("m.xml"), ManifestText(CopyOfA()));
  const RunOutcome plan = PlanManifest(WideFromAnsi(elsewhere.File("m.xml").c_str()), {});
  EXPECT_HRESULT(E_ACCESSDENIED, plan.result);
  EXPECT_TRUE(plan.commands.empty());
  EXPECT_NE("", plan.reason);
}

TEST_F(OutcomeTest, AManifestThatIsNotValidSaysWhy) {
  const RunOutcome plan = PlanAndRun("<Copy/>");
  EXPECT_HRESULT(E_FAIL, plan.result);
  EXPECT_NE("", plan.reason);
  EXPECT_TRUE(plan.commands.empty());
}

TEST_F(OutcomeTest, AManifestThatCannotBeReadIsAnUnansweredQuestion) {
  EXPECT_THROW(PlanManifest(WideFromAnsi(fixture.Source("none.xml").c_str()), {}), Unanswered);
  EXPECT_THROW(PlanManifest(L"", {}), Unanswered);
  EXPECT_THROW(PlanManifest(L"http://server/\x4E00.xml", {}), Unanswered);
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND),
                 RunManifest(WideFromAnsi(fixture.Source("none.xml").c_str()), {}, nullptr).result);
}

TEST_F(OutcomeTest, AnUnusablePermissionFileIsAnUnansweredQuestion) {
  fixture.permit.Write("no markup");
  EXPECT_THROW(PlanManifest(WriteManifest(""), {}), Unanswered);
  EXPECT_THROW(RunManifest(WriteManifest(""), {}, nullptr), Unanswered);
}

TEST_F(OutcomeTest, AnotherPermissionFileCanBeNamed) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("other.xml"), fixture.permit.Content());
  fixture.permit.Write("no markup");
  EXPECT_HRESULT(S_OK, PlanManifest(WriteManifest(CopyOfA()), WideFromAnsi(folder.File("other.xml").c_str())).result);
}

TEST_F(OutcomeTest, ARunIsInTheLogFileAndAPlanIsNot) {
  const std::wstring manifest = WriteManifest(CopyElement("http://elsewhere/a.txt", fixture.PathElement()));
  const std::string path = LogCapture::PathOf("m");
  DeleteFileA(path.c_str());
  EXPECT_EQ("", PlanManifest(manifest, {}).log);
  EXPECT_FALSE(FileExistsAt(path));
  EXPECT_EQ(path, RunManifest(manifest, {}, nullptr).log);
  EXPECT_NE(std::string::npos, ReadWholeFile(path).find("URL 'http://elsewhere/a.txt' is not permitted."));
  DeleteFileA(path.c_str());
}

// What the watcher of a run hears, in words.
class Hearer final : public RunWatcher {
 public:
  void CommandBegins(const CommandOutcome& command) override {
    heard.push_back("begins " + std::to_string(command.number) + " line " + std::to_string(command.line));
  }
  void BytesArrived(const CommandOutcome& command) override { heard.push_back("bytes " + std::to_string(command.bytes)); }
  void CommandEnded(const CommandOutcome& command) override { heard.push_back("ended " + ResultName(command.result)); }

  std::vector<std::string> heard;
};

TEST_F(OutcomeTest, ARunIsHeardAsItGoesOn) {
  Hearer hearer;
  fixture.WriteSource("a.txt", std::string(5000, 'x'));
  RunManifest(WriteManifest(CopyOfA() + "\n" + CopyOfA("Skip")), {}, &hearer);
  EXPECT_EQ((std::vector<std::string>{"begins 1 line 3", "bytes 4096", "bytes 5000", "bytes 5000", "ended S_OK",
                                      "begins 2 line 4", "ended S_FALSE"}),
            hearer.heard);
}

// Of the server, a plan asks for the manifest and nothing else.
TEST_F(OutcomeTest, APlanFetchesTheManifestOnly) {
  WebServer server;
  fixture.permit.URL(server.Url("/")).Write();
  server.Answer("/m.xml", Response().Body(ManifestText(CopyElement(server.Url("/a.txt"), fixture.PathElement()))));
  server.Answer("/a.txt", Response().Body("web"));
  const RunOutcome plan = PlanManifest(WideFromAnsi(server.Url("/m.xml").c_str()), {});
  EXPECT_EQ(std::vector<std::string>{"GET /m.xml"}, server.Asked());
  EXPECT_EQ(TextsOf(RunManifest(WideFromAnsi(server.Url("/m.xml").c_str()), {}, nullptr)), TextsOf(plan));
  EXPECT_EQ((std::vector<std::string>{"GET /m.xml", "GET /m.xml", "GET /a.txt"}), server.Asked());
  EXPECT_EQ(3, plan.commands.at(0).line);
  EXPECT_TRUE(DeleteUrlCacheEntryA(server.Url("/m.xml").c_str()));
}

TEST_F(OutcomeTest, AServerThatIsNotReachedIsAnUnansweredQuestion) {
  WebServer server;
  fixture.permit.URL(server.RefusedUrl("/")).Write();
  EXPECT_THROW(PlanManifest(WideFromAnsi(server.RefusedUrl("/m.xml").c_str()), {}), Unanswered);
}

// Random manifests, run one after the other on what the earlier ones left.
class RandomManifestsTest : public OutcomeTest {
 protected:
  std::string RandomCommand(bool isOpen) {
    static const std::vector<std::string> names = {"a.txt", "A.TXT", "b.exe", "c.htm", "d.bad", "e", ".txt", "f.txt."};
    static const std::vector<std::string> policies = {
        "",       "Overwrite", "Overwrite force=\"true\"", "Skip", "Cancel", "Rename",
        "Rename", "Update",    "Update force=\"true\""};
    static const std::vector<std::string> attributes = {
        "",
        "",
        "",
        "<Attributes><ReadOnly/></Attributes>",
        "<Attributes><Hidden/></Attributes>",
        "<Attributes><FileTime>2030-01-01</FileTime></Attributes>",
        "<Attributes><FileTime>2001-01-01</FileTime></Attributes>"};
    static const std::vector<std::string> folders = {"", "", "\\sub", "\\sub\\deep", "\\a.txt", "\\nul", "\\q?"};
    const std::string name = dice.Choose(names);
    fixture.WriteSource(name, "new");
    const std::string source = dice.Roll(12) ? fixture.Source(name) : fixture.source.Path() + "\\";
    const std::string destination =
        dice.Roll(10) ? "<Path>" + fixture.destination.Path() + dice.Choose(folders) + "</Path>" + dice.Choose(attributes) +
                            PolicyElement(dice.Choose(policies))
        : dice.Roll(2) ? "<InternetCache/>"
                       : "<Path>C:\\Elsewhere</Path>";
    return isOpen ? OpenElement("browser=\"true\"", source, destination) : CopyElement(source, destination);
  }

  Dice dice;
};

TEST_F(RandomManifestsTest, ArePlannedAsTheyAreRun) {
  // An existing file that is written anew gets the attributes that were asked for. Windows does that; where these tests run,
  // the file may keep its own.
  PATCH_IMPORT(creations, CreateFileA,
               [](auto original, const char* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                  DWORD disposition, DWORD attributes, HANDLE like) {
    const HANDLE file = original(path, access, share, security, disposition, attributes, like);
    if (file != INVALID_HANDLE_VALUE && disposition == CREATE_ALWAYS && (attributes & kProtectingAttributes)) {
      EXPECT_TRUE(SetFileAttributesA(path, attributes)) << path;
    }
    return file;
  });
  const int manifests = std::getenv("NORVIK_TORTURE") ? 2000 : WholeInOneWidth(400, 100);  // scripts/torture takes all
  std::vector<int> actions(8);
  for (int manifest = 0; manifest < manifests; ++manifest) {
    std::string commands;
    for (std::size_t count = dice.Roll(6); count > 0; --count)
      commands += RandomCommand(false) + "\n";
    if (dice.Roll(3) == 0)
      commands += RandomCommand(true);
    const std::wstring url = WriteManifest(commands);
    const RunOutcome plan = PlanManifest(url, {});
    ASSERT_EQ(TextsOf(RunManifest(url, {}, nullptr)), TextsOf(plan))
        << "manifest " << manifest << ", seed " << Seed() << "\n"
        << commands;
    for (const CommandOutcome& command : plan.commands)
      ++actions[static_cast<std::size_t>(command.action)];
  }
  if (manifests < 400)  // too few for every action
    return;
  for (const CommandAction action :
       {CommandAction::Write, CommandAction::Replace, CommandAction::Leave, CommandAction::MoveAside, CommandAction::Cancel,
        CommandAction::Refuse, CommandAction::Cache})
    EXPECT_GT(actions[static_cast<std::size_t>(action)], manifests / 100) << NameOf(action);
}

}  // namespace
