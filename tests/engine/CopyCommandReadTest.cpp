// How a `Copy` element is read.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <optional>
#include <set>

#include "engine/CopyCommand.h"
#include "engine/EngineFixture.h"
#include "engine/HeapFailure.h"
#include "support/AllocationFailure.h"
#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/HeapBalance.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "transfer/Transfer.h"

namespace {

// A command with the code of its construction.
struct ReadCommand {
  explicit ReadCommand(IXMLDOMNode* node) : command(node, &result) {}
  explicit ReadCommand(const std::string& xml) : ReadCommand(ParseElement(xml).Get()) {}

  HRESULT result = E_UNEXPECTED;
  CCopyCommand command;
};

// What a text field holds; "(null)" without one.
TEST(CopyCommandReadTest, NeedsAnElement) {
  const LogCapture log;
  const ReadCommand read(nullptr);
  EXPECT_HRESULT(E_INVALIDARG, read.result);
  EXPECT_HRESULT(E_INVALIDARG, read.command.GetReadingCode());
  EXPECT_EQ(std::vector<std::string>{"ERROR 0x80070057 Missing 'CopyNode' XML node parameter."}, log.Messages());
  EXPECT_EQ("CopyCommand", log.Entries().at(0).file);
}

TEST(CopyCommandReadTest, ACommandWithoutAnElementHasTheDefaults) {
  const CCopyCommand command(nullptr, nullptr);
  EXPECT_EQ(nullptr, command.GetSourceText());
  EXPECT_EQ(nullptr, command.GetFileName());
  EXPECT_EQ(nullptr, command.GetFolder());
  EXPECT_EQ(nullptr, command.GetSource());
  EXPECT_EQ(nullptr, command.GetDestination());
  EXPECT_EQ(IfFileExists::Overwrite, command.GetPolicy());
  EXPECT_FALSE(command.IsForced());
  EXPECT_EQ(128u, command.GetFileAttributes());
  EXPECT_EQ(0u, command.GetTransferFlags());
  EXPECT_EQ(nullptr, command.GetNotFoundText());
  EXPECT_TRUE(command.GetTime().IsEmpty());
}

TEST(CopyCommandReadTest, ThePlaceForTheResultMayBeMissing) {
  const CCopyCommand command(ParseElement(CopyElement(kWebSource, "<Temp/>")).Get(), nullptr);
  EXPECT_HRESULT(S_OK, command.GetReadingCode());
  EXPECT_EQ("setup.exe", TextOf(command.GetFileName()));
}

TEST(CopyCommandReadTest, ASmallElementIsReadWithoutALogLine) {
  const LogCapture log;
  const ReadCommand read(CopyElement(kWebSource, "<Temp/>"));
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ("", log.Text());
  EXPECT_STREQ(kWebSource, read.command.GetSource()->GetURL());
  EXPECT_EQ(SourceRole::Command, read.command.GetSource()->GetRole());
  EXPECT_EQ(nullptr, read.command.GetSourceText());
  EXPECT_EQ(nullptr, read.command.GetFolder());
}

TEST(CopyCommandReadTest, AMissingSourceIsTracedTwice) {
  const LogCapture log;
  const ReadCommand read("<Copy><Destination><Temp/></Destination></Copy>");
  EXPECT_HRESULT(E_POINTER, read.result);
  EXPECT_EQ(nullptr, read.command.GetSource());
  EXPECT_EQ(nullptr, read.command.GetDestination());
  EXPECT_EQ((std::vector<HRESULT>{E_POINTER, E_POINTER}), log.ErrorTraces());
  EXPECT_TRUE(log.Messages().empty());
}

TEST(CopyCommandReadTest, AnUnreadableSourceGivesTheParsersCode) {
  FakeNode source(L"http://server/a.txt");
  FakeNode copy;
  copy.children[L"Source"] = &source;
  source.Answer("get_text", kAnyFailure);
  const LogCapture log;
  const ReadCommand read(&copy);
  EXPECT_HRESULT(kAnyFailure, read.result);
  EXPECT_EQ((std::vector<HRESULT>{kAnyFailure, kAnyFailure, kAnyFailure}), log.ErrorTraces());
}

TEST(CopyCommandReadTest, AnEmptySourceIsALocalNameThatIsNone) {
  const ReadCommand read(CopyElement("", "<Temp/>"));
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_STREQ("file://", read.command.GetSource()->GetURL());
  EXPECT_EQ("", TextOf(read.command.GetFileName()));
}

TEST(CopyCommandReadTest, ASourceThatCannotBeAllocatedIsABadPointer) {
  const auto element = ParseElement(CopyElement(kWebSource, "<Temp/>"));
  const LogCapture log;
  HRESULT hr = S_OK;
  bool hasSource = true;
  HeapFailure failure = HeapFailure::OfSize(sizeof(CSourceURL));
  failure.Run([&] {
    const CCopyCommand command(element.Get(), &hr);
    hasSource = command.GetSource() != nullptr;
  });
  EXPECT_EQ(1, failure.Failures());
  EXPECT_HRESULT(E_POINTER, hr);
  EXPECT_FALSE(hasSource);
  EXPECT_EQ((std::vector<HRESULT>{E_POINTER, E_POINTER}), log.ErrorTraces());
}

TEST(CopyCommandReadTest, ASourceThatCannotBeMadeIsDeleted) {
  const auto element = ParseElement(CopyElement(kWebSource, "<Temp/>"));
  const LogCapture log(false);
  HRESULT hr = S_OK;
  bool hasSource = true;
  HeapFailure failure = HeapFailure::OfSize(sizeof(kWebSource));
  failure.Run([&] {
    const CCopyCommand command(element.Get(), &hr);
    hasSource = command.GetSource() != nullptr;
  });
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_FALSE(hasSource);
  EXPECT_EQ(std::vector<std::string>{std::string("ERROR 0x8007000e ") + kWebSource}, log.Messages());
}

struct DestinationRow {
  const char* name;
  const char* destination;
  FolderKind kind;
  const wchar_t* text;
};

class CopyCommandDestinationTest : public testing::TestWithParam<DestinationRow> {};

TEST_P(CopyCommandDestinationTest, IsTheFirstThatIsAskedFor) {
  const DestinationRow& row = GetParam();
  HRESULT hr = E_UNEXPECTED;
  const CDestinationFolder expected(row.kind, row.text, &hr);
  const ReadCommand read(CopyElement(kWebSource, row.destination));
  EXPECT_HRESULT(hr, read.result);
  ASSERT_NE(nullptr, read.command.GetDestination());
  EXPECT_EQ(row.kind, read.command.GetDestinationKind());
  EXPECT_EQ(row.kind, read.command.GetDestination()->GetKind());
  EXPECT_STREQ(expected.GetPath(), read.command.GetDestination()->GetPath());
}

INSTANTIATE_TEST_SUITE_P(
    , CopyCommandDestinationTest,
    testing::Values(
        DestinationRow{"Path", "<Path>C:\\apps\\data</Path>", FolderKind::Path, L"C:\\apps\\data"},
        DestinationRow{"PathWithoutText", "<Path/>", FolderKind::Path, L""},
        DestinationRow{"Cookie", "<Cookie/>", FolderKind::Cookie, L""},
        DestinationRow{"InternetCache", "<InternetCache/>", FolderKind::InternetCache, L""},
        DestinationRow{"Nothing", "", FolderKind::InternetCache, L""},
        DestinationRow{"AnUnknownElement", "<Desktop/>", FolderKind::InternetCache, L""},
        DestinationRow{"AnElementInOtherCase", "<path>C:\\apps</path>", FolderKind::InternetCache, L""},
        DestinationRow{"ADeeperElement", "<x><Temp/></x>", FolderKind::InternetCache, L""},
        DestinationRow{"Temp", "<Temp>sub</Temp>", FolderKind::Temp, L"sub"},
        DestinationRow{"VantorUser", "<VantorUser>sub</VantorUser>", FolderKind::VantorUser, L"sub"},
        DestinationRow{"Personal", "<Personal>sub</Personal>", FolderKind::Personal, L"sub"},
        DestinationRow{"Documents", "<Documents>sub</Documents>", FolderKind::Documents, L"sub"},
        DestinationRow{"LocalApplicationData", "<LocalApplicationData>sub</LocalApplicationData>",
                       FolderKind::LocalApplicationData, L"sub"},
        DestinationRow{"LocalVantorData", "<LocalVantorData>sub</LocalVantorData>", FolderKind::LocalVantorData, L"sub"},
        DestinationRow{"CommonApplicationData", "<CommonApplicationData>sub</CommonApplicationData>",
                       FolderKind::CommonApplicationData, L"sub"},
        DestinationRow{"CommonVantorData", "<CommonVantorData>sub</CommonVantorData>", FolderKind::CommonVantorData, L"sub"},
        DestinationRow{"ApplicationData", "<ApplicationData>sub</ApplicationData>", FolderKind::ApplicationData, L"sub"},
        DestinationRow{"VantorData", "<VantorData>sub</VantorData>", FolderKind::VantorData, L"sub"},
        DestinationRow{"PathBeforePersonal", "<Personal/><Path>C:\\p</Path>", FolderKind::Path, L"C:\\p"},
        DestinationRow{"PathBeforeTemp", "<Temp/><Path>C:\\p</Path>", FolderKind::Path, L"C:\\p"},
        DestinationRow{"PersonalBeforeDocuments", "<Documents/><Personal/>", FolderKind::Personal, L""},
        DestinationRow{"DocumentsBeforeTemp", "<Temp/><Documents/>", FolderKind::Documents, L""},
        DestinationRow{"TempBeforeVantorUser", "<VantorUser/><Temp/>", FolderKind::Temp, L""},
        DestinationRow{
            "VantorUserBeforeLocalApplicationData", "<LocalApplicationData/><VantorUser/>", FolderKind::VantorUser, L""},
        DestinationRow{"LocalApplicationDataBeforeLocalVantorData", "<LocalVantorData/><LocalApplicationData/>",
                       FolderKind::LocalApplicationData, L""},
        DestinationRow{"LocalVantorDataBeforeCommonApplicationData", "<CommonApplicationData/><LocalVantorData/>",
                       FolderKind::LocalVantorData, L""},
        DestinationRow{"CommonApplicationDataBeforeCommonVantorData", "<CommonVantorData/><CommonApplicationData/>",
                       FolderKind::CommonApplicationData, L""},
        DestinationRow{"CommonVantorDataBeforeApplicationData", "<ApplicationData/><CommonVantorData/>",
                       FolderKind::CommonVantorData, L""},
        DestinationRow{
            "ApplicationDataBeforeVantorData", "<VantorData/><ApplicationData/>", FolderKind::ApplicationData, L""},
        DestinationRow{"VantorDataBeforeCookie", "<Cookie/><VantorData/>", FolderKind::VantorData, L""},
        DestinationRow{"CookieBeforeInternetCache", "<InternetCache/><Cookie/>", FolderKind::Cookie, L""}),
    [](const auto& row) { return row.param.name; });

TEST(CopyCommandReadTest, WithoutADestinationElementItIsTheInternetCache) {
  const ReadCommand read("<Copy><Source>http://server/a.txt</Source></Copy>");
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ(FolderKind::InternetCache, read.command.GetDestinationKind());
}

// As SHGetFolderPathA, which fails for one folder.
auto FailFolder(int folderId, HRESULT code) {
  return [=](auto original, HWND window, int asked, HANDLE token, DWORD flags, LPSTR path) {
    return asked == folderId ? code : original(window, asked, token, flags, path);
  };
}

TEST(CopyCommandReadTest, AFolderThatCannotBeResolvedGivesWayToTheInternetCache) {
  const LogCapture log;
  PATCH_IMPORT(folders, SHGetFolderPathA, FailFolder(CSIDL_PERSONAL, kAnyFailure));
  const ReadCommand read(CopyElement(kWebSource, "<Personal/>"));
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ(FolderKind::InternetCache, read.command.GetDestinationKind());
  EXPECT_EQ(std::vector<HRESULT>{kAnyFailure}, log.ErrorTraces());
}

TEST(CopyCommandReadTest, AFolderThatCannotBeResolvedGivesWayToTheNextOne) {
  PATCH_IMPORT(folders, SHGetFolderPathA, FailFolder(CSIDL_PERSONAL, kAnyFailure));
  const ReadCommand read(CopyElement(kWebSource, "<Personal/><VantorUser/><VantorData/>"));
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ(FolderKind::VantorData, read.command.GetDestinationKind());
}

TEST(CopyCommandReadTest, ATextThatMakesThePathTooLongGivesWayToTheInternetCache) {
  const ReadCommand read(CopyElement(kWebSource, "<Temp>" + std::string(300, 'a') + "</Temp>"));
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ(FolderKind::InternetCache, read.command.GetDestinationKind());
}

TEST(CopyCommandReadTest, ACookieFolderThatCannotBeResolvedGivesWayToTheInternetCache) {
  PATCH_IMPORT(folders, SHGetFolderPathA, FailFolder(CSIDL_COOKIES, kAnyFailure));
  const ReadCommand read(CopyElement(kWebSource, "<Cookie/>"));
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ(FolderKind::InternetCache, read.command.GetDestinationKind());
  EXPECT_EQ(0u, read.command.GetTransferFlags());
}

TEST(CopyCommandReadTest, WithoutTheInternetCacheTheCommandHasNoDestination) {
  const LogCapture log;
  PATCH_IMPORT(folders, SHGetFolderPathA, FailFolder(CSIDL_INTERNET_CACHE, kAnyFailure));
  const ReadCommand read(CopyElement(kWebSource, ""));
  EXPECT_HRESULT(kAnyFailure, read.result);
  EXPECT_EQ(nullptr, read.command.GetDestination());
  EXPECT_EQ(nullptr, read.command.GetFileName());
  EXPECT_EQ((std::vector<HRESULT>{kAnyFailure, kAnyFailure, kAnyFailure}), log.ErrorTraces());
}

TEST(CopyCommandReadTest, TheReadingHasTheCodeOfTheDestination) {
  PATCH_IMPORT(folders, SHGetFolderPathA, FailFolder(CSIDL_PERSONAL, kAnyFailure));
  PATCH_IMPORT(temporary, GetTempPathA, FailWith(DWORD{0}, ERROR_DISK_FULL));
  const ReadCommand read(CopyElement(kWebSource, "<Personal/>", "<NotFoundHTML>x</NotFoundHTML>"));
  EXPECT_HRESULT(S_FALSE, read.result);
  EXPECT_STREQ("C:\\", read.command.GetDestination()->GetPath());
  EXPECT_EQ("x", TextOf(read.command.GetNotFoundText()));
}

// No part of the source is as long as the object is large, in either width.
TEST(CopyCommandReadTest, ADestinationThatCannotBeAllocatedIsABadPointer) {
  for (const char* destination : {"<Temp/>", "<Cookie/>", ""}) {
    const auto element = ParseElement(CopyElement("http://h/a.txt", destination));
    const LogCapture log;
    HRESULT hr = S_OK;
    HeapFailure failure = HeapFailure::OfSize(sizeof(CDestinationFolder));
    failure.Run([&] { const CCopyCommand command(element.Get(), &hr); });
    EXPECT_EQ(1, failure.Failures()) << destination;
    EXPECT_HRESULT(E_POINTER, hr) << destination;
    EXPECT_EQ((std::vector<HRESULT>{E_POINTER, E_POINTER, E_POINTER}), log.ErrorTraces()) << destination;
  }
}

struct FileNameRow {
  const char* name;
  const char* source;
  const char* destination;
  const char* fileName;
  DWORD transferFlags;
};

class CopyCommandFileNameTest : public testing::TestWithParam<FileNameRow> {};

TEST_P(CopyCommandFileNameTest, IsRead) {
  const ReadCommand read(CopyElement(GetParam().source, GetParam().destination));
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ(GetParam().fileName, TextOf(read.command.GetFileName()));
  EXPECT_EQ(GetParam().transferFlags, read.command.GetTransferFlags());
}

INSTANTIATE_TEST_SUITE_P(
    , CopyCommandFileNameTest,
    testing::Values(
        FileNameRow{"FromItsElement", kWebSource, "<FileName>other.exe</FileName><Temp/>", "other.exe", 0},
        FileNameRow{"FromTheSource", kWebSource, "<Temp/>", "setup.exe", 0},
        FileNameRow{"FromTheSourceWhenEmpty", kWebSource, "<FileName/><Temp/>", "setup.exe", 0},
        FileNameRow{"FromTheSourceWhenBlank", kWebSource, "<FileName>  </FileName><Temp/>", "setup.exe", 0},
        FileNameRow{"FromTheSourceWithoutItsQuery", "http://server/d/a.txt?b=c.exe", "<Temp/>", "a.txt", 0},
        FileNameRow{"FromASourceWithoutAName", "http://server/d/", "<Temp/>", "", 0},
        FileNameRow{"ForTheCache", kWebSource, "<FileName>other.exe</FileName>", "other.exe", 0},
        FileNameRow{"ForTheCacheFromTheSource", kWebSource, "<InternetCache/>", "setup.exe", 0},
        FileNameRow{"WithAFolderInIt", kWebSource, "<FileName>..\\x\\other.exe</FileName><Temp/>", "..\\x\\other.exe", 0},
        FileNameRow{"OfACookieFromItsElement", kWebSource, "<Cookie><Extension>txt</Extension></Cookie>", "txt", 16},
        FileNameRow{"OfACookieFromTheSource", kWebSource, "<Cookie/>", "exe", 16},
        FileNameRow{"OfACookieFromTheSourceWhenEmpty", kWebSource, "<Cookie><Extension/></Cookie>", "exe", 16},
        FileNameRow{"OfACookieFromASourceWithoutADot", "http://server/d/setup", "<Cookie/>", "", 16},
        FileNameRow{"OfACookieNotFromFileName", kWebSource, "<FileName>other.txt</FileName><Cookie/>", "exe", 16}),
    [](const auto& row) { return row.param.name; });

TEST(CopyCommandReadTest, ANotFoundTextIsKeptAsItStands) {
  const ReadCommand read(CopyElement(kWebSource, "<Temp/>", "<NotFoundHTML>Not &lt;b&gt;found %s</NotFoundHTML>"));
  EXPECT_EQ("Not <b>found %s", TextOf(read.command.GetNotFoundText()));
}

TEST(CopyCommandReadTest, AnAbsentNotFoundTextIsNull) {
  EXPECT_EQ("(null)", TextOf(ReadCommand(CopyElement(kWebSource, "<Temp/>")).command.GetNotFoundText()));
}

TEST(CopyCommandReadTest, AnEmptyNotFoundTextIsEmpty) {
  EXPECT_EQ("", TextOf(ReadCommand(CopyElement(kWebSource, "<Temp/>", "<NotFoundHTML/>")).command.GetNotFoundText()));
}

TEST(CopyCommandReadTest, UnreadableOptionalElementsCountAsAbsent) {
  FakeNode source(L"http://server/d/setup.exe");
  FakeNode unreadable(L"x");
  unreadable.Answer("get_text", kAnyFailure);
  FakeNode temp(L"");
  FakeNode copy;
  copy.children = {
      {L"Source", &source},
      {L"Destination/Path", &unreadable},
      {L"Destination/Temp", &temp},
      {L"Destination/FileName", &unreadable},
      {L"Destination/Attributes/FileTime", &unreadable},
      {L"NotFoundHTML", &unreadable}};
  const ReadCommand read(&copy);
  EXPECT_HRESULT(S_OK, read.result);
  EXPECT_EQ(FolderKind::Temp, read.command.GetDestinationKind());
  EXPECT_EQ("setup.exe", TextOf(read.command.GetFileName()));
  EXPECT_TRUE(read.command.GetTime().IsEmpty());
  EXPECT_EQ("(null)", TextOf(read.command.GetNotFoundText()));
}

TEST(CopyCommandReadTest, EveryAllocationThatFailsIsAFailureOrACommandWithSourceAndDestination) {
  const auto element = ParseElement(
      CopyElement(kWebSource, "<FileName>a.txt</FileName><Path>C:\\apps</Path>", "<NotFoundHTML>none</NotFoundHTML>"));
  const LogCapture log(false);
  HRESULT hr = E_UNEXPECTED;
  std::optional<CCopyCommand> command;
  std::set<HRESULT> results;
  std::set<std::string> names, notFoundTexts;
  const int failures = ForEachFailedAllocation([&] { command.emplace(element.Get(), &hr); },
                                               [&] {
    results.insert(hr);
    EXPECT_HRESULT(hr, command->GetReadingCode());
    EXPECT_EQ(hr == S_OK, command->GetSource() && command->GetDestination());
    if (hr == S_OK) {
      EXPECT_STREQ(kWebSource, command->GetSource()->GetURL());
      names.insert(TextOf(command->GetFileName()));
      notFoundTexts.insert(TextOf(command->GetNotFoundText()));
    }
  });
  EXPECT_LT(8, failures);
  EXPECT_EQ((std::set<HRESULT>{S_OK, E_OUTOFMEMORY, E_POINTER}), results);
  // A name that cannot be kept is that of the source, whose extension is checked then.
  EXPECT_EQ((std::set<std::string>{"a.txt", "setup.exe"}), names);
  EXPECT_EQ((std::set<std::string>{"none", "(null)"}), notFoundTexts);
  EXPECT_HRESULT(S_OK, hr);
}

TEST(CopyCommandReadTest, GivesBackWhatItAllocates) {
  const auto element = ParseElement(CopyElement(kWebSource, "<Path>C:\\apps</Path>", "<NotFoundHTML>none</NotFoundHTML>"));
  const HeapBalance heap;
  {
    const CCopyCommand command(element.Get(), nullptr);
    EXPECT_LT(5, heap.Outstanding());
  }
  EXPECT_EQ(0, heap.Outstanding());
}

}  // namespace
