// How an existing file is moved aside, to a numbered name.

#include <gtest/gtest.h>

#include "engine/ExistingFile.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;

HRESULT Rename(const std::string& path) {
  return RenameExistingFile(path.c_str());
}

struct NameRow {
  const char* name;
  const char* fileName;
  const char* newName;
};

class RenameExistingFileNameTest : public testing::TestWithParam<NameRow> {};

TEST_P(RenameExistingFileNameTest, GetsANumberInPlaceOfItsExtension) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File(GetParam().fileName), "old");
  const LogCapture log;
  EXPECT_HRESULT(S_OK, Rename(folder.File(GetParam().fileName)));
  EXPECT_EQ(GetParam().newName, NamesIn(folder.Path()));
  EXPECT_EQ("old", ReadWholeFile(folder.File(GetParam().newName)));
  EXPECT_EQ("", log.Text());
}

INSTANTIATE_TEST_SUITE_P(
    , RenameExistingFileNameTest,
    testing::Values(
        NameRow{"Usual", "report.txt", "report.000"}, NameRow{"WithoutADot", "report", "report.000"},
        NameRow{"WithTwoDots", "archive.tar.gz", "archive.tar.000"}, NameRow{"WithALongExtension", "page.xhtml", "page.000"},
        NameRow{"WithAShortExtension", "page.c", "page.000"}, NameRow{"WithNothingBeforeTheDot", ".profile", ".000"},
        NameRow{"WithFormatCharacters", "a%s%n%d.txt", "a%s%n%d.000"},
        NameRow{"WithBlanks", "my report.txt", "my report.000"}, NameRow{"WithANumberAlready", "report.000", "report.001"}),
    [](const auto& row) { return row.param.name; });

TEST(RenameExistingFileTest, TakesTheFirstFreeNumber) {
  const TemporaryFolder folder;
  for (const char* name : {"a.txt", "a.000", "a.001"})
    WriteWholeFile(folder.File(name), name);
  EXPECT_HRESULT(S_OK, Rename(folder.File("a.txt")));
  EXPECT_EQ("a.000 a.001 a.002", NamesIn(folder.Path()));
  EXPECT_EQ("a.000", ReadWholeFile(folder.File("a.000")));
  EXPECT_EQ("a.001", ReadWholeFile(folder.File("a.001")));
  EXPECT_EQ("a.txt", ReadWholeFile(folder.File("a.002")));
}

TEST(RenameExistingFileTest, TakesANumberThatBecameFreeAgain) {
  const TemporaryFolder folder;
  for (const char* name : {"a.txt", "a.000", "a.002"})
    WriteWholeFile(folder.File(name), name);
  EXPECT_HRESULT(S_OK, Rename(folder.File("a.txt")));
  EXPECT_EQ("a.txt", ReadWholeFile(folder.File("a.001")));
}

TEST(RenameExistingFileTest, CountsOnWithEveryRename) {
  const TemporaryFolder folder;
  for (const char* content : {"one", "two", "three"}) {
    WriteWholeFile(folder.File("a.txt"), content);
    EXPECT_HRESULT(S_OK, Rename(folder.File("a.txt")));
  }
  EXPECT_EQ("a.000 a.001 a.002", NamesIn(folder.Path()));
  EXPECT_EQ("three", ReadWholeFile(folder.File("a.002")));
}

TEST(RenameExistingFileTest, AFolderOfThatNameIsTakenToo) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "old");
  ASSERT_TRUE(CreateDirectoryA(folder.File("a.000").c_str(), nullptr));
  EXPECT_HRESULT(S_OK, Rename(folder.File("a.txt")));
  EXPECT_EQ("a.000 a.001", NamesIn(folder.Path()));
}

TEST(RenameExistingFileTest, ADotOfTheFolderCountsWhenTheNameHasNone) {
  const TemporaryFolder folder;
  ASSERT_TRUE(CreateDirectoryA(folder.File("v1.5").c_str(), nullptr));
  WriteWholeFile(folder.File("v1.5\\readme"), "old");
  EXPECT_HRESULT(S_OK, Rename(folder.File("v1.5\\readme")));
  EXPECT_EQ("", NamesIn(folder.File("v1.5")));
  EXPECT_EQ("v1.000 v1.5", NamesIn(folder.Path()));
  EXPECT_EQ("old", ReadWholeFile(folder.File("v1.000")));
}

