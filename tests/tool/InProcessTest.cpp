// Commands within this program, with the system's calls replaced: what no test that starts the program can bring about.

#include "advice/Document.h"
#include "advice/Words.h"
#include "support/PermitFile.h"
#include "tool/Commands.h"
#include "tool/FakeStreams.h"

namespace {

// A run on a console, of a manifest that copies one file of this size.
class RunProgressTest : public FakeStreamsTest {
 protected:
  std::vector<std::wstring> ProgressOf(std::size_t bytes) {
    permit.URL(folder.Path() + "\\").Extension("txt").Extension("xml").Folder("Path", target.Path()).Write();
    WriteWholeFile(Source(), std::string(bytes, 'x'));
    WriteWholeFile(
        folder.File("m.xml"),
        "<?xml version=\"1.0\"?><!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\"><VantorManifest version=\"1.0\">"
        "<Copy><Source>" +
            Source() + "</Source><Destination><Path>" + target.Path() + "</Path></Destination></Copy></VantorManifest>");
    Arguments arguments;
    arguments.url = WideFromAnsi(folder.File("m.xml").c_str());
    Do([&] { EXPECT_EQ(0, RunCommand(arguments)); });
    return error.written;
  }

  std::string Source() const { return folder.File("a.txt"); }

  PermitFile permit;
  const TemporaryFolder folder;
  const TemporaryFolder target;
};

TEST_F(RunProgressTest, IsShownForEveryQuarterOfAMegabyte) {
  const auto shown = [this](const char* kibibytes) {
    return L"\r\x1b[K1 Copy file://" + WideFromAnsi(Source().c_str()) + L" (" + WideFromUtf8(kibibytes) + L" KiB)";
  };
  const std::wstring erased = L"\r\x1b[K";
  using Pieces = std::vector<std::wstring>;
  EXPECT_EQ((Pieces{shown("0"), shown("256"), shown("512"), erased}), ProgressOf(600 * 1024));
  EXPECT_EQ(0u, output.written.at(0).find(L"\x1b[32mok    \x1b[0m 1 Copy ")) << Utf8(output.written.at(0));
  error.written.clear();
  EXPECT_EQ((Pieces{shown("0"), shown("256"), erased}), ProgressOf(256 * 1024));
  error.written.clear();
  EXPECT_EQ((Pieces{shown("0"), erased}), ProgressOf(256 * 1024 - 1));
}

// Half a file is no file.
TEST(KitWithoutRoomTest, LeavesNoPartOfAFile) {
  const TemporaryFolder folder;
  Arguments arguments;
  arguments.origins = {"https://portal.example.com"};
  arguments.out = WideFromAnsi(folder.File("kit").c_str());
  PATCH_IMPORT(full, WriteFile, FailWith(FALSE, ERROR_DISK_FULL));
  try {
    BrowserKitCommand(arguments);
    ADD_FAILURE() << "there was no room";
  } catch (const Unanswered& reason) {
    const std::string end = "' cannot be written: " + CodeAndText(HRESULT_FROM_WIN32(ERROR_DISK_FULL));
    const std::string told = reason.what();
    EXPECT_EQ(end, told.substr(told.size() - std::min(told.size(), end.size())));
  }
  EXPECT_EQ("", NamesIn(folder.File("kit")));
}

}  // namespace
