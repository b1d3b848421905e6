// A `Copy` command that is carried out, from a local file into a folder.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstring>
#include <set>

#include "engine/CopyCommand.h"
#include "engine/EngineFixture.h"
#include "engine/HeapFailure.h"
#include "support/AllocationFailure.h"
#include "support/FirstLines.h"
#include "support/HResult.h"
#include "support/HeapBalance.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;

const std::string kFailed = "'Copy' command failed.";

class CopyCommandExecuteTest : public testing::Test {
 protected:
  CopyCommandExecuteTest() { fixture.WriteSource("a.txt", "new"); }

  // A command that copies the source's file `name`; `options` is what follows the folder in its `Destination`.
  std::unique_ptr<CCopyCommand> Read(const std::string& name, const std::string& options = "") const {
    return ReadElement(CopyElement(fixture.Source(name), fixture.PathElement() + options));
  }

  static std::unique_ptr<CCopyCommand> ReadElement(const std::string& xml) {
    return std::make_unique<CCopyCommand>(ParseElement(xml).Get(), nullptr);
  }

  HRESULT Run(CCopyCommand& command) const { return command.Execute(0, fixture.permissions.get(), nullptr); }
  std::string Names() const { return NamesIn(fixture.destination.Path()); }

  const CopyFixture fixture;
};

TEST_F(CopyCommandExecuteTest, CopiesAFile) {
  const auto command = Read("a.txt");
  const LogCapture log(false);
  EXPECT_HRESULT(S_OK, Run(*command));
  EXPECT_EQ("a.txt", Names());
  EXPECT_EQ("new", ReadWholeFile(fixture.Destination("a.txt")));
  EXPECT_EQ("", log.Text());
}

TEST_F(CopyCommandExecuteTest, RecordsTheFileThatWasWritten) {
  const auto command = Read("a.txt");
  ASSERT_HRESULT(S_OK, Run(*command));
  EXPECT_EQ("file://" + fixture.Source("a.txt"), TextOf(command->GetSourceText()));
  EXPECT_EQ("a.txt", TextOf(command->GetFileName()));
  EXPECT_EQ(fixture.destination.Path(), TextOf(command->GetFolder()));
}

TEST_F(CopyCommandExecuteTest, UsesNeitherContextNorNavigateURL) {
  const auto command = Read("a.txt");
  ReceivedText navigateURL;
  EXPECT_HRESULT(S_OK, command->Execute(0xFFFFFFFF, fixture.permissions.get(), navigateURL.Receive()));
  EXPECT_EQ(nullptr, navigateURL.Get());
}

struct ContentRow {
  const char* name;
  std::size_t bytes;
};

class CopyCommandContentTest : public CopyCommandExecuteTest, public testing::WithParamInterface<ContentRow> {};

TEST_P(CopyCommandContentTest, IsCopiedByteForByte) {
  std::string content;
  for (std::size_t i = 0; i < GetParam().bytes; ++i)
    content += static_cast<char>(i * 7 + i / 256);
  fixture.WriteSource("b.txt", content);
  EXPECT_HRESULT(S_OK, Run(*Read("b.txt")));
  EXPECT_TRUE(content == ReadWholeFile(fixture.Destination("b.txt")));
}

INSTANTIATE_TEST_SUITE_P(, CopyCommandContentTest,
                         testing::Values(ContentRow{"Empty", 0}, ContentRow{"OneByte", 1}, ContentRow{"OneChunk", 4096},
                                         ContentRow{"OneChunkAndAByte", 4097}, ContentRow{"Large", 3000001}),
                         [](const auto& row) { return row.param.name; });

TEST_F(CopyCommandExecuteTest, NeedsASource) {
  CCopyCommand command(nullptr, nullptr);
  const LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, Run(command));
  EXPECT_EQ(Texts{"ERROR 0x8000ffff 'Copy' command missing source URL."}, log.Messages());
  EXPECT_EQ("CopyCommand", log.Entries().at(0).file);
}

TEST_F(CopyCommandExecuteTest, NeedsADestination) {
  std::unique_ptr<CCopyCommand> command;
  {
    PATCH_IMPORT(folders, SHGetFolderPathA, [](auto, auto...) { return E_FAIL; });
    command = ReadElement(CopyElement(fixture.Source("a.txt"), ""));
  }
  const LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, Run(*command));
  EXPECT_EQ(Texts{"ERROR 0x8000ffff 'Copy' command missing destination folder."}, log.Messages());
}

