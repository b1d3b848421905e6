// Manifests whose own URL means harm: the log of the run stands in the folder of the logs, if anywhere.

#include <gtest/gtest.h>

#include "names/NamesFixture.h"

namespace {

const std::string kEntry = kForgedEntry;
const std::string kLine = "\r\n" + kEntry + "\r\n";

constexpr char kRunFailed[] = "ERROR 0x80070005 The 'Execute' or 'ExecuteNavigate' method failed.";

struct ManifestRow {
  const char* name;
  std::string url;
  std::string log;  // the only file that comes, in the folder of the logs; empty when there is none
};

class ManifestNamesTest : public NamesTest, public testing::WithParamInterface<ManifestRow> {
 protected:
  static std::string InLogFolder(const std::string& name) { return LogCapture::PathOf(name); }
};

TEST_P(ManifestNamesTest, WriteTheirLogIntoItsFolder) {
  const ManifestRow& row = GetParam();
  DeleteLogs();
  Changes();
  EXPECT_HRESULT(E_ACCESSDENIED, control->Execute(Automation(row.url).Get()));
  EXPECT_EQ(row.log.empty() ? Lines{} : Lines{InLogFolder(row.log)}, Changes());
  EXPECT_EQ(Lines{}, server.Asked());
  if (!row.log.empty()) {
    ExpectLogInOrder(row.log);
    EXPECT_EQ(kRunFailed, LastMessage(row.log));
    DeleteFileA(InLogFolder(row.log).c_str());
  }
  Changes();
}

INSTANTIATE_TEST_SUITE_P(
    Urls, ManifestNamesTest,
    testing::Values(
        ManifestRow{"FolderAbove", "http://x/..", "."}, ManifestRow{"FoldersAbove", "..\\..\\x.xml", "x"},
        ManifestRow{"FoldersAboveBySlashes", "http://x/../../y.xml", "y"},
        ManifestRow{"FoldersAboveInTheQuery", "http://x/a.xml?../../y.xml", "y"},
        ManifestRow{"EscapedDots", "http://x/%2e%2e%5cy.xml", "%2e%2e%5cy"},
        ManifestRow{"LongForm", "\\\\?\\C:\\x.xml", "x"}, ManifestRow{"Network", "\\\\localhost\\share\\x.xml", "x"},
        ManifestRow{"Colon", "http://x/a:b.xml", "b"}, ManifestRow{"Percent", "http://x/%n%s%1.xml", "%n%s%1"},
        ManifestRow{"DotAtTheEnd", "http://x/a.", "a"}, ManifestRow{"Blank", "http://x/ .xml", " "},
        ManifestRow{"NullDevice", "http://x/nul.xml", "Norvik"}, ManifestRow{"Entry", "http://x/" + kLine + "/a.xml", "a"},
        ManifestRow{"EntryBehindALineFeed", "http://x/\n" + kEntry + "/a.xml", "a"},
        ManifestRow{"EntryBehindACarriageReturn", "http://x/\r" + kEntry + "/a.xml", "a"},
        ManifestRow{"Entries", "http://x/" + kLine + kLine + kLine + "/a.xml", "Norvik"},
        ManifestRow{"QueryThatNoFileNameHolds", "http://x/a?b", ""},
        ManifestRow{"QuoteThatNoFileNameHolds", "http://x/a\"b.xml", ""},
        ManifestRow{"NothingBehindTheLastSlash", "http://x/y/", ""},
        ManifestRow{"Of129", "http://x/" + std::string(116, 'n') + ".xml", std::string(116, 'n')},
        ManifestRow{"Of130", "http://x/" + std::string(117, 'n') + ".xml", "Norvik"},
        ManifestRow{"Of70000", "http://x/" + std::string(70000, 'n'), "Norvik"}),
    [](const auto& row) { return row.param.name; });

// The not-found text is searched for, never formatted with.
TEST_F(NamesTest, ANotFoundTextIsNoFormat) {
  for (const char* text : {"%n%s%1%x", "%s%s%s%s%s%s%s%s", "a%0d%0ab", "..\\..\\x"}) {
    const std::string command = "<Copy><Source>" + server.Url("/a.txt") + "</Source><Destination><Path>" + folder +
                                "</Path></Destination><NotFoundHTML>" + text + "</NotFoundHTML></Copy>";
    server.Answer("/a.txt", Response().Body("body"));
    EXPECT_HRESULT(S_OK, Execute(command)) << text;
    EXPECT_EQ("body", ReadWholeFile(folder + "\\a.txt"));
    server.Answer("/a.txt", Response().Body(std::string("before ") + text + " behind"));
    EXPECT_HRESULT(S_FALSE, Execute(command)) << text;
    EXPECT_EQ(Told("0x80070002 Source URL '{server}/a.txt' not found."), Told()) << text;
    EXPECT_EQ("", NamesIn(folder)) << text;
    ExpectLogInOrder();
  }
}

}  // namespace
