#include "permissions/SourcePermission.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "permissions/SourceDocument.h"
#include "support/AllocationFailure.h"
#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "support/Stopwatch.h"

namespace {

using Lines = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

bool Permits(const CSourcePermission& permission, const wchar_t* url) {
  const CSourceURL candidate(url, SourceRole::Command, nullptr);
  return permission.IsURLPermitted(&candidate) == S_OK;
}

// A failed construction leaves nothing that could permit anything.
void ExpectNoLists(const CSourcePermission& permission) {
  const CSourceURL candidate(L"http://host/a.exe", SourceRole::Command, nullptr);
  EXPECT_HRESULT(E_UNEXPECTED, permission.IsURLPermitted(&candidate));
  EXPECT_HRESULT(E_UNEXPECTED, permission.IsExtensionPermitted("exe"));
}

TEST(SourcePermissionTest, ReadsBothLists) {
  HRESULT hr = E_UNEXPECTED;
  LogCapture log;
  const CSourcePermission permission(SourceDocument({"http://one/", "http://two/"}, {"exe", "xml"}).Get(), &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_TRUE(Permits(permission, L"http://one/a.exe"));
  EXPECT_TRUE(Permits(permission, L"http://two/a.exe"));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("exe"));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("xml"));
  EXPECT_EQ("", log.Text());
}

TEST(SourcePermissionTest, NobodyHasToAskForTheCode) {
  const CSourcePermission permission(SourceDocument({"http://one/"}, {"exe"}).Get(), nullptr);
  EXPECT_TRUE(Permits(permission, L"http://one/a.exe"));
}

TEST(SourcePermissionTest, AMissingDocumentIsAnInvalidArgument) {
  HRESULT hr = S_OK;
  LogCapture log;
  const CSourcePermission permission(nullptr, &hr);
  EXPECT_HRESULT(E_INVALIDARG, hr);
  EXPECT_EQ(Lines{"ERROR 0x80070057 Missing XML document instance parameter."}, log.Messages());
  EXPECT_EQ(1u, log.Entries().size());
  EXPECT_EQ("SourcePermission", log.Entries()[0].file);
  ExpectNoLists(permission);
}

// One trace by the class that asked, then its message.
void ExpectNoSource(IXMLDOMDocument2* document, HRESULT code, std::size_t tracesBelow) {
  HRESULT hr = S_OK;
  LogCapture log;
  const CSourcePermission permission(document, &hr);
  EXPECT_HRESULT(code, hr);
  const auto entries = log.Entries();
  ASSERT_EQ(tracesBelow + 2, entries.size()) << log.Text();
  const LogEntry& trace = entries[tracesBelow];
  EXPECT_EQ("SourcePermission", trace.file);
  EXPECT_EQ("", trace.message);
  EXPECT_HRESULT(code, trace.code);
  const LogEntry& message = entries[tracesBelow + 1];
  EXPECT_EQ("ERROR", message.level);
  EXPECT_EQ("SourcePermission", message.file);
  EXPECT_EQ("An error occured while parsing source permissions.", message.message);
  EXPECT_HRESULT(code, message.code);
  ExpectNoLists(permission);
}

TEST(SourcePermissionTest, ADocumentWithoutSourceFails) {
  ExpectNoSource(ParseXml("<VantorPermissions><Destination/></VantorPermissions>").Get(), E_POINTER, 0);
}

TEST(SourcePermissionTest, NamesRespectCase) {
  ExpectNoSource(
      ParseXml("<VantorPermissions><source><URL>http://host/</URL></source></VantorPermissions>").Get(), E_POINTER, 0);
}

TEST(SourcePermissionTest, TheSourceIsAChildOfTheRoot) {
  ExpectNoSource(ParseXml("<A><B><Source><URL>http://host/</URL></Source></B></A>").Get(), E_POINTER, 0);
}

TEST(SourcePermissionTest, AnEmptyDocumentFails) {
  ExpectNoSource(NewXmlDocument().Get(), E_POINTER, 1);
}

