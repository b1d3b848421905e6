#include "permissions/DestinationPermission.h"

#include <gtest/gtest.h>

#include "log/LogFile.h"
#include "permissions/DestinationDocument.h"
#include "support/AllocationFailure.h"
#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/LogCapture.h"

namespace {

using Lines = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

constexpr char kTitle[] = "\tPermitted Destinations:\r\n";

// The permitted folders as the log shows them after reading, and what came before in the log.
struct Reading {
  HRESULT code = E_UNEXPECTED;
  std::string before;
  std::string list;
  std::vector<LogEntry> entries;
};

Reading Read(IXMLDOMDocument2* document) {
  Reading reading;
  LogCapture log(true);
  const CDestinationPermission permission(document, &reading.code);
  const std::string text = log.Text();
  const std::size_t title = text.find(kTitle);
  if (title == std::string::npos) {
    ADD_FAILURE() << "the list is missing: " << text;
    return reading;
  }
  reading.before = text.substr(0, title);
  reading.list = text.substr(title + sizeof(kTitle) - 1);
  reading.entries = log.Entries();
  return reading;
}

std::string Listed(const Lines& folders) {
  std::string list;
  for (const std::string& folder : folders)
    list += "\t\t" + folder + "\r\n";
  return list;
}

TEST(DestinationPermissionTest, TheListIsOrderedByKindAndEndsWithPaths) {
  const auto document = DestinationDocument(
      {{"Path", "C:\\Data"},
       {"CommonVantorData", "I"},
       {"CommonApplicationData", "ignored"},
       {"VantorData", "II"},
       {"ApplicationData", "ignored"},
       {"LocalVantorData", "III"},
       {"LocalApplicationData", "ignored"},
       {"Temp", "IV"},
       {"InternetCache", ""},
       {"Cookie", ""},
       {"VantorUser", "V"},
       {"Documents", "VI"},
       {"Personal", "VII"}});
  const std::string local = SpecialFolderPath(CSIDL_LOCAL_APPDATA);
  const std::string roaming = SpecialFolderPath(CSIDL_APPDATA);
  const std::string common = SpecialFolderPath(CSIDL_COMMON_APPDATA);
  const std::string personal = SpecialFolderPath(CSIDL_PERSONAL);
  const Reading reading = Read(document.Get());
  EXPECT_HRESULT(S_OK, reading.code);
  EXPECT_EQ("", reading.before);
  EXPECT_EQ(
      Listed({personal + "\\VII", SpecialFolderPath(CSIDL_COMMON_DOCUMENTS) + "\\VI", personal + "\\Vantor\\V",
              SpecialFolderPath(CSIDL_COOKIES), SpecialFolderPath(CSIDL_INTERNET_CACHE), TemporaryPath() + "\\IV", local,
              local + "\\Vantor\\III", roaming, roaming + "\\Vantor\\II", common, common + "\\Vantor\\I", "C:\\Data"}),
      reading.list);
}

TEST(DestinationPermissionTest, EntriesOfOneNameKeepTheirOrder) {
  const auto document = DestinationDocument(
      {{"Path", "C:\\B"}, {"Temp", "Two"}, {"Path", "C:\\A"}, {"Temp", "One"}, {"Path", "C:\\C"}, {"Temp", ""}});
  const std::string temp = TemporaryPath();
  EXPECT_EQ(Listed({temp + "\\Two", temp + "\\One", temp, "C:\\B", "C:\\A", "C:\\C"}), Read(document.Get()).list);
}

TEST(DestinationPermissionTest, PathsAloneAreTheWholeList) {
  const auto document = DestinationDocument({{"Path", "C:\\Data\\"}, {"Path", "D:\\"}});
  const Reading reading = Read(document.Get());
  EXPECT_HRESULT(S_OK, reading.code);
  EXPECT_EQ("", reading.before);
  EXPECT_EQ(Listed({"C:\\Data", "D:\\"}), reading.list);
}

TEST(DestinationPermissionTest, NoEntriesAreAnEmptyList) {
  const Reading reading = Read(DestinationDocument({}).Get());
  EXPECT_HRESULT(S_OK, reading.code);
  ASSERT_EQ(1u, reading.entries.size());
  EXPECT_EQ("Missing List.", reading.entries[0].message);
  EXPECT_EQ("DestinationPermission", reading.entries[0].file);
  EXPECT_HRESULT(E_INVALIDARG, reading.entries[0].code);
}

TEST(DestinationPermissionTest, UnknownNamesAreNotRead) {
  const auto document = DestinationDocument({{"Windows", ""}, {"temp", "A"}, {"Path", "C:\\Data"}});
  EXPECT_EQ(Listed({"C:\\Data"}), Read(document.Get()).list);
}

TEST(DestinationPermissionTest, ReadingWritesNothingWithoutDebugLogging) {
  LogCapture log(false);
  HRESULT hr = E_UNEXPECTED;
  const CDestinationPermission permission(DestinationDocument({{"Temp", ""}}).Get(), &hr);
  const CDestinationPermission empty(DestinationDocument({}).Get(), nullptr);
  const CDestinationPermission missing(nullptr, nullptr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ("", log.Text());
}

// A failed construction shows its empty list too; the entries are those of the failure, then the missing list.
void ExpectFailedReading(IXMLDOMDocument2* document, HRESULT code, std::size_t traces) {
  const Reading reading = Read(document);
  EXPECT_HRESULT(code, reading.code);
  ASSERT_EQ(traces + 1, reading.entries.size());
  const LogEntry& trace = reading.entries[traces - 1];
  EXPECT_EQ("DestinationPermission", trace.file);
  EXPECT_HRESULT(code, trace.code);
  EXPECT_EQ("Permitted Destinations:", trace.message) << "a trace has no message of its own; the list's title follows";
  EXPECT_EQ("Missing List.", reading.entries[traces].message);
  EXPECT_HRESULT(E_INVALIDARG, reading.entries[traces].code);
}

TEST(DestinationPermissionTest, AMissingDocumentIsTraced) {
  ExpectFailedReading(nullptr, E_INVALIDARG, 1);
}

TEST(DestinationPermissionTest, ADocumentWithoutDestinationIsTraced) {
  ExpectFailedReading(ParseXml("<VantorPermissions><Source/></VantorPermissions>").Get(), E_POINTER, 1);
}

TEST(DestinationPermissionTest, AnEmptyDocumentIsTraced) {
  ExpectFailedReading(NewXmlDocument().Get(), E_POINTER, 2);
}

TEST(DestinationPermissionTest, TheLookupsCodeIsPassedOn) {
  FakeDocument document;
  document.Answer("get_documentElement", E_ABORT);
  ExpectFailedReading(&document, E_ABORT, 2);
}

TEST(DestinationPermissionTest, NobodyHasToAskForTheCode) {
  const CDestinationPermission permission(DestinationDocument({{"Path", "C:\\Data"}}).Get(), nullptr);
  const CDestinationFolder candidate("C:\\Data", nullptr);
  EXPECT_HRESULT(S_OK, permission.IsFolderPermitted(&candidate));
}

// The path is longer than the system takes; the entries of its name behind it are lost with it.
TEST(DestinationPermissionTest, AnEntryThatCannotBeResolvedEndsItsNameOnly) {
  const auto document = DestinationDocument(
      {{"Temp", "One"},
       {"Temp", std::string(260, 'x')},
       {"Temp", "Three"},
       {"VantorData", std::string(260, 'x')},
       {"Path", "C:\\Data"}});
  const Reading reading = Read(document.Get());
  EXPECT_HRESULT(S_OK, reading.code);
  EXPECT_EQ(Listed({TemporaryPath() + "\\One", "C:\\Data"}), reading.list);
  ASSERT_EQ(2u, reading.entries.size());
  for (const LogEntry& entry : reading.entries) {
    EXPECT_EQ("DestinationPermission", entry.file);
    EXPECT_HRESULT(E_OUTOFMEMORY, entry.code);
  }
}

TEST(DestinationPermissionTest, ASpecialFolderThatIsMissingEndsItsNameOnly) {
  PATCH_IMPORT(noPersonal, SHGetFolderPathA, [](auto original, HWND window, int id, HANDLE token, DWORD flags, char* path) {
    return id == CSIDL_PERSONAL ? E_ABORT : original(window, id, token, flags, path);
  });
  const auto document = DestinationDocument({{"Personal", "One"}, {"VantorUser", ""}, {"Documents", ""}});
  const Reading reading = Read(document.Get());
  EXPECT_HRESULT(S_OK, reading.code);
  EXPECT_EQ(Listed({SpecialFolderPath(CSIDL_COMMON_DOCUMENTS)}), reading.list);
  ASSERT_EQ(2u, reading.entries.size());
  EXPECT_HRESULT(E_ABORT, reading.entries[0].code);
  EXPECT_HRESULT(E_ABORT, reading.entries[1].code);
}

TEST(DestinationPermissionTest, AnEntryWithAStandInFolderIsKept) {
  LogCapture log(false);
  HRESULT hr = E_UNEXPECTED;
  std::unique_ptr<CDestinationPermission> permission;
  const auto document = DestinationDocument({{"Personal", "Sub"}});
  {
    PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return E_ABORT; });
    PATCH_IMPORT(noTemp, GetTempPathA, FailWith(DWORD{0}, ERROR_ACCESS_DENIED));
    permission = std::make_unique<CDestinationPermission>(document.Get(), &hr);
  }
  EXPECT_HRESULT(S_OK, hr);
  const CDestinationFolder candidate("C:\\Sub\\Data", nullptr);
  EXPECT_HRESULT(S_OK, permission->IsFolderPermitted(&candidate));
}

