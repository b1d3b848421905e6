// What the extension check sees of a name, and what name is written then.

#include <gtest/gtest.h>

#include "names/NamesFixture.h"

namespace {

struct ExtensionRow {
  const char* name;
  const char* lastComponent;  // of the source, without a FileName
  const char* extension;      // that is refused; null when the file is written
  const char* written = "";
};

class ExtensionNamesTest : public NamesTest, public testing::WithParamInterface<ExtensionRow> {};

TEST_P(ExtensionNamesTest, AreCheckedAsTheyStand) {
  const ExtensionRow& row = GetParam();
  control->SetEnableLogDebug(VARIANT_FALSE);
  EXPECT_HRESULT(
      row.extension ? S_FALSE : S_OK, RunCommand(std::string("{server}/") + row.lastComponent, "<Path>{folder}</Path>", ""));
  if (row.extension) {
    EXPECT_EQ(std::string("ERROR 0x80070005 Extension '") + row.extension + "' is not permitted.", Heads(kRunLog).front());
    EXPECT_EQ(Lines{}, Changes());
    EXPECT_EQ(Lines{"GET /control-run.xml"}, server.Asked());
    ExpectLogInOrder();
  } else {
    EXPECT_EQ(row.written, NamesIn(folder));
    EXPECT_EQ(kServed, ReadWholeFile(folder + "\\" + row.written));
    ExpectNoLog();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Evasions, ExtensionNamesTest,
    testing::Values(
        ExtensionRow{"Plain", "evil.exe", "exe"}, ExtensionRow{"DotAtTheEnd", "evil.exe.", ""},
        ExtensionRow{"DotBehindAPermittedOne", "evil.txt.", ""}, ExtensionRow{"EscapedBlank", "evil.exe%20", "exe%20"},
        ExtensionRow{"BlankAndDot", "evil.exe .", ""}, ExtensionRow{"BlankBehindTheDot", "evil.exe. ", ""},
        ExtensionRow{"BlankBeforeAQuery", "evil.exe ?x", "exe "},
        ExtensionRow{"BlankBehindAPermittedOne", "evil.txt ?x", "txt "},
        ExtensionRow{"PermittedFirst", "evil.txt.exe", "exe"},
        ExtensionRow{"PermittedInTheQuery", "evil.exe?x=a.txt", "exe"},
        ExtensionRow{"PermittedInTheFragment", "evil.exe#a.txt", nullptr, "evil.exe#a.txt"},
        ExtensionRow{"StreamOfAPermittedFile", "a.txt:evil.exe", "exe"},
        ExtensionRow{"StreamOfAProgram", "evil.exe:a.txt", nullptr, "a.txt"},
        ExtensionRow{"DataOfAProgram", "evil.exe::$DATA", ""}, ExtensionRow{"None", "evil", ""},
        ExtensionRow{"OnlyDots", "..", ""}, ExtensionRow{"Device", "NUL", ""}, ExtensionRow{"Percent", "a.%n%s", "%n%s"},
        ExtensionRow{"Capitals", "a.TXT", nullptr, "a.TXT"}, ExtensionRow{"EscapedDot", "evil%2etxt", ""}),
    [](const auto& row) { return row.param.name; });

// The name that is checked is not the one that is written.
struct FileNameRow {
  const char* name;
  std::string fileName;
  const char* extension;  // that is refused; null when the file is written
};

class FileNameTest : public NamesTest, public testing::WithParamInterface<FileNameRow> {};

TEST_P(FileNameTest, NamesNoFile) {
  const FileNameRow& row = GetParam();
  control->SetEnableLogDebug(VARIANT_FALSE);
  EXPECT_HRESULT(row.extension ? S_FALSE : S_OK, RunCommand("{server}/a.txt", "<Path>{folder}</Path>", row.fileName));
  EXPECT_EQ(row.extension ? Lines{} : Lines{"{folder}\\a.txt"}, Changes());
  if (row.extension) {
    EXPECT_EQ(std::string("ERROR 0x80070005 Extension '") + row.extension + "' is not permitted.", Heads(kRunLog).front());
    ExpectLogInOrder();
  } else {
    EXPECT_EQ(kServed, ReadWholeFile(folder + "\\a.txt"));
    ExpectNoLog();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Names, FileNameTest,
    testing::Values(
        FileNameRow{"FolderAbove", "..\\..\\b.txt", nullptr}, FileNameRow{"WholePath", "C:\\windows\\b.txt", nullptr},
        FileNameRow{"Network", "\\\\localhost\\share\\b.txt", nullptr}, FileNameRow{"Device", "nul.txt", nullptr},
        FileNameRow{"Stream", "b.exe:c.txt", nullptr}, FileNameRow{"OnlyDots", "..", ""},
        FileNameRow{"DotAtTheEnd", "b.txt.", ""}, FileNameRow{"Percent", "%n%s.txt", nullptr},
        FileNameRow{"LineEnd", "a&#13;&#10;b.txt", nullptr}, FileNameRow{"Long", std::string(70000, 'b') + ".txt", nullptr},
        FileNameRow{"FolderBehindTheDot", "b.txt\\c", "txt\\c"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