TEST(SourcePermissionTest, TheLookupsCodeIsPassedOn) {
  FakeDocument document;
  document.Answer("get_documentElement", E_ABORT);
  ExpectNoSource(&document, E_ABORT, 1);
}

TEST(SourcePermissionTest, TheFirstSourceCounts) {
  const auto document = ParseXml(
      "<A><Source><URL>http://one/</URL><Extension>exe</Extension></Source>"
      "<Source><URL>http://two/</URL><Extension>dll</Extension></Source></A>");
  HRESULT hr = E_UNEXPECTED;
  const CSourcePermission permission(document.Get(), &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_TRUE(Permits(permission, L"http://one/a"));
  EXPECT_FALSE(Permits(permission, L"http://two/a"));
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsExtensionPermitted("dll"));
}

TEST(SourcePermissionTest, EntriesAreChildrenOfTheSource) {
  const auto document =
      ParseXml("<A><URL>http://outside/</URL><Source><B><URL>http://below/</URL></B><URL>http://one/</URL></Source></A>");
  const CSourcePermission permission(document.Get(), nullptr);
  EXPECT_TRUE(Permits(permission, L"http://one/a"));
  EXPECT_FALSE(Permits(permission, L"http://outside/a"));
  EXPECT_FALSE(Permits(permission, L"http://below/a"));
}

TEST(SourcePermissionTest, EntriesOfBothNamesMayBeMixed) {
  const auto document = ParseXml(
      "<A><Source><Extension>exe</Extension><URL>http://one/</URL><Extension>dll</Extension><URL>http://two/</URL></"
      "Source></A>");
  const CSourcePermission permission(document.Get(), nullptr);
  EXPECT_TRUE(Permits(permission, L"http://two/a"));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("dll"));
}

TEST(SourcePermissionTest, EmptyEntriesAreRead) {
  LogCapture log;
  const CSourcePermission permission(SourceDocument({"", "http://one/"}, {"", "exe"}).Get(), nullptr);
  EXPECT_TRUE(Permits(permission, L"C:\\Apps\\a.exe"));
  EXPECT_TRUE(Permits(permission, L"http://one/a.exe"));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted(""));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("exe"));
  EXPECT_EQ("", log.Text());
}

// A source with three URLs and two extensions, made of stand-ins.
class SourcePermissionListTest : public testing::Test {
 protected:
  SourcePermissionListTest() {
    urls.items = {&urlNodes[0], &urlNodes[1], &urlNodes[2]};
    extensions.items = {&extensionNodes[0], &extensionNodes[1]};
    source.lists = {{L"URL", &urls}, {L"Extension", &extensions}};
    root.children[L"Source"] = &source;
    document.documentElement = &root;
  }

  std::unique_ptr<CSourcePermission> Read() {
    HRESULT hr = E_UNEXPECTED;
    auto permission = std::make_unique<CSourcePermission>(&document, &hr);
    EXPECT_HRESULT(S_OK, hr);
    return permission;
  }

  FakeNode urlNodes[3] = {FakeNode(L"http://one/"), FakeNode(L"http://two/"), FakeNode(L"http://three/")};
  FakeNode extensionNodes[2] = {FakeNode(L"exe"), FakeNode(L"xml")};
  FakeNodeList urls;
  FakeNodeList extensions;
  FakeNode source;
  FakeNode root;
  FakeDocument document;
};

TEST_F(SourcePermissionListTest, ABadURLEndsTheURLsOnly) {
  urlNodes[1].Answer("get_text", E_ABORT);
  LogCapture log;
  const auto permission = Read();
  EXPECT_EQ(Codes{E_ABORT}, log.ErrorTraces());
  EXPECT_EQ("SourcePermission", log.Entries().at(0).file);
  EXPECT_EQ(Lines(), log.Messages());
  EXPECT_TRUE(Permits(*permission, L"http://one/a"));
  EXPECT_FALSE(Permits(*permission, L"http://two/a"));
  EXPECT_FALSE(Permits(*permission, L"http://three/a"));
  EXPECT_HRESULT(S_OK, permission->IsExtensionPermitted("xml"));
}