// Two temporary folders and a path, made of stand-ins.
class DestinationListTest : public testing::Test {
 protected:
  DestinationListTest() {
    temps.items = {&tempNodes[0], &tempNodes[1]};
    paths.items = {&pathNode};
    destination.lists = {{L"Temp", &temps}, {L"Path", &paths}};
    for (const wchar_t* name :
         {L"Personal", L"Documents", L"VantorUser", L"Cookie", L"InternetCache", L"LocalApplicationData", L"LocalVantorData",
          L"ApplicationData", L"VantorData", L"CommonApplicationData", L"CommonVantorData"})
      destination.lists[name] = &none;
    root.children[L"Destination"] = &destination;
    document.documentElement = &root;
  }

  FakeNode tempNodes[2] = {FakeNode(L"One"), FakeNode(L"Two")};
  FakeNode pathNode{L"C:\\Data"};
  FakeNodeList none;
  FakeNodeList temps;
  FakeNodeList paths;
  FakeNode destination;
  FakeNode root;
  FakeDocument document;
};

TEST_F(DestinationListTest, EntriesComeFromTheParsersLists) {
  EXPECT_EQ(Listed({TemporaryPath() + "\\One", TemporaryPath() + "\\Two", "C:\\Data"}), Read(&document).list);
}

TEST_F(DestinationListTest, AnEntryThatCannotBeReadEndsItsNameOnly) {
  tempNodes[1].Answer("get_text", E_ABORT);
  const Reading reading = Read(&document);
  EXPECT_HRESULT(S_OK, reading.code);
  EXPECT_EQ(Listed({TemporaryPath() + "\\One", "C:\\Data"}), reading.list);
  ASSERT_EQ(1u, reading.entries.size());
  EXPECT_EQ("DestinationPermission", reading.entries[0].file);
  EXPECT_HRESULT(E_ABORT, reading.entries[0].code);
}