TEST(RenameExistingFileTest, AFolderStaysWhereItIs) {
  const TemporaryFolder folder;
  const std::string path = folder.File("a.txt");
  ASSERT_TRUE(CreateDirectoryA(path.c_str(), nullptr));
  const LogCapture log;
  EXPECT_HRESULT(E_ACCESSDENIED, Rename(path));
  EXPECT_EQ("a.txt", NamesIn(folder.Path()));
  EXPECT_EQ(Texts{"ERROR 0x80070005 Rename from '" + path + "' to '" + path + "' failed."}, log.Messages());
}

TEST(RenameExistingFileTest, AFileThatIsGoneIsAFailedRename) {
  const TemporaryFolder folder;
  const LogCapture log;
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), Rename(folder.File("a.txt")));
  EXPECT_EQ(Texts{"ERROR 0x80070002 Rename from '" + folder.File("a.txt") + "' to '" + folder.File("a.000") + "' failed."},
            log.Messages());
}

TEST(RenameExistingFileTest, AFailedMoveHasTheSystemsCode) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "old");
  const LogCapture log;
  PATCH_IMPORT(moves, MoveFileA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_HRESULT(E_ACCESSDENIED, Rename(folder.File("a.txt")));
  EXPECT_EQ("a.txt", NamesIn(folder.Path()));
  EXPECT_EQ(Texts{"ERROR 0x80070005 Rename from '" + folder.File("a.txt") + "' to '" + folder.File("a.000") + "' failed."},
            log.Messages());
}

TEST(RenameExistingFileTest, ItTakesTheLastNumberWhenOnlyThatIsFree) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "new");
  PATCH_IMPORT(files, GetFileAttributesA, [&](auto original, LPCSTR path) {
    return path == folder.File("a.999") ? original(path) : DWORD{FILE_ATTRIBUTE_ARCHIVE};
  });
  PATCH_IMPORT(deletions, DeleteFileA, [](auto, LPCSTR path) -> BOOL {
    ADD_FAILURE() << "deletes " << path;
    return FALSE;
  });
  EXPECT_HRESULT(S_OK, Rename(folder.File("a.txt")));
  EXPECT_EQ("a.999", NamesIn(folder.Path()));
}

TEST(RenameExistingFileTest, ANameThatIsTakenMeanwhileIsNotDeleted) {
  const TemporaryFolder folder;
  const std::string newName = folder.File("a.000");
  WriteWholeFile(folder.File("a.txt"), "old");
  const LogCapture log;
  {
    PATCH_IMPORT(files, GetFileAttributesA, [&](auto original, LPCSTR path) {
      const DWORD attributes = original(path);
      if (path == newName && attributes == INVALID_FILE_ATTRIBUTES)
        WriteWholeFile(newName, "another program's");
      return attributes;
    });
    EXPECT_HRESULT(static_cast<HRESULT>(0x800700B7), Rename(folder.File("a.txt")));
  }
  EXPECT_EQ("another program's", ReadWholeFile(newName));
  EXPECT_EQ("old", ReadWholeFile(folder.File("a.txt")));
  EXPECT_EQ(
      Texts{"ERROR 0x800700b7 Rename from '" + folder.File("a.txt") + "' to '" + newName + "' failed."}, log.Messages());
}

// Lets every file name be taken, and keeps the names that were asked for behind the file itself.
class AllNamesTaken {
 public:
  Texts asked;

 private:
  ImportedFunction<struct GetFileAttributesAImport, decltype(&::GetFileAttributesA)> files{
      "GetFileAttributesA", [this](auto, LPCSTR path) {
        asked.push_back(path);
        return DWORD{FILE_ATTRIBUTE_ARCHIVE};
      }};
};

TEST(RenameExistingFileTest, WhenAllNumbersAreTakenTheLastOneIsGivenUp) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "new");
  WriteWholeFile(folder.File("a.999"), "given up");
  const LogCapture log;
  {
    const AllNamesTaken names;
    EXPECT_HRESULT(S_OK, Rename(folder.File("a.txt")));
    ASSERT_LE(1001u, names.asked.size());
    EXPECT_EQ(folder.File("a.000"), names.asked[1]);
    EXPECT_EQ(folder.File("a.001"), names.asked[2]);
    EXPECT_EQ(folder.File("a.998"), names.asked[999]);
    EXPECT_EQ(folder.File("a.999"), names.asked[1000]);
  }
  EXPECT_EQ("a.999", NamesIn(folder.Path()));
  EXPECT_EQ("new", ReadWholeFile(folder.File("a.999")));
  EXPECT_EQ("", log.Text());
}

