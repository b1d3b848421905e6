// The last component of a source names the file: whatever it is, the file stands in the destination folder or nowhere.

#include <gtest/gtest.h>

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
  if (!row.failure.empty()) {
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

TEST_P(PathLengthTest, IsWrittenAndReplacedByEveryPolicy) {
  const std::string name = Name();
  for (const char* policy : {"", "<IfFileExists><Overwrite/></IfFileExists>", "<IfFileExists><Skip/></IfFileExists>"}) {
    EXPECT_HRESULT(S_OK, RunCommand("{server}/" + name, std::string("<Path>{folder}</Path>") + policy));
    EXPECT_EQ(name, NamesIn(folder)) << policy;
  }
}

INSTANTIATE_TEST_SUITE_P(Characters, PathLengthTest, testing::Values(255, 258, 259));

// Beyond that it is the system's to say whether there can be such a file; the path is never cut.
TEST_P(LongPathTest, IsWrittenWholeOrNotAtAll) {
  const HRESULT hr = RunCommand("{server}/" + Name(), kHere);
  if (hr == S_OK) {
    EXPECT_EQ(Lines{"{folder}\\" + Name()}, Changes());
  } else {
    EXPECT_HRESULT(S_FALSE, hr);
    EXPECT_EQ(Lines{}, Changes());
    EXPECT_NE(std::string::npos, Heads(kRunLog).at(0).find(" Creating '" + folder + "\\" + Name() + "' failed."));
  }
  ExpectLogInOrder();
}

INSTANTIATE_TEST_SUITE_P(Characters, LongPathTest, testing::Values(260, 261, 290));

TEST_F(NamesTest, ALocalSourceGoesWhereItsLastComponentSays) {
  for (const char* source : {"{documents}\\a.txt", "file://{documents}\\a.txt", "{documents}/a.txt",
                             "{documents}\\..\\documents\\a.txt", "{documents}\\a.txt. "}) {
    EXPECT_HRESULT(S_OK, RunCommand(source, kHere)) << source;
    EXPECT_EQ("a.txt", NamesIn(folder)) << source;
    RemoveTree(folder);
  }
}

// A permitted source is a prefix: what `..` leads to is read as the system reads it, with the rights of the user.
TEST_F(NamesTest, ALocalSourceMayLeaveItsFolderByDots) {
  EXPECT_HRESULT(S_OK, RunCommand("{documents}\\..\\sibling\\canary.txt", kHere));
  EXPECT_EQ(Lines({"{folder}\\canary.txt"}), Changes());
}

TEST_F(NamesTest, ALocalFolderIsNoSource) {
  for (const char* source : {"{documents}\\.", "{documents}\\..", "{documents}\\"}) {
    EXPECT_HRESULT(S_FALSE, RunCommand(source, kHere)) << source;
    EXPECT_EQ(Lines{}, Changes()) << source;
    ExpectLogInOrder();
  }
}

// None of the policies moves or replaces the folder that a name without a file in it stands for.
struct PolicyRow {
  const char* name;
  const char* policy;
  bool isFailure;
};

class FolderPolicyTest : public NamesTest, public testing::WithParamInterface<PolicyRow> {};

TEST_P(FolderPolicyTest, LeavesTheFolderAndTheOneAboveWhereTheyAre) {
  WriteWholeFile(folder + "\\kept.txt", "kept");
  Changes();
  for (const char* source : {"{server}/.", "{server}/..", "{server}/x/..?y", "{server}/"}) {
    const std::string element = "<Path>{folder}</Path><IfFileExists>" + std::string(GetParam().policy) + "</IfFileExists>";
    EXPECT_HRESULT(GetParam().isFailure ? S_FALSE : S_OK, RunCommand(source, element)) << source;
    EXPECT_EQ(Lines{}, Changes()) << source;
    EXPECT_EQ("kept", ReadWholeFile(folder + "\\kept.txt"));
    ExpectLogInOrder();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Policies, FolderPolicyTest,
    testing::Values(PolicyRow{"Overwrite", "<Overwrite force=\"true\"/>", true}, PolicyRow{"Skip", "<Skip/>", false},
                    PolicyRow{"Cancel", "<Cancel/>", true}, PolicyRow{"Rename", "<Rename/>", true},
                    PolicyRow{"Update", "<Update force=\"true\"/>", true}),
    [](const auto& row) { return row.param.name; });

// The server sees one request line and the headers that the system sends, whatever stands in the URL.
TEST_F(NamesTest, LineEndsInAURLAddNoHeader) {
  for (const char* source : {"{server}/a.txt HTTP/1.1&#13;&#10;X-Forged: yes&#13;&#10;/b.txt",
                             "{server}/a.txt?x&#13;&#10;X-Forged: yes&#13;&#10;&#13;&#10;GET /second HTTP/1.1/b.txt",
                             "{server}/a&#10;X-Forged: yes&#10;/b.txt"}) {
    RunCommand(source, kHere);
    for (const Request& request : server.Requests()) {
      EXPECT_EQ("GET", request.method);
      EXPECT_EQ("", request.Header("X-Forged")) << source;
      EXPECT_EQ(std::string::npos, request.path.find("/second")) << source;
    }
  }
}

}  // namespace
