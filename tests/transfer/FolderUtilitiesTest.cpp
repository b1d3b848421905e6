#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstring>
#include <string>
#include <vector>

#include "common/ModulePath.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "transfer/FileUtilities.h"

namespace {

using Texts = std::vector<std::string>;

constexpr HRESULT kShellFailure = static_cast<HRESULT>(0x80070003);

std::string Special(int folderId) {
  char path[MAX_PATH] = "";
  EXPECT_HRESULT(S_OK, SHGetFolderPathA(nullptr, folderId, nullptr, SHGFP_TYPE_CURRENT, path));
  return path;
}

// The temporary folder without its trailing backslash.
std::string Temporary() {
  char path[MAX_PATH] = "";
  GetTempPathA(MAX_PATH, path);
  return std::string(path, std::strlen(path) - 1);
}

std::string Resolved(FolderKind kind, const char* text, HRESULT expected = S_OK) {
  OwnedText path = CopyText("old");
  EXPECT_HRESULT(expected, ResolveFolder(kind, text, path));
  return path ? path.get() : "(null)";
}

struct KindRow {
  const char* name;
  FolderKind kind;
  int number;
  int folderId;
  const char* withoutText;  // behind the special folder
  const char* withText;     // for the text "Sub\Dir"
};

class SpecialKindTest : public testing::TestWithParam<KindRow> {};

TEST_P(SpecialKindTest, LiesInItsSpecialFolder) {
  const KindRow& row = GetParam();
  const std::string base = Special(row.folderId);
  LogCapture log;
  EXPECT_EQ(row.number, static_cast<int>(row.kind));
  EXPECT_EQ(base + row.withoutText, Resolved(row.kind, ""));
  EXPECT_EQ(base + row.withoutText, Resolved(row.kind, nullptr));
  EXPECT_EQ(base + row.withText, Resolved(row.kind, "Sub\\Dir"));
  EXPECT_EQ(base + row.withText, Resolved(row.kind, "Sub\\Dir\\"));
  EXPECT_EQ("", log.Text());
}

TEST_P(SpecialKindTest, AsksTheShellForTheCurrentFolderAndCreatesNothing) {
  PATCH_IMPORT(shell, SHGetFolderPathA, [](auto, HWND window, int folderId, HANDLE token, DWORD flags, char* path) {
    EXPECT_EQ(nullptr, window);
    EXPECT_EQ(GetParam().folderId, folderId);
    EXPECT_EQ(nullptr, token);
    EXPECT_EQ(0u, flags);
    std::strcpy(path, "X:\\Base\\");
    return S_OK;
  });
  EXPECT_EQ(std::string("X:\\Base") + GetParam().withoutText, Resolved(GetParam().kind, ""));
}

INSTANTIATE_TEST_SUITE_P(
    , SpecialKindTest,
    testing::Values(KindRow{"Cookie", FolderKind::Cookie, 2, 33, "", ""},
                    KindRow{"InternetCache", FolderKind::InternetCache, 3, 32, "", ""},
                    KindRow{"VantorUser", FolderKind::VantorUser, 5, 5, "\\Vantor", "\\Vantor\\Sub\\Dir"},
                    KindRow{"Personal", FolderKind::Personal, 6, 5, "", "\\Sub\\Dir"},
                    KindRow{"Documents", FolderKind::Documents, 7, 46, "", "\\Sub\\Dir"},
                    KindRow{"LocalApplicationData", FolderKind::LocalApplicationData, 8, 28, "", ""},
                    KindRow{"LocalVantorData", FolderKind::LocalVantorData, 9, 28, "\\Vantor", "\\Vantor\\Sub\\Dir"},
                    KindRow{"CommonApplicationData", FolderKind::CommonApplicationData, 10, 35, "", ""},
                    KindRow{"CommonVantorData", FolderKind::CommonVantorData, 11, 35, "\\Vantor", "\\Vantor\\Sub\\Dir"},
                    KindRow{"ApplicationData", FolderKind::ApplicationData, 12, 26, "", ""},
                    KindRow{"VantorData", FolderKind::VantorData, 13, 26, "\\Vantor", "\\Vantor\\Sub\\Dir"}),
    [](const testing::TestParamInfo<KindRow>& row) { return std::string(row.param.name); });

TEST(ResolveFolderTest, AnUnknownKindIsRefused) {
  for (const int kind : {0, 14, -1, 0x7FFFFFFF}) {
    LogCapture log;
    EXPECT_EQ("(null)", Resolved(static_cast<FolderKind>(kind), "C:\\x", E_INVALIDARG));
    EXPECT_EQ(Texts{"ERROR 0x80070057 Invalid Type '" + std::to_string(kind) + "'."}, log.Messages());
    EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
  }
}

class ResolvePathTest : public testing::Test {
 protected:
  ResolvePathTest() : before(GetModulePath()) { SetModulePath("C:\\Apps\\norvik.dll"); }
  ~ResolvePathTest() override { SetModulePath(before.c_str()); }