TEST(RenameExistingFileTest, TheWarningOfADeletionStandsForItsFailure) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a.txt"), "new");
  WriteWholeFile(folder.File("a.999"), "stays");
  const LogCapture log;
  {
    const AllNamesTaken names;
    PATCH_IMPORT(deletions, DeleteFileA, FailWith(FALSE, ERROR_SHARING_VIOLATION));
    EXPECT_HRESULT(static_cast<HRESULT>(0x800700B7), Rename(folder.File("a.txt")));
  }
  EXPECT_EQ((Texts{"WARNING 0x80070020 Rename failed, deleted '" + folder.File("a.999") + "' instead.",
                   "ERROR 0x800700b7 Rename from '" + folder.File("a.txt") + "' to '" + folder.File("a.999") + "' failed."}),
            log.Messages());
  EXPECT_EQ("new", ReadWholeFile(folder.File("a.txt")));
  EXPECT_EQ("stays", ReadWholeFile(folder.File("a.999")));
}

TEST(RenameExistingFileTest, AFailedDeletionDoesNotDecideTheResult) {
  const AllNamesTaken names;
  PATCH_IMPORT(deletions, DeleteFileA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  PATCH_IMPORT(moves, MoveFileA, [](auto, LPCSTR, LPCSTR) { return TRUE; });
  EXPECT_HRESULT(S_OK, Rename("C:\\a.txt"));
}

struct LengthRow {
  const char* name;
  std::string fileName;
  std::string newName;
};

// A path of `length` characters that ends with `end`.
std::string LongPath(std::size_t length, const std::string& end = "") {
  const std::string start = "C:\\folder\\";
  return start + std::string(length - start.size() - end.size(), 'x') + end;
}

class RenameExistingFileLengthTest : public testing::TestWithParam<LengthRow> {};

TEST_P(RenameExistingFileLengthTest, FitsInto260Characters) {
  std::string from, to;
  PATCH_IMPORT(files, GetFileAttributesA, FailWith(INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND));
  PATCH_IMPORT(moves, MoveFileA, [&](auto, LPCSTR oldName, LPCSTR newName) {
    from = oldName;
    to = newName;
    return TRUE;
  });
  EXPECT_HRESULT(S_OK, Rename(GetParam().fileName));
  EXPECT_EQ(GetParam().fileName, from);
  EXPECT_EQ(GetParam().newName, to);
  EXPECT_GE(259u, to.size());
}

INSTANTIATE_TEST_SUITE_P(
    , RenameExistingFileLengthTest,
    testing::Values(LengthRow{"Of255WithoutADot", LongPath(255), LongPath(255) + ".000"},
                    LengthRow{"Of255WithADot", LongPath(255, ".txt"), LongPath(251) + ".000"},
                    LengthRow{"Of255WithADotAtItsEnd", LongPath(255, "."), LongPath(254) + ".000"},
                    LengthRow{"Of255WithALongExtension", LongPath(255, ".xhtml"), LongPath(249) + ".000"},
                    LengthRow{"Of256WithoutADot", LongPath(256), LongPath(252) + ".000"},
                    LengthRow{"Of256WithADot", LongPath(256, ".txt"), LongPath(252) + ".000"},
                    LengthRow{"Of256WithALongExtension", LongPath(256, ".xhtml"), LongPath(252, ".x") + ".000"},
                    LengthRow{"Of256WithAShortExtension", LongPath(256, ".c"), LongPath(252) + ".000"},
                    LengthRow{"Of259WithoutADot", LongPath(259), LongPath(255) + ".000"},
                    LengthRow{"Of260IsCut", LongPath(260, ".txt"), LongPath(255) + ".000"},
                    LengthRow{"Of1000IsCut", LongPath(1000), LongPath(255) + ".000"},
                    LengthRow{"OfOneCharacter", "a", "a.000"}, LengthRow{"OfNoCharacter", "", ".000"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
