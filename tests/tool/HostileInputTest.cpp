// Documents and arguments that mean harm: a documented exit code, a sentence, and never a crash.

#include "advice/Words.h"
#include "support/Turns.h"
#include "tool/ToolFixture.h"

namespace {

using HostileInputTest = ToolTest;

struct HostileRow {
  const char* name;
  std::string bytes;
  unsigned long checkCode;
};

class HostileDocumentTest : public ToolTest, public testing::WithParamInterface<HostileRow> {};

const bool kIsShared = ShareCases("HostileDocumentTest", "GivesADocumentedExitCode");

TEST_P(HostileDocumentTest, GivesADocumentedExitCode) {
  WriteWholeFile(folder.File("hostile.xml"), GetParam().bytes);
  RunJson({L"check", L"hostile.xml"}, GetParam().checkCode);
  EXPECT_EQ(1u, Run({L"plan", L"hostile.xml"}).code);
  EXPECT_EQ(1u, Run({L"run", L"hostile.xml"}).code);
  const ProgramResult explained = Run({L"explain", L"--permit", L"hostile.xml", L"--extension", L"txt"});
  EXPECT_EQ(3u, explained.code);
  EXPECT_NE("", explained.errors);
}

INSTANTIATE_TEST_SUITE_P(
    , HostileDocumentTest,
    testing::Values(
        HostileRow{"NoMarkup", "no markup", 1}, HostileRow{"ZeroBytes", std::string(1000, '\0'), 1},
        HostileRow{"Binary", "\x7F\x45\x4C\x46\x01\xFF\xFE", 1},
        HostileRow{"NeverClosed", "<?xml version=\"1.0\"?><!DOCTYPE VantorManifest SYSTEM \"m\"><VantorManifest>", 1},
        HostileRow{
            "Deep",
            "<?xml version=\"1.0\"?><!DOCTYPE VantorManifest SYSTEM \"m\">" + Repeated("<a>", 200) + Repeated("</a>", 200),
            1},
        HostileRow{"LaughingEntities",
                   "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY b \"xxxxxxxxxx\"><!ENTITY c \"&b;&b;&b;&b;&b;\">]><a>"
                   "&c;&c;&c;</a>",
                   1},
        HostileRow{"ALongLine",
                   "<?xml version=\"1.0\"?><!DOCTYPE VantorManifest SYSTEM \"m\"><VantorManifest version=\"" +
                       std::string(100000, 'x') + "\"><b/></VantorManifest>",
                   1}),
    [](const testing::TestParamInfo<HostileRow>& row) { return std::string(row.param.name); });

TEST_F(HostileInputTest, AnEmptyFileIsNotValid) {
  WriteWholeFile(folder.File("empty.xml"), "");
  RunJson({L"check", L"empty.xml"}, 1);
}

TEST_F(HostileInputTest, AManifestOfAHundredThousandCommandsIsPlanned) {
  const std::string command = "<Copy><Source>" + folder.File("a.txt") + "</Source><Destination><Path>" + Destination() +
                              "</Path><IfFileExists><Skip/></IfFileExists></Destination></Copy>\n";
  const int count = WholeInOneWidth(100000, 5000, Half::AHugePlan);
  WriteWholeFile(folder.File("huge.xml"), ManifestText(Repeated(command, count)));
  const Json plan = RunJson({L"plan", L"huge.xml"}, 0);
  ASSERT_EQ(static_cast<std::size_t>(count), plan.at("commands").size());
  EXPECT_EQ("write", plan.at("commands").front().at("action"));
  EXPECT_EQ("leave", plan.at("commands").back().at("action"));
  EXPECT_EQ(count + 3, plan.at("commands").back().at("line"));
}

TEST_F(HostileInputTest, APermissionFileOfAHundredThousandEntriesIsExplainedAndChecked) {
  std::string entries;
  for (int i = 0; i < 100000; ++i)
    entries += "<URL>https://host" + std::to_string(i) + ".example.com/a/</URL>\n";
  WriteWholeFile(folder.File("permit.xml"), PermitText(entries));
  const Json explained = RunJson({L"explain", L"--source", L"https://host99999.example.com/a/b.txt"}, 0);
  EXPECT_EQ(100006, explained.at("questions").at(0).at("by").at("line"));
  RunJson({L"check"}, 0);
}

TEST_F(HostileInputTest, LongArgumentsAreAnswered) {
  const std::wstring text(32000, L'x');
  EXPECT_EQ(2u, Run({text}).code);
  EXPECT_EQ(3u, Run({L"check", text}).code);
  EXPECT_EQ(1u, Run({L"explain", L"--extension", text}).code);
  EXPECT_EQ(1u, Run({L"explain", L"--source", L"http://host/" + text}).code);
  EXPECT_EQ(2u, Run({L"explain", L"--folder", text}).code);
  EXPECT_EQ(1u, Run({L"plan", L"http://host/" + text}).code);
  EXPECT_EQ(1u, Run({L"run", L"http://host/" + text}).code);
}

TEST_F(HostileInputTest, EmptyArgumentsAreAnswered) {
  EXPECT_EQ(1u, Run({L"explain", L"--extension", L""}).code);
  EXPECT_EQ(1u, Run({L"explain", L"--source", L""}).code);
  EXPECT_EQ(0u, Run({L"check", L"--permit", L""}).code);
}

}  // namespace
