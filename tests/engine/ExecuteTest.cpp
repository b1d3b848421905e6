#include "engine/Execute.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstring>

#include "common/ModulePath.h"
#include "engine/EngineFixture.h"
#include "engine/HeapFailure.h"
#include "engine/Manifest.h"
#include "log/LogFile.h"
#include "support/FirstLines.h"
#include "support/HResult.h"
#include "support/HeapBalance.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "transfer/DocumentType.h"

namespace {

using Texts = std::vector<std::string>;

constexpr HRESULT kFileNotFound = static_cast<HRESULT>(0x80070002);

// The log of that name: the first lines of its messages.
Texts MessagesOf(const std::string& logName) {
  const std::string path = LogCapture::PathOf(logName);
  return FirstLines(LogCapture::MessagesOf(LogCapture::Parse(FileExistsAt(path) ? ReadWholeFile(path) : "")));
}

// A permission file, a source folder with manifests, and a destination. The logs of earlier tests are gone.
class ExecuteTest : public testing::Test {
 protected:
  ExecuteTest() {
    for (const char* name : {"permit", "first", "second", "Norvik"})
      DeleteFileA(LogCapture::PathOf(name).c_str());
    fixture.WriteSource("a.txt", "a");
    fixture.WriteSource("b.txt", "b");
    fixture.WriteSource("c.txt", "c");
  }

  std::string Copy(const std::string& name, const std::string& options = "") const {
    return CopyElement(fixture.Source(name), fixture.PathElement() + options);
  }

  std::string Write(const std::string& name, const std::string& commands) const {
    return fixture.WriteSource(name, ManifestText(commands));
  }

  std::string Names() const { return NamesIn(fixture.destination.Path()); }

  static HRESULT Run(CExecuter& executer, const std::string& url, BSTR* navigateURL = nullptr) {
    return executer.Run(Wide(url).c_str(), navigateURL);
  }