  std::string before;
};

TEST_F(ResolvePathTest, APathIsItsText) {
  EXPECT_EQ("C:\\Data", Resolved(FolderKind::Path, "C:\\Data"));
  EXPECT_EQ("C:\\Data\\..\\x", Resolved(FolderKind::Path, "C:\\Data\\..\\x"));
  EXPECT_EQ("relative", Resolved(FolderKind::Path, "relative"));
  EXPECT_EQ("%s", Resolved(FolderKind::Path, "%s"));
}

TEST_F(ResolvePathTest, APathLosesOneTrailingBackslash) {
  EXPECT_EQ("C:\\Data", Resolved(FolderKind::Path, "C:\\Data\\"));
  EXPECT_EQ("C:\\Data\\", Resolved(FolderKind::Path, "C:\\Data\\\\"));
  EXPECT_EQ("C:\\Data/", Resolved(FolderKind::Path, "C:\\Data/"));
}

TEST_F(ResolvePathTest, ARootKeepsItsBackslash) {
  EXPECT_EQ("C:\\", Resolved(FolderKind::Path, "C:\\"));
}

TEST_F(ResolvePathTest, AnEmptyPathIsTheModulesFolder) {
  EXPECT_EQ("C:\\Apps", Resolved(FolderKind::Path, ""));
  EXPECT_EQ("C:\\Apps", Resolved(FolderKind::Path, nullptr));
}

TEST_F(ResolvePathTest, AnEmptyPathIsEmptyWhenTheModuleIsUnknown) {
  SetModulePath("");
  EXPECT_EQ("", Resolved(FolderKind::Path, ""));
}

TEST_F(ResolvePathTest, APathIsCutAt259Characters) {
  const std::string text = "C:\\" + std::string(256, 'a');
  EXPECT_EQ(text, Resolved(FolderKind::Path, text.c_str()));
  EXPECT_EQ(text, Resolved(FolderKind::Path, (text + "b").c_str()));
  EXPECT_EQ(text, Resolved(FolderKind::Path, (text + std::string(100000, 'b')).c_str()));
}

TEST(ResolveTempTest, ATextIsAppendedToTheTemporaryFolder) {
  LogCapture log;
  EXPECT_EQ(Temporary(), Resolved(FolderKind::Temp, ""));
  EXPECT_EQ(Temporary(), Resolved(FolderKind::Temp, nullptr));
  EXPECT_EQ(Temporary() + "\\Sub\\Dir", Resolved(FolderKind::Temp, "Sub\\Dir"));
  EXPECT_EQ(Temporary() + "\\Sub", Resolved(FolderKind::Temp, "Sub\\"));
  EXPECT_EQ("", log.Text());
}

// 259 characters fit, and the sum of the two lengths and a backslash counts, needed or not.
TEST(ResolveTempTest, ATextThatDoesNotFitIsRefusedWithoutALine) {
  LogCapture log;
  const std::size_t room = MAX_PATH - 1 - (Temporary().size() + 1) - 1;
  const std::string fits(room, 'a');
  EXPECT_EQ(Temporary() + "\\" + fits, Resolved(FolderKind::Temp, fits.c_str()));
  EXPECT_EQ("(null)", Resolved(FolderKind::Temp, (fits + "a").c_str(), E_OUTOFMEMORY));
  EXPECT_EQ("(null)", Resolved(FolderKind::Temp, std::string(100000, 'a').c_str(), E_OUTOFMEMORY));
  EXPECT_EQ("", log.Text());
}

TEST(ResolveTempTest, WithoutATemporaryFolderTheSystemsErrorIsTraced) {
  LogCapture log;
  PATCH_IMPORT(noTemp, GetTempPathA, FailWith(DWORD{0}, ERROR_PATH_NOT_FOUND));
  EXPECT_EQ("(null)", Resolved(FolderKind::Temp, "x", HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)));
  EXPECT_EQ(Texts{}, log.Messages());
  EXPECT_EQ(std::vector<HRESULT>{HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)}, log.ErrorTraces());
  EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
}