TEST_F(CopyCommandExecuteTest, NeedsAFileName) {
  const std::string name = "a name whose length nothing else has, so that its copies are known by it.txt";
  const auto element = ParseElement(CopyElement(fixture.Source(name), fixture.PathElement()));
  const LogCapture log;
  HRESULT hr = S_OK;
  HeapFailure failure = HeapFailure::OfSize(name.size() + 1);
  failure.Run([&] {
    CCopyCommand command(element.Get(), nullptr);
    hr = Run(command);
  });
  EXPECT_HRESULT(E_UNEXPECTED, hr);
  EXPECT_EQ("ERROR 0x8000ffff 'Copy' command missing destination file.", log.Messages().back());
  EXPECT_EQ("", Names());
}

TEST_F(CopyCommandExecuteTest, NeedsPermissions) {
  const auto command = Read("a.txt");
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, command->Execute(0, nullptr, nullptr));
  EXPECT_EQ(Texts{"ERROR 0x80070057 'Copy' command missing 'Permissions' parameter."}, log.Messages());
  EXPECT_EQ("a.txt", TextOf(command->GetFileName()));
  EXPECT_EQ("", Names());
}

TEST_F(CopyCommandExecuteTest, ARefusedSourceIsNotRead) {
  const TemporaryFolder elsewhere;
  WriteWholeFile(elsewhere.File("a.txt"), "x");
  const auto command = ReadElement(CopyElement(elsewhere.File("a.txt"), fixture.PathElement()));
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Run(*command));
  EXPECT_EQ(
      (Texts{"ERROR 0x80070005 URL '" + elsewhere.File("a.txt") + "' is not permitted.", "ERROR 0x80070005 " + kFailed}),
      FirstLines(log.Messages()));
  EXPECT_EQ("", Names());
  EXPECT_EQ("(null)", TextOf(command->GetSourceText()));
  EXPECT_EQ("(null)", TextOf(command->GetFolder()));
}

TEST_F(CopyCommandExecuteTest, ARefusedDestinationIsNotMade) {
  const TemporaryFolder elsewhere;
  const std::string folder = elsewhere.File("sub");
  const auto command = ReadElement(CopyElement(fixture.Source("a.txt"), "<Path>" + folder + "</Path>"));
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Run(*command));
  EXPECT_EQ((Texts{"ERROR 0x80070005 Destination folder '" + folder + "' doesn't have permission.",
                   "ERROR 0x80070005 " + kFailed}),
            FirstLines(log.Messages()));
  EXPECT_FALSE(FileExistsAt(folder));
}

TEST_F(CopyCommandExecuteTest, ARefusedExtensionIsNotCopied) {
  fixture.WriteSource("a.bat", "x");
  const auto command = ReadElement(CopyElement(fixture.Source("a.bat"), fixture.PathElement()));
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Run(*command));
  EXPECT_EQ((Texts{"ERROR 0x80070005 Extension 'bat' is not permitted.", "ERROR 0x80070005 " + kFailed}),
            FirstLines(log.Messages()));
  EXPECT_EQ("", Names());
}

TEST_F(CopyCommandExecuteTest, TheSourceIsCheckedBeforeTheDestinationAndThatBeforeTheExtension) {
  const std::string forbiddenFolder = "<Path>C:\\forbidden</Path>";
  const auto all = ReadElement(CopyElement("C:\\forbidden\\a.bat", forbiddenFolder));
  const auto two = ReadElement(CopyElement(fixture.Source("a.bat"), forbiddenFolder));
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Run(*all));
  EXPECT_HRESULT(E_ACCESSDENIED, Run(*two));
  EXPECT_EQ(
      (Texts{"ERROR 0x80070005 URL 'C:\\forbidden\\a.bat' is not permitted.", "ERROR 0x80070005 " + kFailed,
             "ERROR 0x80070005 Destination folder 'C:\\forbidden' doesn't have permission.", "ERROR 0x80070005 " + kFailed}),
      FirstLines(log.Messages()));
}

struct ExtensionRow {
  const char* name;
  const char* source;
  const char* fileName;  // null for none
  const char* refused;   // the extension that is refused; null for none
};

class CopyCommandExtensionTest : public CopyCommandExecuteTest, public testing::WithParamInterface<ExtensionRow> {};

TEST_P(CopyCommandExtensionTest, IsThatOfTheFileName) {
  fixture.WriteSource(GetParam().source, "x");
  const std::string fileName = GetParam().fileName ? std::string("<FileName>") + GetParam().fileName + "</FileName>" : "";
  const auto command = ReadElement(CopyElement(fixture.Source(GetParam().source), fileName + fixture.PathElement()));
  const LogCapture log(false);
  EXPECT_HRESULT(GetParam().refused ? E_ACCESSDENIED : S_OK, Run(*command));
  EXPECT_EQ(GetParam().refused ? "" : GetParam().source, Names());
  if (GetParam().refused) {
    EXPECT_EQ(std::string("ERROR 0x80070005 Extension '") + GetParam().refused + "' is not permitted.",
              FirstLines(log.Messages()).at(0));
  }
}