// The sixth allocation is the second URL, the seventeenth the text of the first extension.
TEST_F(SourcePermissionListTest, AnEntryThatCannotBeMadeEndsItsListOnly) {
  alignas(CSourcePermission) unsigned char memory[sizeof(CSourcePermission)];
  HRESULT hr = E_UNEXPECTED;
  const auto readWithout = [&](int allocation) {
    PATCH_IMPORT(noMemory, HeapAlloc, FailCall(allocation, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    return new (memory) CSourcePermission(&document, &hr);
  };
  const CSourcePermission* permission = readWithout(6);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_TRUE(Permits(*permission, L"http://one/a"));
  EXPECT_FALSE(Permits(*permission, L"http://three/a"));
  EXPECT_HRESULT(S_OK, permission->IsExtensionPermitted("xml"));
  permission->~CSourcePermission();

  permission = readWithout(17);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_TRUE(Permits(*permission, L"http://three/a"));
  EXPECT_HRESULT(E_UNEXPECTED, permission->IsExtensionPermitted("xml"));
  permission->~CSourcePermission();
}

TEST_F(SourcePermissionListTest, ABadExtensionEndsTheExtensionsOnly) {
  extensionNodes[1].text = nullptr;
  LogCapture log;
  const auto permission = Read();
  EXPECT_EQ(Codes{E_FAIL}, log.ErrorTraces());
  EXPECT_TRUE(Permits(*permission, L"http://three/a"));
  EXPECT_HRESULT(S_OK, permission->IsExtensionPermitted("exe"));
  EXPECT_HRESULT(E_ACCESSDENIED, permission->IsExtensionPermitted("xml"));
}

TEST_F(SourcePermissionListTest, ABadFirstURLLeavesNoList) {
  urlNodes[0].Answer("get_text", E_ABORT);
  const auto permission = Read();
  LogCapture log;
  EXPECT_FALSE(Permits(*permission, L"http://two/a"));
  EXPECT_EQ(Lines{"ERROR 0x8000ffff Missing permitted URL list."}, log.Messages());
  EXPECT_HRESULT(S_OK, permission->IsExtensionPermitted("exe"));
}

TEST_F(SourcePermissionListTest, AListThatFailsIsEmpty) {
  urls.Answer("get_length", E_ABORT);
  extensions.Answer("reset", E_ABORT);
  LogCapture log;
  const auto permission = Read();
  EXPECT_EQ((Codes{E_ABORT, E_ABORT}), log.ErrorTraces());
  ExpectNoLists(*permission);
}

TEST_F(SourcePermissionListTest, ASelectionThatFailsIsAMessageAndATrace) {
  source.Answer("selectNodes", E_ABORT);
  LogCapture log;
  const auto permission = Read();
  EXPECT_EQ((Lines{"ERROR 0x80004004 URL", "ERROR 0x80004004 Extension"}), log.Messages());
  EXPECT_EQ((Codes{E_ABORT, E_ABORT}), log.ErrorTraces());
  ExpectNoLists(*permission);
}

// Whatever allocation is refused: the construction succeeds, and what could not be read is not permitted. An entry that
// could not be made is a bad pointer; one whose text could not be copied tells of the memory.
TEST_F(SourcePermissionListTest, WithoutMemoryLessIsPermitted) {
  int badPointers = 0;
  int outOfMemory = 0;
  alignas(CSourcePermission) unsigned char memory[sizeof(CSourcePermission)];
  CSourcePermission* permission = nullptr;
  HRESULT hr = S_OK;
  auto log = std::make_unique<LogCapture>();
  const int allocations = ForEachFailedAllocation(
      [&] {
    if (permission)
      permission->~CSourcePermission();
    permission = new (memory) CSourcePermission(&document, &hr);
      },
      [&] {
    EXPECT_HRESULT(S_OK, hr);
    const Codes traces = log->ErrorTraces();
    badPointers += traces == Codes{E_POINTER};
    outOfMemory += !traces.empty() && traces.back() == E_OUTOFMEMORY;
    EXPECT_FALSE(Permits(*permission, L"http://elsewhere/a"));
    const HRESULT answer = permission->IsExtensionPermitted("dll");
    EXPECT_TRUE(answer == E_ACCESSDENIED || answer == E_UNEXPECTED) << answer;  // the latter without a list
    log.reset();
    log = std::make_unique<LogCapture>();
  });
  permission->~CSourcePermission();
  // Three URLs of five allocations each and two extensions of two; each begins with the entry, and the pieces into which a
  // URL is split may be missing.
  EXPECT_EQ(5, badPointers);
  EXPECT_EQ(8, outOfMemory);
  EXPECT_EQ(19, allocations);
}

TEST_F(SourcePermissionListTest, ReadingWithoutMemoryForTheSourcesNameFails) {
  LogCapture log;
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noMemory, SysAllocString, [](auto, const OLECHAR*) -> BSTR { return nullptr; });
    const CSourcePermission permission(&document, &hr);
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Lines{"ERROR 0x8007000e An error occured while parsing source permissions."}, log.Messages());
  EXPECT_EQ((Codes{E_OUTOFMEMORY, E_OUTOFMEMORY}), log.ErrorTraces());
}