// What is permitted is decided on the resolved path, so that it is the resolved path that has to be true.
TEST(ResolveFolderTest, DotsInATextAreResolved) {
  EXPECT_EQ(Special(CSIDL_PERSONAL) + "\\b", Resolved(FolderKind::Personal, "a\\..\\b"));
  EXPECT_EQ(Special(CSIDL_APPDATA), Resolved(FolderKind::VantorData, ".."));
  EXPECT_EQ("C:\\x", Resolved(FolderKind::Personal, "..\\..\\..\\..\\..\\..\\..\\..\\x"));
}

TEST(ResolveFolderTest, WithoutMemoryTheBufferIsNamed) {
  LogCapture log;
  OwnedText path = CopyText("old");
  HRESULT hr;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    hr = ResolveFolder(FolderKind::Path, "C:\\%s", path);
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(nullptr, path);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Out of memory when allocating 'C:\\%s'."}, log.Messages());
  EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
}

TEST(ResolveFolderTest, AShellThatRefusesGivesItsCodeWithoutALine) {
  LogCapture log;
  PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return kShellFailure; });
  EXPECT_EQ("(null)", Resolved(FolderKind::Personal, "x", kShellFailure));
  EXPECT_EQ("(null)", Resolved(FolderKind::Cookie, "", kShellFailure));
  EXPECT_EQ("(null)", Resolved(FolderKind::VantorData, "", kShellFailure));
  EXPECT_EQ("", log.Text());
}

TEST(ResolveFolderTest, WithoutAnyFolderTheDriveStandsIn) {
  LogCapture log;
  PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return kShellFailure; });
  PATCH_IMPORT(noTemp, GetTempPathA, FailWith(DWORD{0}, ERROR_PATH_NOT_FOUND));
  EXPECT_EQ("C:\\Vantor\\a", Resolved(FolderKind::VantorData, "a", S_FALSE));
  EXPECT_EQ("C:\\", Resolved(FolderKind::Personal, "", S_FALSE));
  EXPECT_EQ("", log.Text());
}

TEST(ResolveFolderTest, ATemporaryFolderThatDoesNotFitIsNone) {
  PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return kShellFailure; });
  for (const DWORD needed : {260, 261, 300}) {
    PATCH_IMPORT(longTemp, GetTempPathA, [needed](auto, DWORD size, char*) {
      EXPECT_EQ(260u, size);
      return needed;
    });
    EXPECT_EQ("C:\\a", Resolved(FolderKind::Personal, "a", S_FALSE)) << needed;
  }
  PATCH_IMPORT(fits, GetTempPathA, [](auto, DWORD, char* path) {
    std::strcpy(path, "X:\\");
    return DWORD{259};
  });
  EXPECT_EQ("(null)", Resolved(FolderKind::Personal, "a", kShellFailure));
}

TEST(ResolveFolderTest, AnOverlongTextIsRefusedWithoutALine) {
  LogCapture log;
  const std::size_t room = MAX_PATH - 1 - Special(CSIDL_PERSONAL).size() - 1;
  const std::string fits(room, 'a');
  EXPECT_EQ(Special(CSIDL_PERSONAL) + "\\" + fits, Resolved(FolderKind::Personal, fits.c_str()));
  EXPECT_EQ("(null)", Resolved(FolderKind::Personal, (fits + "a").c_str(), E_OUTOFMEMORY));
  EXPECT_EQ("(null)", Resolved(FolderKind::VantorData, std::string(100000, 'a').c_str(), E_OUTOFMEMORY));
  EXPECT_EQ("", log.Text());
}

TEST(ResolveFolderTest, AnIgnoredTextMayHaveAnyLength) {
  EXPECT_EQ(Special(CSIDL_APPDATA), Resolved(FolderKind::ApplicationData, std::string(100000, 'a').c_str()));
}