TEST_F(DestinationListTest, AListThatCannotBeReadIsLeftOut) {
  paths.Answer("get_length", E_ABORT);
  const Reading reading = Read(&document);
  EXPECT_HRESULT(S_OK, reading.code);
  EXPECT_EQ(Listed({TemporaryPath() + "\\One", TemporaryPath() + "\\Two"}), reading.list);
}

TEST_F(DestinationListTest, ANameThatCannotBeSelectedIsLeftOut) {
  destination.lists.erase(L"Temp");
  const Reading reading = Read(&document);
  EXPECT_HRESULT(S_OK, reading.code);
  EXPECT_EQ(Listed({"C:\\Data"}), reading.list);
  ASSERT_EQ(2u, reading.entries.size());
  EXPECT_HRESULT(E_POINTER, reading.entries[1].code);
}

TEST_F(DestinationListTest, WithoutMemoryForTheNameOfTheDestinationItFails) {
  PATCH_IMPORT(noMemory, SysAllocString, [](auto, const OLECHAR*) -> BSTR { return nullptr; });
  ExpectFailedReading(&document, E_OUTOFMEMORY, 2);
}

// Whatever allocation is refused: the construction succeeds, and the list holds what could be read. An entry that could not
// be made is a bad pointer.
TEST_F(DestinationListTest, WithoutMemoryLessIsPermitted) {
  const CDestinationFolder elsewhere("D:\\Elsewhere", nullptr);
  alignas(CDestinationPermission) unsigned char memory[sizeof(CDestinationPermission)];
  CDestinationPermission* permission = nullptr;
  HRESULT hr = S_OK;
  int badPointers = 0;
  int outOfMemory = 0;
  auto log = std::make_unique<LogCapture>();
  const int allocations = ForEachFailedAllocation(
      [&] {
    if (permission)
      permission->~CDestinationPermission();
    permission = new (memory) CDestinationPermission(&document, &hr);
      },
      [&] {
    EXPECT_HRESULT(S_OK, hr);
    const std::string text = log->Text();
    const auto entries = LogCapture::Parse(text.substr(0, text.find(kTitle)));
    ASSERT_FALSE(entries.empty());
    badPointers += entries.size() == 1 && entries[0].code == E_POINTER;
    outOfMemory += entries.back().code == E_OUTOFMEMORY;
    EXPECT_HRESULT(E_ACCESSDENIED, permission->IsFolderPermitted(&elsewhere));
    log.reset();
    log = std::make_unique<LogCapture>();
  });
  permission->~CDestinationPermission();
  EXPECT_EQ(3, badPointers);
  EXPECT_EQ(6, outOfMemory);
  EXPECT_EQ(9, allocations);
}

}  // namespace
