// The last component of a source names the file: whatever it is, the file stands in the destination folder or nowhere.

#include <gtest/gtest.h>

#include <utility>

#include "names/NamesFixture.h"

namespace {

class SourceNamesTest : public NamesTest, public testing::WithParamInterface<NameRow> {};

TEST_P(SourceNamesTest, StandInTheFolderOrNowhere) {
  ExpectOutcome(GetParam());
}

const std::string kHere = "<Path>{folder}</Path>";

NameRow Written(const char* name, const std::string& source, const std::string& file) {
  return {name, "{server}/" + source, kHere, "", {"{folder}\\" + file}};
}

NameRow Refused(const char* name, const std::string& source, const std::string& code, const std::string& file) {
  return {name, "{server}/" + source, kHere, code + " Creating '{folder}" + file + "' failed.", {}};
}

INSTANTIATE_TEST_SUITE_P(
    DotsAndBlanks, SourceNamesTest,
    testing::Values(Written("DotAtTheEnd", "a.txt.", "a.txt"), Written("DotsAndBlanksAtTheEnd", "a.txt. . ", "a.txt"),
                    Written("BlankInFront", " a.txt", " a.txt"), Refused("OnlyDots", "...", "0x80070005", "\\..."),
                    Refused("ThisFolder", ".", "0x80070005", "\\."), Refused("FolderAbove", "..", "0x80070005", "\\.."),
                    Refused("FolderAboveWithAQuery", "..?a.txt", "0x80070005", "\\.."),
                    Refused("FolderAboveBehindAFolder", "x/..", "0x80070005", "\\.."),
                    Refused("FolderAboveBehindABackslash", "x\\..", "0x80070005", "\\.."),
                    Refused("NoName", "../", "0x80070005", ""), Refused("NothingButAQuery", "?a.txt", "0x80070005", "")),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Separators, SourceNamesTest,
    testing::Values(
        Written("FolderAboveInFront", "../y.txt", "y.txt"), Written("FoldersAboveWithBackslashes", "..\\..\\y.txt", "y.txt"),
        Written("EscapedDots", "%2e%2e%5cy.txt", "%2e%2e%5cy.txt"),
        Written("EscapedSlashes", "..%2f..%2fy.txt", "..%2f..%2fy.txt"), Written("OnlyEscapedDots", "%2e%2e", "%2e%2e"),
        Written("Stream", "a.txt:b.txt", "b.txt"), Written("DataOfAFile", "a.txt::$DATA", "$DATA"),
        Written("Drive", "C:x.txt", "x.txt"), Written("WholePath", "C:\\windows\\y.txt", "y.txt"),
        Written("SeparatorInAQuery", "a.txt?x=/b.txt", "b.txt"),
        Written("FoldersAboveInAQuery", "a.txt?x=..\\..\\b.txt", "b.txt")),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Characters, SourceNamesTest,
    testing::Values(
        Written("Percent", "%n%s%1%x%p.txt", "%n%s%1%x%p.txt"), Written("OnlyPercent", "%n", "%n"),
        Refused("Star", "a*b.txt", "0x8007007b", "\\a*b.txt"), Refused("Less", "a<b.txt", "0x8007007b", "\\a<b.txt"),
        Refused("Pipe", "a|b.txt", "0x8007007b", "\\a|b.txt"), Refused("Quote", "a\"b.txt", "0x8007007b", "\\a\"b.txt"),
        Refused("Tab", "a&#9;b.txt", "0x8007007b", "\\a\tb.txt")),
    [](const auto& row) { return row.param.name; });

// A name as long as the file system lets a component be is the longest; what lies beyond that is refused whole, and never
// cut.
NameRow Long(const char* name, std::size_t length, bool isWritten) {
  const std::string file = std::string(length - 4, 'n') + ".txt";
  NameRow row = Written(name, file, file);
  if (!isWritten) {
    row.came.clear();
    row.failure = "0x800700ce Creating '{folder}\\" + file;
  }
  return row;
}

class LongSourceNamesTest : public NamesTest, public testing::WithParamInterface<NameRow> {};

TEST_P(LongSourceNamesTest, AreWrittenWholeOrNotAtAll) {
  const NameRow& row = GetParam();
  EXPECT_HRESULT(row.failure.empty() ? S_OK : S_FALSE, RunCommand(row.source, row.folder));
  EXPECT_EQ(row.came, Changes());
  ExpectLogInOrder();
  if (row.failure.empty()) {
    EXPECT_EQ(kServed, ReadWholeFile(Filled(row.came.back())));
  } else {
    const Lines told = Heads(kRunLog);
    ASSERT_EQ(3u, told.size());
    EXPECT_EQ("ERROR 0x800700ce 'Copy' command failed.", told[1]);
    const std::string message = Shown(told[0]);
    EXPECT_EQ("ERROR " + row.failure.substr(0, 200), message.substr(0, 206));
    EXPECT_GE(1023u, told[0].size() - std::string("ERROR 0x800700ce ").size());
  }
}

INSTANTIATE_TEST_SUITE_P(Lengths, LongSourceNamesTest,
                         testing::Values(Long("Of200", 200, true), Long("Of300", 300, false), Long("Of1000", 1000, false),
                                         Long("Of1030", 1030, false), Long("Of70000", 70000, false)),
                         [](const auto& row) { return row.param.name; });

// How many characters the whole path has is what counts for some functions of the system, and 260 their limit.
class PathLengthTest : public NamesTest, public testing::WithParamInterface<std::size_t> {
 protected:
  // That takes the path to the parameter's number of characters.
  std::string Name() const { return std::string(GetParam() - folder.size() - 5, 'n') + ".txt"; }
};

class LongPathTest : public PathLengthTest {};

// The number of a file that is moved aside takes the place of the last four characters of a name without room for more.
std::string MovedAside(const std::string& name, std::size_t pathLength) {
  return pathLength + 5 > MAX_PATH ? name.substr(0, name.size() - 4) + ".000" : Replaced(name, ".txt", ".000");
}

TEST_P(PathLengthTest, IsWrittenAndReplacedByEveryPolicy) {
  const std::string name = Name();
  const std::string path = folder + "\\" + name;
  ASSERT_EQ(GetParam(), path.size());
  struct {
    const char* policy;
    HRESULT result;
    const char* content;
    bool isMovedAside;
  } const rows[] = {{"", S_OK, "new", false},          {"<Overwrite/>", S_OK, "new", false},
                    {"<Skip/>", S_OK, "old", false},   {"<Cancel/>", S_FALSE, "old", false},
                    {"<Update/>", S_OK, "new", false}, {"<Rename/>", S_OK, "new", true}};
  server.Answer("/" + name, Response().Body("old"));
  EXPECT_HRESULT(S_OK, RunCommand("{server}/" + name, kHere));
  EXPECT_EQ("old", ReadWholeFile(path));
  server.Answer("/" + name, Response().Body("new"));
  const std::string later = "<Attributes><FileTime>2099-01-01T00:00:00Z</FileTime></Attributes>";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.policy);
    WriteWholeFile(path, "old");
    const std::string policy = *row.policy ? std::string("<IfFileExists>") + row.policy + "</IfFileExists>" : "";
    EXPECT_HRESULT(row.result, RunCommand("{server}/" + name, kHere + later + policy));
    const std::string aside = MovedAside(name, path.size());
    EXPECT_EQ(row.isMovedAside ? aside + " " + name : name, NamesIn(folder));
    EXPECT_EQ(row.content, ReadWholeFile(path));
    if (row.isMovedAside) {
      EXPECT_EQ("old", ReadWholeFile(folder + "\\" + aside));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Characters, PathLengthTest, testing::Values(255, 258, 259));

// Beyond that it is the system's to say whether there can be such a file; the path is never cut.
TEST_P(LongPathTest, IsWrittenWholeOrNotAtAll) {
  const HRESULT hr = RunCommand("{server}/" + Name(), kHere);
  if (hr == S_OK) {
    EXPECT_EQ(Lines{"{folder}\\" + Name()}, Changes());
    EXPECT_EQ(kServed, ReadWholeFile(folder + "\\" + Name()));
  } else {
    EXPECT_HRESULT(S_FALSE, hr);
    EXPECT_EQ(Lines{}, Changes());
    EXPECT_EQ(Told("0x800700ce Creating '{folder}\\" + Name() + "' failed."), Told());
  }
  ExpectLogInOrder();
}

INSTANTIATE_TEST_SUITE_P(Characters, LongPathTest, testing::Values(260, 261, 290));

TEST_F(NamesTest, ALocalSourceGoesWhereItsLastComponentSays) {
  for (const char* source : {"{documents}\\a.txt", "file://{documents}\\a.txt", "{documents}/a.txt",
                             "{documents}\\..\\documents\\a.txt", "{documents}\\a.txt. "}) {
    EXPECT_HRESULT(S_OK, RunCommand(source, kHere)) << source;
    EXPECT_EQ("a.txt", NamesIn(folder)) << source;
    EXPECT_EQ("documents\\a.txt", ReadWholeFile(folder + "\\a.txt")) << source;
    ExpectLogInOrder();
    RemoveTree(folder);
  }
}

// A permitted source is a prefix: what `..` leads to is read as the system reads it, with the rights of the user.
TEST_F(NamesTest, ALocalSourceMayLeaveItsFolderByDots) {
  EXPECT_HRESULT(S_OK, RunCommand("{documents}\\..\\sibling\\canary.txt", kHere));
  EXPECT_EQ(Lines({"{folder}\\canary.txt"}), Changes());
  EXPECT_EQ("sibling\\canary.txt", ReadWholeFile(folder + "\\canary.txt"));
  ExpectLogInOrder();
}

TEST_F(NamesTest, ALocalFolderIsNoSource) {
  for (const char* source : {"{documents}\\.", "{documents}\\..", "{documents}\\"}) {
    EXPECT_HRESULT(S_FALSE, RunCommand(source, kHere)) << source;
    EXPECT_EQ(Lines{}, Changes()) << source;
    EXPECT_EQ((Lines{std::string("ERROR 0x80070005 Unable to read '") + source + "'.",
                     std::string("ERROR 0x80070005 Opening '") + source + "' failed.",
                     "ERROR 0x80070005 'Copy' command failed.", kCommandFailed}),
              Told());
    ExpectLogInOrder();
  }
}

// None of the policies moves or replaces the folder that a name without a file in it stands for.
struct PolicyRow {
  const char* name;
  const char* policy;
  Lines told;  // with {file} for what the source names
};

class FolderPolicyTest : public NamesTest, public testing::WithParamInterface<PolicyRow> {};

TEST_P(FolderPolicyTest, LeavesTheFolderAndTheOneAboveWhereTheyAre) {
  WriteWholeFile(folder + "\\kept.txt", "kept");
  Changes();
  const std::pair<const char*, const char*> rows[] = {
      {"{server}/.", "{folder}\\."},
      {"{server}/..", "{folder}\\.."},
      {"{server}/x/..?y", "{folder}\\.."},
      {"{server}/", "{folder}"}};
  for (const auto& [source, file] : rows) {
    Lines told = GetParam().told;
    for (std::string& line : told)
      line = Replaced(line, "{file}", file);
    if (!told.empty())
      told.push_back(kCommandFailed);
    const std::string element = "<Path>{folder}</Path><IfFileExists>" + std::string(GetParam().policy) + "</IfFileExists>";
    EXPECT_HRESULT(told.empty() ? S_OK : S_FALSE, RunCommand(source, element)) << source;
    EXPECT_EQ(told, Told()) << source;
    EXPECT_EQ(Lines{}, Changes()) << source;
    EXPECT_EQ("kept", ReadWholeFile(folder + "\\kept.txt"));
    ExpectLogInOrder();
  }
}

const std::string kRefused = "ERROR 0x80070005 'Copy' command failed.";

INSTANTIATE_TEST_SUITE_P(
    Policies, FolderPolicyTest,
    testing::Values(
        PolicyRow{"Overwrite", "<Overwrite force=\"true\"/>", Lines{"ERROR 0x80070005 Creating '{file}' failed.", kRefused}},
        PolicyRow{"Skip", "<Skip/>", Lines{}},
        PolicyRow{"Cancel", "<Cancel/>",
                  Lines{"WARNING 0x800704c7 '{file}' exists, canceling operation.",
                        "ERROR 0x800704c7 File exists. 'Copy' command canceled."}},
        PolicyRow{"Rename", "<Rename/>", Lines{"ERROR 0x80070005 Rename from '{file}' to '{file}' failed.", kRefused}},
        PolicyRow{"Update", "<Update force=\"true\"/>",
                  Lines{"ERROR 0x80070005 Unable to read '{file}'.",
                        "ERROR 0x80070005 Unable to retrieve file time from '{file}'.", kRefused}}),
    [](const auto& row) { return row.param.name; });

// The transport takes a path for ended at a line end: the server sees one request line, and the headers of the system.
TEST_F(NamesTest, ALineEndInAPathAddsNoHeader) {
  const std::pair<const char*, const char*> rows[] = {
      {"{server}/a.txt HTTP/1.1&#13;&#10;X-Forged: yes&#13;&#10;/b.txt", "GET /a.txt%20HTTP/1.1"},
      {"{server}/a&#10;X-Forged: yes&#10;/b.txt", "GET /a"}};
  Lines asked;
  for (const auto& [source, request] : rows) {
    EXPECT_HRESULT(S_OK, RunCommand(source, kHere)) << source;
    EXPECT_EQ("b.txt", NamesIn(folder)) << source;
    EXPECT_EQ(kServed, ReadWholeFile(folder + "\\b.txt")) << source;
    asked.insert(asked.end(), {"GET /control-run.xml", request});
    EXPECT_EQ(asked, server.Asked());
    EXPECT_EQ("", server.Requests().back().Header("X-Forged")) << source;
    Clear();
  }
}

// Of a query the transport takes out no more than blanks. A line end in it begins a line of its own, and leaves a request
// line without a version, which a server refuses.
TEST_F(NamesTest, ALineEndInAQueryMakesNoRequestThatAServerTakes) {
  for (const char* source : {"{server}/a.txt?x&#13;&#10;X-Forged: yes&#13;&#10;&#13;&#10;GET /second HTTP/1.1/b.txt",
                             "{server}/a.txt?x HTTP/1.1&#13;&#10;X-Forged:yes&#13;&#10;y:/b.txt",
                             "{server}/a.txt?x&#9;HTTP/1.1&#13;&#10;X-Forged:yes&#13;&#10;y:/b.txt"}) {
    EXPECT_HRESULT(S_FALSE, RunCommand(source, kHere)) << source;
    EXPECT_EQ(Lines{}, Changes()) << source;
    EXPECT_EQ("ERROR 0x80072efe 'Copy' command failed.", Told().at(1)) << source;
    EXPECT_EQ("malformed", server.Requests().back().method) << source;
    ExpectLogInOrder();
  }
  for (const std::string& asked : server.Asked())
    EXPECT_TRUE(asked == "GET /control-run.xml" || asked.rfind("malformed GET /a.txt?x", 0) == 0) << asked;
}

}  // namespace