  const LogCapture log{false};  // switches debug logging off and back; the executer chooses files of its own
  const CopyFixture fixture;
};

TEST_F(ExecuteTest, RunsEveryCommandOfAManifest) {
  HRESULT hr = E_UNEXPECTED;
  CExecuter executer(0, &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_HRESULT(S_OK, Run(executer, Write("first.xml", Copy("a.txt") + Copy("b.txt") + Copy("c.txt"))));
  EXPECT_EQ("a.txt b.txt c.txt", Names());
  EXPECT_EQ("b", ReadWholeFile(fixture.Destination("b.txt")));
  EXPECT_EQ(Texts(), MessagesOf("first"));
  EXPECT_EQ(Texts(), MessagesOf("permit"));
}

TEST_F(ExecuteTest, AFailedCommandDoesNotStopTheOnesBehindIt) {
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(S_FALSE, Run(executer, Write("first.xml", Copy("a.txt") + Copy("missing.txt") + Copy("c.txt"))));
  EXPECT_EQ("a.txt c.txt", Names());
}

TEST_F(ExecuteTest, AFailedCommandIsTraced) {
  CExecuter executer(0, nullptr);
  const std::string manifest = Write("first.xml", Copy("missing.txt"));
  SetDebugLogging(1);
  EXPECT_HRESULT(S_FALSE, Run(executer, manifest));
  SetDebugLogging(0);
  const auto entries = LogCapture::Parse(ReadWholeFile(LogCapture::PathOf("first")));
  ASSERT_FALSE(entries.empty());
  EXPECT_EQ("ERROR", entries.back().level);
  EXPECT_EQ("Execute", entries.back().file);
  EXPECT_EQ("", entries.back().message);
  EXPECT_HRESULT(kFileNotFound, entries.back().code);
}

TEST_F(ExecuteTest, ACommandThatLeavesAFileAloneHasNotFailed) {
  fixture.WriteDestination("a.txt", "old");
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(S_OK, Run(executer, Write("first.xml", Copy("a.txt", "<IfFileExists><Skip/></IfFileExists>"))));
  EXPECT_EQ("old", ReadWholeFile(fixture.Destination("a.txt")));
}

TEST_F(ExecuteTest, AManifestWithoutCommandsSucceeds) {
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(S_OK, Run(executer, Write("first.xml", "")));
}

TEST_F(ExecuteTest, TheOpenCommandFillsTheNavigateURL) {
  CExecuter executer(7, nullptr);
  const std::string open = OpenElement("browser=\"true\"", fixture.Source("b.txt"), fixture.PathElement());
  ReceivedText navigateURL;
  EXPECT_HRESULT(S_OK, Run(executer, Write("first.xml", Copy("a.txt") + open), navigateURL.Receive()));
  EXPECT_EQ(Wide("file://" + fixture.Destination("b.txt")), navigateURL.Text());
}

// The drive stands in for a folder that cannot be had: the reading of such a command says so, the run does not.
TEST_F(ExecuteTest, AFolderThatStandsInForAnotherIsNoFailure) {
  CExecuter executer(0, nullptr);
  const std::string folder = fixture.Destination("").substr(std::strlen("C:\\"));
  const std::string open = OpenElement("browser=\"true\"", fixture.Source("b.txt"), "<Personal>" + folder + "</Personal>");
  const std::string manifest = Write("first.xml", open);
  PATCH_IMPORT(noPersonal, SHGetFolderPathA, [](auto original, HWND window, int id, auto... rest) -> HRESULT {
    return (id & 0xFF) == CSIDL_PERSONAL ? E_FAIL : original(window, id, rest...);
  });
  PATCH_IMPORT(noTemporary, GetTempPathA, FailWith(DWORD{0}, ERROR_PATH_NOT_FOUND));
  ReceivedText navigateURL;
  EXPECT_HRESULT(S_OK, Run(executer, manifest, navigateURL.Receive()));
  EXPECT_EQ(Wide("file://" + fixture.Destination("b.txt")), navigateURL.Text());
}

TEST_F(ExecuteTest, WithoutAPlaceForTheNavigateURLTheOpenCommandFails) {
  CExecuter executer(0, nullptr);
  const std::string open = OpenElement("browser=\"true\"", fixture.Source("b.txt"), fixture.PathElement());
  EXPECT_HRESULT(S_FALSE, Run(executer, Write("first.xml", Copy("a.txt") + open)));
  EXPECT_EQ("a.txt", Names());
  EXPECT_EQ(Texts{"ERROR 0x80070057 Need navigate URL parameter if launched in a browser."}, MessagesOf("first"));
}

TEST_F(ExecuteTest, EveryRunReadsItsManifestAnewAndHasALogOfItsOwn) {
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(S_FALSE, Run(executer, Write("first.xml", Copy("missing.txt"))));
  EXPECT_HRESULT(S_OK, Run(executer, Write("second.xml", Copy("b.txt"))));
  EXPECT_EQ("ERROR 0x80070002 'Copy' command failed.", MessagesOf("first").back());
  EXPECT_EQ(Texts(), MessagesOf("second"));
  EXPECT_HRESULT(S_OK, Run(executer, Write("first.xml", Copy("a.txt"))));
  EXPECT_EQ("a.txt b.txt", Names());
}

TEST_F(ExecuteTest, ARefusedManifestIsReportedInItsOwnLog) {
  const TemporaryFolder elsewhere;
  WriteWholeFile(elsewhere.File("first.xml"), ManifestText(Copy("a.txt")));
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(E_ACCESSDENIED, Run(executer, elsewhere.File("first.xml")));
  EXPECT_EQ((Texts{"ERROR 0x80070005 URL '" + elsewhere.File("first.xml") + "' is not permitted.",
                   "ERROR 0x80070005 Manifest URL '" + elsewhere.File("first.xml") + "' is not permitted."}),
            MessagesOf("first"));
  EXPECT_EQ("", Names());
  EXPECT_EQ("", CachedFile(elsewhere.File("first.xml")));
}

TEST_F(ExecuteTest, AMissingURLIsNotPermitted) {
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(E_INVALIDARG, executer.Run(nullptr, nullptr));
  EXPECT_EQ((Texts{"ERROR 0x80070057 Missing manifest URL parameter.",
                   "ERROR 0x80070057 Manifest URL '(null)' is not permitted."}),
            MessagesOf("Norvik"));
  EXPECT_HRESULT(E_ACCESSDENIED, executer.Run(L"", nullptr));
}

TEST_F(ExecuteTest, AURLIsNeverTakenForAFormat) {
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(E_ACCESSDENIED, Run(executer, "C:\\%s%s%n\\first.xml"));
  EXPECT_EQ((Texts{"ERROR 0x80070005 URL 'C:\\%s%s%n\\first.xml' is not permitted.",
                   "ERROR 0x80070005 Manifest URL 'C:\\%s%s%n\\first.xml' is not permitted."}),
            MessagesOf("first"));
}

TEST_F(ExecuteTest, AURLOfAnyLengthIsAnswered) {
  CExecuter executer(0, nullptr);
  for (const std::size_t length : {259u, 260u, 1023u, 1024u, 4096u, 100000u})
    EXPECT_HRESULT(E_ACCESSDENIED, Run(executer, "C:\\" + std::string(length, 'x') + "\\first.xml")) << length;
}

TEST_F(ExecuteTest, AMissingManifestIsItsFailure) {
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(kFileNotFound, Run(executer, fixture.Source("first.xml")));
}

TEST_F(ExecuteTest, AnInvalidManifestRunsNothing) {
  CExecuter executer(0, nullptr);
  EXPECT_HRESULT(E_FAIL, Run(executer, Write("first.xml", Copy("a.txt") + "<Unknown/>")));
  EXPECT_EQ("", Names());
}

TEST_F(ExecuteTest, AManifestThatCannotBeMadeIsItsFailure) {
  CExecuter executer(0, nullptr);
  const std::string manifest = Write("first.xml", Copy("a.txt"));
  PATCH_IMPORT(parser, CoCreateInstance, [](auto, auto...) { return REGDB_E_CLASSNOTREG; });
  EXPECT_HRESULT(REGDB_E_CLASSNOTREG, Run(executer, manifest));
}

TEST_F(ExecuteTest, AManifestThatCannotBeAllocatedIsReported) {
  CExecuter executer(0, nullptr);
  // No text of the run may be as long as the object is large: all are longer than this folder's name, or short.
  const std::string folder = std::string(2 * sizeof(CManifest), 'f');
  ASSERT_TRUE(CreateDirectoryA(fixture.Source(folder).c_str(), nullptr));
  const std::string manifest = Write(folder + "\\first.xml", "");
  const std::wstring url = Wide(manifest);
  HRESULT hr = S_OK;
  HeapFailure failure = HeapFailure::OfSize(sizeof(CManifest));
  failure.Run([&] { hr = executer.Run(url.c_str(), nullptr); });
  EXPECT_EQ(1, failure.Failures());
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Failed to create a manifest from " + manifest + "."}, MessagesOf("first"));
}

TEST_F(ExecuteTest, APermissionFileCountsWhenTheExecuterIsMade) {
  CExecuter before(0, nullptr);
  WriteWholeFile(fixture.permit.Path(), "no document");
  EXPECT_HRESULT(S_OK, Run(before, Write("first.xml", Copy("a.txt"))));
  HRESULT hr = S_OK;
  CExecuter after(0, &hr);
  EXPECT_HRESULT(E_FAIL, hr);
  EXPECT_HRESULT(E_UNEXPECTED, Run(after, Write("first.xml", Copy("b.txt"))));
  EXPECT_EQ("a.txt", Names());
}

TEST_F(ExecuteTest, WithoutAPermissionFileEveryRunIsRefused) {
  const std::string manifest = Write("first.xml", Copy("a.txt"));
  ASSERT_TRUE(DeleteFileA(fixture.permit.Path().c_str()));
  HRESULT hr = S_OK;
  CExecuter executer(0, &hr);
  EXPECT_HRESULT(kFileNotFound, hr);
  EXPECT_HRESULT(E_UNEXPECTED, Run(executer, manifest));
  EXPECT_HRESULT(E_UNEXPECTED, executer.Run(nullptr, nullptr));
  const Texts messages = MessagesOf("permit");
  ASSERT_LE(3u, messages.size());
  EXPECT_EQ("ERROR 0x80070002 An error occured while reading permissions from 'permit.xml'.  Destroying permissions.",
            messages[messages.size() - 3]);
  EXPECT_EQ("ERROR 0x8000ffff Missing permissions.", messages[messages.size() - 2]);
  EXPECT_EQ("ERROR 0x8000ffff Missing permissions.", messages.back());
  EXPECT_FALSE(FileExistsAt(LogCapture::PathOf("first")));
}

TEST_F(ExecuteTest, PermissionsThatCannotBeAllocatedAreReported) {
  HRESULT hr = S_OK;
  HeapFailure failure = HeapFailure::OneOfSize(sizeof(CPermissions), 1);
  failure.Run([&] { const CExecuter executer(0, &hr); });
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Failed to create permissions from 'permit.xml'."}, MessagesOf("permit"));
}

struct ApartmentRow {
  const char* name;
  HRESULT initialized;
  int ends;
};

class ExecuteApartmentTest : public ExecuteTest, public testing::WithParamInterface<ApartmentRow> {};

TEST_P(ExecuteApartmentTest, IsLeftAsOftenAsItWasEntered) {
  int begins = 0;
  int ends = 0;
  PATCH_IMPORT(initialize, CoInitialize, [&](auto, LPVOID reserved) {
    EXPECT_EQ(nullptr, reserved);
    ++begins;
    return GetParam().initialized;
  });
  PATCH_IMPORT(uninitialize, CoUninitialize, [&](auto) { ++ends; });
  HRESULT hr = E_UNEXPECTED;
  {
    const CExecuter executer(0, &hr);
    EXPECT_EQ(1, begins);
    EXPECT_EQ(0, ends);
  }
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(1, begins);
  EXPECT_EQ(GetParam().ends, ends);
}

INSTANTIATE_TEST_SUITE_P(, ExecuteApartmentTest,
                         testing::Values(ApartmentRow{"Entered", S_OK, 1}, ApartmentRow{"EnteredBefore", S_FALSE, 1},
                                         ApartmentRow{"OfAnotherKind", RPC_E_CHANGED_MODE, 0}),
                         [](const auto& row) { return row.param.name; });

TEST_F(ExecuteTest, TheSystemLinesLiveUntilTheFirstExecuterIsGone) {
  const std::string folder = fixture.permit.ModuleFolder();
  EXPECT_EQ(nullptr, GetManifestSystemLine());
  EXPECT_EQ(nullptr, GetPermitSystemLine());
  auto first = std::make_unique<CExecuter>(0, nullptr);
  EXPECT_EQ("\r\n<!DOCTYPE VantorManifest SYSTEM \"file://" + folder + "\\manifest.dtd\">", GetManifestSystemLine());
  EXPECT_EQ("\r\n<!DOCTYPE VantorPermissions SYSTEM \"file://" + folder + "\\permit.dtd\">", GetPermitSystemLine());
  auto second = std::make_unique<CExecuter>(0, nullptr);
  first.reset();
  EXPECT_EQ(nullptr, GetManifestSystemLine());
  EXPECT_EQ(nullptr, GetPermitSystemLine());
  EXPECT_HRESULT(S_OK, Run(*second, Write("first.xml", Copy("a.txt"))));
  const CExecuter third(0, nullptr);
  EXPECT_NE(nullptr, GetManifestSystemLine());
  EXPECT_NE(nullptr, GetPermitSystemLine());
  second.reset();
  EXPECT_EQ(nullptr, GetManifestSystemLine());
}

TEST_F(ExecuteTest, TheSystemLinesAreMadeWithoutPermissionsToo) {
  ASSERT_TRUE(DeleteFileA(fixture.permit.Path().c_str()));
  const CExecuter executer(0, nullptr);
  EXPECT_NE(nullptr, GetManifestSystemLine());
  EXPECT_NE(nullptr, GetPermitSystemLine());
}

TEST_F(ExecuteTest, WithoutAModuleFolderThereAreNoSystemLines) {
  const std::string path = GetModulePath();
  SetModulePath("");
  const CExecuter executer(0, nullptr);
  EXPECT_EQ(nullptr, GetManifestSystemLine());
  EXPECT_EQ(nullptr, GetPermitSystemLine());
  SetModulePath(path.c_str());
}

TEST_F(ExecuteTest, GivesBackWhatItAllocates) {
  const std::wstring manifest = Wide(Write("first.xml", Copy("a.txt") + Copy("missing.txt")));
  const HeapBalance heap;
  {
    CExecuter executer(0, nullptr);
    EXPECT_HRESULT(S_FALSE, executer.Run(manifest.c_str(), nullptr));
    EXPECT_HRESULT(S_FALSE, executer.Run(manifest.c_str(), nullptr));
    EXPECT_LT(2, heap.Outstanding());
  }
  EXPECT_EQ(0, heap.Outstanding());
}

}  // namespace