INSTANTIATE_TEST_SUITE_P(
    , CopyCommandExtensionTest,
    testing::Values(
        ExtensionRow{"Permitted", "b.exe", nullptr, nullptr}, ExtensionRow{"PermittedInCapitals", "b.EXE", nullptr, nullptr},
        ExtensionRow{"OfAnotherFileName", "b.bat", "other.exe", nullptr},
        ExtensionRow{"RefusedOfAnotherFileName", "b.exe", "other.bat", "bat"},
        ExtensionRow{"WithoutADot", "readme", nullptr, ""},
        ExtensionRow{"AnotherFileNameWithoutADot", "b.exe", "readme", ""},
        ExtensionRow{"BehindTheLastDot", "b.exe.bat", nullptr, "bat"},
        ExtensionRow{"BehindTheLastDotPermitted", "b.bat.exe", nullptr, nullptr},
        ExtensionRow{"EndingInADot", "b.exe", "b.exe.", ""},
        ExtensionRow{"OfAFileNameWithADotInItsFolder", "b.exe", "a.exe\\b", "exe\\b"},
        ExtensionRow{"Longer", "b.exe", "b.exex", "exex"}, ExtensionRow{"Shorter", "b.exe", "b.ex", "ex"}),
    [](const auto& row) { return row.param.name; });

TEST_F(CopyCommandExecuteTest, TheFileNameElementDoesNotNameTheFile) {
  fixture.WriteSource("setup.exe", "x");
  const auto command =
      ReadElement(CopyElement(fixture.Source("setup.exe"), "<FileName>other.exe</FileName>" + fixture.PathElement()));
  EXPECT_EQ("other.exe", TextOf(command->GetFileName()));
  EXPECT_HRESULT(S_OK, Run(*command));
  EXPECT_EQ("setup.exe", Names());
  EXPECT_EQ("setup.exe", TextOf(command->GetFileName()));
}

TEST_F(CopyCommandExecuteTest, TheSecondRunChecksTheExtensionOfTheFileThatWasWritten) {
  fixture.WriteSource("tool.bin", "x");
  const auto command =
      ReadElement(CopyElement(fixture.Source("tool.bin"), "<FileName>tool.exe</FileName>" + fixture.PathElement()));
  EXPECT_HRESULT(S_OK, Run(*command));
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Run(*command));
  EXPECT_EQ("ERROR 0x80070005 Extension 'bin' is not permitted.", FirstLines(log.Messages()).at(0));
  EXPECT_EQ("(null)", TextOf(command->GetSourceText()));
  EXPECT_EQ("(null)", TextOf(command->GetFolder()));
}

TEST_F(CopyCommandExecuteTest, ASecondRunCopiesAgain) {
  const auto command = Read("a.txt");
  EXPECT_HRESULT(S_OK, Run(*command));
  fixture.WriteSource("a.txt", "newer");
  EXPECT_HRESULT(S_OK, Run(*command));
  EXPECT_EQ("newer", ReadWholeFile(fixture.Destination("a.txt")));
  EXPECT_EQ(fixture.destination.Path(), TextOf(command->GetFolder()));
}

TEST_F(CopyCommandExecuteTest, MakesTheFoldersOfItsDestination) {
  const std::string folder = fixture.Destination("x\\y\\z");
  const auto command = ReadElement(CopyElement(fixture.Source("a.txt"), "<Path>" + folder + "</Path>"));
  EXPECT_HRESULT(S_OK, Run(*command));
  EXPECT_EQ("new", ReadWholeFile(folder + "\\a.txt"));
  EXPECT_EQ(folder, TextOf(command->GetFolder()));
}

TEST_F(CopyCommandExecuteTest, AFolderThatCannotBeMadeIsAFailure) {
  const std::string folder = fixture.Destination("x");
  const auto command = ReadElement(CopyElement(fixture.Source("a.txt"), "<Path>" + folder + "</Path>"));
  const LogCapture log(false);
  PATCH_IMPORT(folders, CreateDirectoryA, FailWith(FALSE, ERROR_DISK_FULL));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070070), Run(*command));
  EXPECT_EQ(
      (Texts{"ERROR 0x80070070 Failed to create path '" + folder + "'.", "ERROR 0x80070070 " + kFailed}), log.Messages());
  EXPECT_EQ("(null)", TextOf(command->GetFolder()));
}