TEST_F(SourcePermissionListTest, ReadingWithoutMemoryForAnEntrysNameLeavesItsListEmpty) {
  std::unique_ptr<CSourcePermission> permission;
  {
    PATCH_IMPORT(noMemory, SysAllocString, FailCall(2, static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    permission = Read();
  }
  EXPECT_FALSE(Permits(*permission, L"http://one/a"));
  EXPECT_HRESULT(S_OK, permission->IsExtensionPermitted("exe"));
}

// A source of many URLs, of which only the last differs from the others.
class ManyURLs {
 public:
  explicit ManyURLs(std::size_t count) {
    urls.items.assign(count, &url);
    urls.items.back() = &lastURL;
    extensions.items = {&extension};
    source.lists = {{L"URL", &urls}, {L"Extension", &extensions}};
    root.children[L"Source"] = &source;
    document.documentElement = &root;
  }

  // Reads them, asks about the last one, and forgets them.
  bool ReadAndAsk() {
    HRESULT hr = E_UNEXPECTED;
    const CSourcePermission permission(&document, &hr);
    return hr == S_OK && Permits(permission, L"http://last/a");
  }

 private:
  FakeNode url{L"http://host/apps/"};
  FakeNode lastURL{L"http://last/"};
  FakeNode extension{L"exe"};
  FakeNodeList urls;
  FakeNodeList extensions;
  FakeNode source;
  FakeNode root;
  FakeDocument document;
};

DWORD WINAPI ReadManyURLs(void* answer) {
  ManyURLs many(100000);
  *static_cast<bool*>(answer) = many.ReadAndAsk();
  return 0;
}

// A call for each of a hundred thousand entries would not fit on this stack, nor on the one megabyte that some systems give.
TEST(SourcePermissionSizeTest, ManyEntriesNeedNoStack) {
  constexpr SIZE_T kStackBytes = 128 * 1024;
  bool answer = false;
  const HANDLE thread =
      CreateThread(nullptr, kStackBytes, ReadManyURLs, &answer, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  ASSERT_TRUE(thread);
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, 60000));
  CloseHandle(thread);
  EXPECT_TRUE(answer);
}

double MillisecondsFor(std::size_t count) {
  ManyURLs many(count);
  double best = 1e9;
  for (int i = 0; i < 3; ++i)
    best = std::min(best, 1000 * SecondsOf([&] { EXPECT_TRUE(many.ReadAndAsk()); }));
  return best;
}

// Ten times the entries cost about ten times as much, and far from a hundred times.
TEST(SourcePermissionSizeTest, ManyEntriesCostNoMoreEach) {
  const double few = MillisecondsFor(10000);
  const double many = MillisecondsFor(100000);
  EXPECT_LT(many, 40 * few);
}

}  // namespace
