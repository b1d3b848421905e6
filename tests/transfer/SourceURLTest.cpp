#include "transfer/SourceURL.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/ModulePath.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/Sign.h"

namespace {

using Texts = std::vector<std::string>;

std::string TextOf(const char* text) {
  return text ? text : "(null)";
}

struct UrlRow {
  const char* name;
  const wchar_t* url;
  const char* corrected;
  const char* folder;
  const char* fileName;
  const char* extension;
  const char* storedExtension;
  bool isLocal;
  const char* location;
};

class SourceURLTest : public testing::Test {
 protected:
  SourceURLTest() : before(GetModulePath()) { SetModulePath("C:\\Apps\\norvik.dll"); }
  ~SourceURLTest() override { SetModulePath(before.c_str()); }

  std::string before;
};

class SourceURLRowTest : public SourceURLTest, public testing::WithParamInterface<UrlRow> {};

TEST_P(SourceURLRowTest, IsTakenApart) {
  HRESULT hr = E_FAIL;
  const CSourceURL url(GetParam().url, SourceRole::Command, &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(GetParam().corrected, TextOf(url.GetURL()));
  EXPECT_EQ(GetParam().folder, TextOf(url.GetFolder()));
  EXPECT_EQ(GetParam().fileName, TextOf(url.GetFileName()));
  EXPECT_EQ(GetParam().extension, TextOf(url.GetExtension()));
  EXPECT_EQ(GetParam().storedExtension, TextOf(url.GetStoredExtension()));
  EXPECT_EQ(GetParam().isLocal, url.IsLocal());
  EXPECT_EQ(GetParam().location, TextOf(url.GetLocation()));
}

INSTANTIATE_TEST_SUITE_P(
    , SourceURLRowTest,
    testing::Values(
        UrlRow{"Web", L"HTTP://Host/Dir/a.exe", "http://Host/Dir/a.exe", "http://Host/Dir", "a.exe", "exe", "exe", false,
               "http://Host/Dir/a.exe"},
        UrlRow{"Secure", L"HTTPS://h/a.b", "https://h/a.b", "https://h", "a.b", "b", "b", false, "https://h/a.b"},
        UrlRow{"BareHttp", L"http:", "http://", "http://", "", "", "(null)", false, "http://"},
        UrlRow{"BareHttps", L"https:", "https://", "https:/", "", "", "(null)", false, "https://"},
        UrlRow{"BareFile", L"file:", "file://", "file://", "", "", "(null)", true, ""},
        UrlRow{"Empty", L"", "file://", "file://", "", "", "(null)", true, ""},
        UrlRow{"FileURL", L"file://C:\\a.txt", "file://C:\\a.txt", "file://C:", "a.txt", "txt", "txt", true, "C:\\a.txt"},
        UrlRow{"Path", L"C:\\Temp\\x.txt", "file://C:\\Temp\\x.txt", "file://C:\\Temp", "x.txt", "txt", "txt", true,
               "C:\\Temp\\x.txt"},
        UrlRow{"BareName", L"setup.exe", "file://C:\\Apps\\setup.exe", "file://C:\\Apps", "setup.exe", "exe", "exe", true,
               "C:\\Apps\\setup.exe"},
        UrlRow{"ThreeSlashes", L"file:///C:/x", "file:///C:/x", "file:///C:", "x", "", "(null)", true, "/C:/x"},
        UrlRow{"OtherScheme", L"ftp://h/a.b", "file://ftp://h/a.b", "file://ftp://h", "a.b", "b", "b", true, "ftp://h/a.b"},
        UrlRow{"DotInTheQuery", L"http://h/d/f.cgi?name=a.b", "http://h/d/f.cgi?name=a.b", "http://h/d", "f.cgi", "cgi", "b",
               false, "http://h/d/f.cgi?name=a.b"},
        UrlRow{"Folder", L"http://h/d/", "http://h/d/", "http://h/d", "", "", "(null)", false, "http://h/d/"},
        UrlRow{"DotInTheFolder", L"http://h/d.e/f", "http://h/d.e/f", "http://h/d.e", "f", "", "(null)", false,
               "http://h/d.e/f"}),
    [](const testing::TestParamInfo<UrlRow>& row) { return std::string(row.param.name); });

void ExpectNothingHeld(const CSourceURL& url) {
  EXPECT_EQ(nullptr, url.GetURL());
  EXPECT_EQ(nullptr, url.GetFolder());
  EXPECT_EQ(nullptr, url.GetFileName());
  EXPECT_EQ(nullptr, url.GetStoredExtension());
  EXPECT_EQ(nullptr, url.GetLocation());
  EXPECT_STREQ("", url.GetExtension());
  EXPECT_FALSE(url.IsLocal());
}

TEST_F(SourceURLTest, ANullTextIsAnInvalidArgument) {
  LogCapture log;
  HRESULT hr = S_OK;
  const CSourceURL url(nullptr, SourceRole::Manifest, &hr);
  EXPECT_HRESULT(E_INVALIDARG, hr);
  EXPECT_EQ(Texts{}, log.Messages());
  EXPECT_EQ(std::vector<HRESULT>{E_INVALIDARG}, log.ErrorTraces());
  EXPECT_EQ("SourceURL", log.Entries().at(0).file);
  ExpectNothingHeld(url);
  EXPECT_EQ(SourceRole::Manifest, url.GetRole());
}

TEST_F(SourceURLTest, WithoutMemoryForTheTextTheURLIsTheMessage) {
  LogCapture log;
  HRESULT hr = S_OK;
  PATCH_IMPORT(noMemory, HeapAlloc, FailCall(1, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  const CSourceURL url(L"http://h/%s%n%d", SourceRole::Command, &hr);
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e http://h/%s%n%d"}, log.Messages());
  EXPECT_EQ("SourceURL", log.Entries().at(0).file);
  ExpectNothingHeld(url);
}

TEST_F(SourceURLTest, ATextThatCannotBeConvertedIsReportedAsNoMemory) {
  LogCapture log;
  HRESULT hr = S_OK;
  PATCH_IMPORT(noConversion, WideCharToMultiByte, FailCall(1, 0, ERROR_NO_UNICODE_TRANSLATION));
  const CSourceURL url(L"http://h/a", SourceRole::Command, &hr);
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e http://h/a"}, log.Messages());
  ExpectNothingHeld(url);
}

TEST_F(SourceURLTest, WithoutMemoryForTheCorrectedTextTheCorrectionFailed) {
  LogCapture log;
  HRESULT hr = S_OK;
  PATCH_IMPORT(noMemory, HeapAlloc, FailCall(2, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  const CSourceURL url(L"HTTP://h/%s", SourceRole::Command, &hr);
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Failed to correct 'HTTP://h/%s'."}, log.Messages());
  EXPECT_EQ("SourceURL", log.Entries().at(0).file);
  ExpectNothingHeld(url);
}

// The text and the corrected text are the first two allocations; folder, file name and extension follow.
TEST_F(SourceURLTest, APieceWithoutMemoryIsNullAndNothingIsLogged) {
  for (int call = 3; call <= 5; ++call) {
    LogCapture log;
    HRESULT hr = E_FAIL;
    PATCH_IMPORT(noMemory, HeapAlloc, FailCall(call, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    const CSourceURL url(L"http://h/a.b", SourceRole::Command, &hr);
    EXPECT_HRESULT(S_OK, hr);
    EXPECT_STREQ("http://h/a.b", url.GetURL());
    EXPECT_EQ(call == 3 ? "(null)" : "http://h", TextOf(url.GetFolder()));
    EXPECT_EQ(call == 4 ? "(null)" : "a.b", TextOf(url.GetFileName()));
    EXPECT_EQ(call == 4 ? "" : "b", TextOf(url.GetExtension()));
    EXPECT_EQ(call == 5 ? "(null)" : "b", TextOf(url.GetStoredExtension()));
    EXPECT_EQ("", log.Text());
  }
}

TEST_F(SourceURLTest, TheResultIsOptional) {
  const CSourceURL url(L"http://h/a", SourceRole::Command, nullptr);
  EXPECT_STREQ("http://h/a", url.GetURL());
  ExpectNothingHeld(CSourceURL(nullptr, SourceRole::Command, nullptr));
}

TEST_F(SourceURLTest, NothingIsLoggedWhenAllIsWell) {
  LogCapture log;
  const CSourceURL url(L"http://h/a", SourceRole::Command, nullptr);
  EXPECT_EQ("", log.Text());
}

TEST_F(SourceURLTest, TheRoleIsKept) {
  EXPECT_EQ(SourceRole::PermittedEntry, CSourceURL(L"http://h", SourceRole::PermittedEntry, nullptr).GetRole());
  EXPECT_EQ(SourceRole::Command, CSourceURL(L"http://h", SourceRole::Command, nullptr).GetRole());
  EXPECT_EQ(0u, static_cast<DWORD>(SourceRole::PermittedEntry));
  EXPECT_EQ(1u, static_cast<DWORD>(SourceRole::Command));
  EXPECT_EQ(2u, static_cast<DWORD>(SourceRole::Manifest));
}

TEST_F(SourceURLTest, AVeryLongURLIsKeptWhole) {
  const std::string path = "http://h/" + std::string(200000, 'd') + "/" + std::string(200000, 'n') + ".exe";
  HRESULT hr = E_FAIL;
  const CSourceURL url(Wide(path).c_str(), SourceRole::Command, &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(path, url.GetURL());
  EXPECT_EQ(std::string(200000, 'n') + ".exe", url.GetFileName());
}

TEST_F(SourceURLTest, TheClassKnowsItsName) {
  const CSourceURL url(L"http://h", SourceRole::Command, nullptr);
  EXPECT_TRUE(url.IsKindOf("CSourceURL"));
  EXPECT_FALSE(url.IsKindOf("csourceurl"));
  EXPECT_FALSE(url.IsKindOf("CSourceURLs"));
  EXPECT_FALSE(url.IsKindOf(""));
  EXPECT_FALSE(url.IsKindOf(nullptr));
}

TEST_F(SourceURLTest, ADumpIsTheURLAlone) {
  LogCapture log;
  CSourceURL(L"HTTP://h/%s", SourceRole::Command, nullptr).Dump();
  EXPECT_EQ("http://h/%s", log.Text());
}

TEST_F(SourceURLTest, ADumpOfAFailedObjectIsEmpty) {
  LogCapture log(false);
  CSourceURL(nullptr, SourceRole::Command, nullptr).Dump();
  EXPECT_EQ("", log.Text());
}

TEST_F(SourceURLTest, TheSecondByteOfACharacterIsNoSeparatorAndNoDot) {
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte == 0x83; });
  // U+0192 is the byte 0x83 in the code page of the test.
  const CSourceURL url(L"http://h/d/\x0192/\x0192.\x0192?.e", SourceRole::Command, nullptr);
  EXPECT_STREQ("http://h/d", url.GetFolder());
  EXPECT_STREQ("\x83/\x83.\x83?.e", url.GetFileName());
  EXPECT_STREQ("e", url.GetExtension());
}

// Only the sign of a comparison counts.
struct CompareRow {
  const char* name;
  const wchar_t* permitted;
  const wchar_t* asked;
  int sign;
};

class SourceURLCompareTest : public SourceURLTest, public testing::WithParamInterface<CompareRow> {};

int Compare(const wchar_t* url, const wchar_t* other) {
  const CSourceURL first(url, SourceRole::PermittedEntry, nullptr);
  const CSourceURL second(other, SourceRole::Command, nullptr);
  return SignOf(first.Compare(&second));
}

TEST_P(SourceURLCompareTest, HasThisSign) {
  EXPECT_EQ(GetParam().sign, Compare(GetParam().permitted, GetParam().asked));
}

INSTANTIATE_TEST_SUITE_P(
    , SourceURLCompareTest,
    testing::Values(
        CompareRow{"SameFolder", L"http://h/d/", L"http://h/d/a.exe", 0},
        CompareRow{"SubFolder", L"http://h/d/", L"http://h/d/e/f/a.exe", 0},
        CompareRow{"NoBoundaryBehindThePrefix", L"http://h/d/", L"http://h/data/a.exe", 0},
        CompareRow{"HostThatBeginsAlike", L"http://h/", L"http://h.evil/a.exe", 0},
        CompareRow{"NoTrailingSeparatorPermitsTheFolderAbove", L"http://h/d", L"http://h/other/a.exe", 0},
        CompareRow{"FolderAbove", L"http://h/d/e/", L"http://h/d/a.exe", -1},
        CompareRow{"LowerFolder", L"http://h/d/", L"http://h/e/a.exe", -1},
        CompareRow{"HigherFolder", L"http://h/e/", L"http://h/d/a.exe", 1},
        CompareRow{"WebCaseCounts", L"http://h/D/", L"http://h/d/a.exe", -1},
        CompareRow{"SchemeCaseDoesNot", L"HTTP://h/d/", L"http://h/d/a.exe", 0},
        CompareRow{"HttpIsNotHttps", L"http://h/d/", L"https://h/d/a.exe", -1},
        CompareRow{"EveryWebServer", L"http:", L"http://h/a.exe", 0},
        CompareRow{"EverySecureServer", L"https:", L"https://h/a.exe", 0},
        CompareRow{"LocalCaseDoesNotCount", L"C:\\DATA\\", L"c:\\data\\x\\a.txt", 0},
        CompareRow{"LocalFileURL", L"FILE://C:\\Data\\", L"c:\\data\\a.txt", 0},
        CompareRow{"EveryLocalFile", L"file:", L"C:\\x\\a.txt", 0},
        CompareRow{"LocalOtherFolder", L"C:\\b\\", L"C:\\a\\x.txt", 1},
        CompareRow{"WebWithLocal", L"http://h/", L"C:\\a\\x.txt", -1},
        CompareRow{"LocalWithWeb", L"C:\\a\\", L"http://h/a/x.txt", 1}, CompareRow{"FailedWithFailed", nullptr, nullptr, 0},
        CompareRow{"FailedWithWeb", nullptr, L"http://h/", -1}, CompareRow{"FailedWithLocal", nullptr, L"C:\\a\\", -1},
        CompareRow{"WebWithFailed", L"http://h/", nullptr, 1}, CompareRow{"LocalWithFailed", L"C:\\a\\", nullptr, 1}),
    [](const testing::TestParamInfo<CompareRow>& row) { return std::string(row.param.name); });

class OtherItem : public CListItem {
 public:
  int Compare(const CListItem*) const override { return 0; }
  bool IsKindOf(const char* name) const override { return std::string(name) == "OtherItem"; }
  void Dump() const override {}
};

TEST_F(SourceURLTest, NothingAndOtherItemsNeverMatch) {
  const OtherItem other;
  const CSourceURL web(L"http://h/d/", SourceRole::Command, nullptr);
  const CSourceURL local(L"C:\\d\\", SourceRole::Command, nullptr);
  const CSourceURL failed(nullptr, SourceRole::Command, nullptr);
  EXPECT_EQ(1, SignOf(web.Compare(nullptr)));
  EXPECT_EQ(1, SignOf(web.Compare(&other)));
  EXPECT_EQ(1, SignOf(local.Compare(nullptr)));
  EXPECT_EQ(1, SignOf(local.Compare(&other)));
  EXPECT_EQ(0, failed.Compare(nullptr));
  EXPECT_EQ(0, failed.Compare(&other));
}

TEST_F(SourceURLTest, AURLMatchesItself) {
  const CSourceURL web(L"http://h/d/a.exe", SourceRole::Command, nullptr);
  const CSourceURL local(L"C:\\d\\a.exe", SourceRole::Command, nullptr);
  EXPECT_EQ(0, web.Compare(&web));
  EXPECT_EQ(0, local.Compare(&local));
}

}  // namespace
