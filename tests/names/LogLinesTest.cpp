// Line ends and what follows them in the texts of a manifest: the log shows them, and no line of it becomes an entry by
// them.

#include <gtest/gtest.h>

#include "names/NamesFixture.h"

namespace {

class LogLinesTest : public NamesTest, public testing::WithParamInterface<NameRow> {
 protected:
  void ExpectNoEntry(VARIANT_BOOL debug) {
    control->SetEnableLogDebug(debug);
    EXPECT_HRESULT(S_FALSE, RunCommand(GetParam().source, GetParam().folder, ""));
    EXPECT_NE(std::string::npos, ReadWholeFile(LogCapture::PathOf(kRunLog)).find("01/01/2001")) << "it is not told";
    ExpectLogInOrder();
    EXPECT_EQ(Lines{}, Changes());
  }
};

const std::string kHere = "<Path>{folder}</Path>";
const std::string kForged = kForgedEntry;

class SourceLinesTest : public LogLinesTest {};

TEST_P(SourceLinesTest, BeginNoEntry) {
  ExpectNoEntry(VARIANT_FALSE);
  ExpectNoEntry(VARIANT_TRUE);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, SourceLinesTest,
    testing::Values(NameRow{"Refused", "http://x/&#13;&#10;" + kForged + "/a.txt", kHere},
                    NameRow{"LineFeed", "http://x/&#10;" + kForged + "/a.txt", kHere},
                    NameRow{"CarriageReturn", "http://x/&#13;" + kForged + "/a.txt", kHere},
                    NameRow{"Local", "C:\\&#13;&#10;" + kForged + "\\a.txt", kHere},
                    NameRow{"Permitted", "{documents}\\&#13;&#10;" + kForged + "\\a.txt", kHere},
                    NameRow{"Extension", "{documents}\\a.&#13;&#10;" + Replaced(kForged, ":", "-"), kHere}),
    [](const auto& row) { return row.param.name; });

// With debug logging the folder is also shown as raw text, which is written as it is (docs/log.md).
class FolderLinesTest : public LogLinesTest {};

TEST_P(FolderLinesTest, BeginNoEntryWithoutDebugLogging) {
  ExpectNoEntry(VARIANT_FALSE);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FolderLinesTest,
    testing::Values(NameRow{"Refused", "{server}/a.txt", "<Path>C:\\&#13;&#10;" + kForged + "\\x</Path>"},
                    NameRow{"LineFeed", "{server}/a.txt", "<Path>C:\\&#10;" + kForged + "\\x</Path>"},
                    NameRow{"Permitted", "{server}/a.txt", "<Path>{folder}\\&#13;&#10;" + kForged + "\\x</Path>"},
                    NameRow{"Temp", "{server}/a.txt", "<Temp>&#13;&#10;" + kForged + "\\x</Temp>"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