TEST(GetSpecialFolderTest, UpToTwoSubfoldersAreAppended) {
  const std::string base = Special(CSIDL_APPDATA);
  char buffer[MAX_PATH] = "old";
  EXPECT_HRESULT(S_OK, GetSpecialFolder(CSIDL_APPDATA, buffer, "a", "b\\"));
  EXPECT_EQ(base + "\\a\\b", buffer);
  EXPECT_HRESULT(S_OK, GetSpecialFolder(CSIDL_APPDATA, buffer, "", "b"));
  EXPECT_EQ(base + "\\b", buffer);
  EXPECT_HRESULT(S_OK, GetSpecialFolder(CSIDL_APPDATA, buffer, "a", nullptr));
  EXPECT_EQ(base + "\\a", buffer);
  EXPECT_HRESULT(S_OK, GetSpecialFolder(CSIDL_APPDATA, buffer, nullptr, nullptr));
  EXPECT_EQ(base, buffer);
}

TEST(GetSpecialFolderTest, ASubfolderThatDoesNotFitIsRefused) {
  char buffer[MAX_PATH];
  const std::string overlong(MAX_PATH, 'a');
  EXPECT_HRESULT(E_OUTOFMEMORY, GetSpecialFolder(CSIDL_APPDATA, buffer, overlong.c_str(), ""));
  EXPECT_HRESULT(E_OUTOFMEMORY, GetSpecialFolder(CSIDL_APPDATA, buffer, overlong.c_str(), "b"));
  EXPECT_HRESULT(E_OUTOFMEMORY, GetSpecialFolder(CSIDL_APPDATA, buffer, "a", overlong.c_str()));
}

TEST(GetSpecialFolderTest, AFolderThatIsNotThereYetIsStillNamed) {
  PATCH_IMPORT(missing, SHGetFolderPathA, [](auto, HWND, int folderId, HANDLE, DWORD, char* path) {
    const bool isVerified = !(folderId & CSIDL_FLAG_DONT_VERIFY);
    EXPECT_EQ(0, folderId & CSIDL_FLAG_CREATE);
    std::strcpy(path, isVerified ? "" : "X:\\Later");
    return isVerified ? S_FALSE : S_OK;
  });
  char buffer[MAX_PATH];
  EXPECT_HRESULT(S_OK, GetSpecialFolder(CSIDL_APPDATA, buffer, "a", ""));
  EXPECT_STREQ("X:\\Later\\a", buffer);
}

TEST(GetSpecialFolderTest, AnUnknownFolderGivesTheShellsCode) {
  char buffer[MAX_PATH];
  EXPECT_HRESULT(E_INVALIDARG, GetSpecialFolder(0x7FFF, buffer, "a", ""));
}

// With a temporary folder at hand nothing stands in: whoever asked has to know that there is no such folder.
TEST(GetSpecialFolderTest, AFolderThatIsOnlyPromisedIsAFailure) {
  std::vector<int> asked;
  PATCH_IMPORT(promised, SHGetFolderPathA, [&](auto, HWND, int folderId, HANDLE, DWORD flags, char* path) {
    asked.push_back(folderId);
    EXPECT_EQ(0u, flags);
    *path = '\0';
    return S_FALSE;
  });
  char buffer[MAX_PATH];
  EXPECT_HRESULT(E_FAIL, GetSpecialFolder(CSIDL_APPDATA, buffer, "a", ""));
  EXPECT_EQ((std::vector<int>{CSIDL_APPDATA, CSIDL_APPDATA | CSIDL_FLAG_DONT_VERIFY}), asked);
}

TEST(GetSpecialFolderTest, TheStandInDriveTakesSubfoldersToo) {
  PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return kShellFailure; });
  PATCH_IMPORT(noTemp, GetTempPathA, FailWith(DWORD{0}, ERROR_PATH_NOT_FOUND));
  char buffer[MAX_PATH];
  EXPECT_HRESULT(S_FALSE, GetSpecialFolder(CSIDL_APPDATA, buffer, "a", "b"));
  EXPECT_STREQ("C:\\a\\b", buffer);
  EXPECT_HRESULT(E_OUTOFMEMORY, GetSpecialFolder(CSIDL_APPDATA, buffer, std::string(MAX_PATH, 'a').c_str(), "b"));
}

}  // namespace