TEST_F(CopyCommandExecuteTest, AFileInTheWayOfTheFolderIsAFailure) {
  fixture.WriteDestination("x", "");
  const auto command = ReadElement(CopyElement(fixture.Source("a.txt"), "<Path>" + fixture.Destination("x\\y") + "</Path>"));
  const LogCapture log(false);
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070003), Run(*command));
  EXPECT_EQ((Texts{"ERROR 0x80070003 Failed to create path '" + fixture.Destination("x\\y") + "'.",
                   "ERROR 0x80070003 " + kFailed}),
            log.Messages());
  EXPECT_EQ("", ReadWholeFile(fixture.Destination("x")));
}

TEST_F(CopyCommandExecuteTest, AMissingSourceIsAFailureThatStillNamesTheFile) {
  const auto command = Read("missing.txt");
  const LogCapture log(false);
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), Run(*command));
  EXPECT_EQ(
      (Texts{"ERROR 0x80070002 Opening '" + fixture.Source("missing.txt") + "' failed.", "ERROR 0x80070002 " + kFailed}),
      log.Messages());
  EXPECT_EQ("", Names());
  EXPECT_EQ("file://" + fixture.Source("missing.txt"), TextOf(command->GetSourceText()));
  EXPECT_EQ("missing.txt", TextOf(command->GetFileName()));
  EXPECT_EQ(fixture.destination.Path(), TextOf(command->GetFolder()));
}

TEST_F(CopyCommandExecuteTest, ASourceWithoutAFileNameCopiesNothing) {
  const auto command =
      ReadElement(CopyElement(fixture.source.Path() + "\\", "<FileName>a.txt</FileName>" + fixture.PathElement()));
  EXPECT_HRESULT(E_ACCESSDENIED, Run(*command));
  EXPECT_EQ("", Names());
}

TEST_F(CopyCommandExecuteTest, AWriteThatFailsLeavesNoFile) {
  const auto command = Read("a.txt");
  fixture.WriteDestination("a.txt", "old");
  const LogCapture log(false);
  {
    PATCH_IMPORT(
        writes, WriteFile,
        [&](auto original, HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED* overlapped) -> BOOL {
          if (count != 3 || std::memcmp(bytes, "new", 3))
            return original(file, bytes, count, written, overlapped);
          SetLastError(ERROR_DISK_FULL);
          return FALSE;
        });
    EXPECT_HRESULT(static_cast<HRESULT>(0x80070070), Run(*command));
  }
  EXPECT_EQ(
      (Texts{"ERROR 0x80070070 Writing '" + fixture.Destination("a.txt") + "' failed.", "ERROR 0x80070070 " + kFailed}),
      log.Messages());
  EXPECT_EQ("", Names());
}

TEST_F(CopyCommandExecuteTest, EveryAllocationThatFailsIsAFailureOrAWholeFile) {
  const auto command = Read("a.txt");
  const LogCapture log(false);
  HRESULT hr = E_UNEXPECTED;
  const auto run = [&] {
    CCopyCommand* const running = command.get();
    hr = Run(*running);
  };
  const auto prepare = [&] {
    command->SetWrittenFile(fixture.Destination("a.txt").c_str());
    DeleteFileA(fixture.Destination("a.txt").c_str());
  };
  std::set<HRESULT> results;
  const int failures = ForEachFailedAllocation(prepare, run, [&] {
    results.insert(hr);
    EXPECT_EQ(hr == S_OK ? "a.txt" : "", Names());
    if (hr == S_OK) {
      EXPECT_EQ("new", ReadWholeFile(fixture.Destination("a.txt")));
    }
  });
  EXPECT_LT(3, failures);
  EXPECT_EQ((std::set<HRESULT>{S_OK, E_OUTOFMEMORY}), results);
  EXPECT_HRESULT(S_OK, hr);
}

TEST_F(CopyCommandExecuteTest, TheWrittenFileCanBeForgotten) {
  const auto element = ParseElement(CopyElement(fixture.Source("a.txt"), fixture.PathElement()));
  CCopyCommand command(element.Get(), nullptr);
  command.SetWrittenFile("C:\\folder\\b.txt");
  EXPECT_STREQ("C:\\folder", command.GetFolder());
  EXPECT_STREQ("b.txt", command.GetFileName());
  command.SetWrittenFile(nullptr);
  EXPECT_EQ(nullptr, command.GetFolder());
  EXPECT_EQ(nullptr, command.GetFileName());
}

TEST_F(CopyCommandExecuteTest, GivesBackWhatItAllocates) {
  const auto element = ParseElement(CopyElement(fixture.Source("a.txt"), fixture.PathElement()));
  const HeapBalance heap;
  {
    CCopyCommand command(element.Get(), nullptr);
    EXPECT_HRESULT(S_OK, Run(command));
    EXPECT_HRESULT(S_OK, Run(command));
  }
  EXPECT_EQ(0, heap.Outstanding());
}

}  // namespace
