#include "log/LogPath.h"

#include <gtest/gtest.h>

#include <string>

#include "log/LocalFolder.h"
#include "support/Files.h"
#include "support/ImportPatch.h"

namespace {

std::string PathFor(const wchar_t* name) {
  char path[MAX_PATH];
  ChooseLogPath(name, path);
  return path;
}

std::string LocalApplicationData() {
  char folder[MAX_PATH];
  SHGetFolderPathA(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, folder);
  return folder;
}

std::string InLogFolder(const std::string& name) {
  return LocalApplicationData() + "\\Vantor\\Logs\\Norvik\\" + name;
}

struct NameRow {
  const char* title;
  const wchar_t* name;
  const char* file;
};

class LogNameTest : public testing::TestWithParam<NameRow> {};

TEST_P(LogNameTest, TheLogIsNamedAfterTheFinalComponent) {
  EXPECT_EQ(InLogFolder(GetParam().file), PathFor(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(
    Names, LogNameTest,
    testing::Values(
        NameRow{"Extension", L"setup.xml", "setup.log"}, NameRow{"NoExtension", L"setup", "setup.log"},
        NameRow{"TwoDots", L"a.b.xml", "a.b.log"}, NameRow{"Null", nullptr, "Norvik.log"},
        NameRow{"Empty", L"", "Norvik.log"}, NameRow{"Url", L"http://host/dir/setup.xml", "setup.log"},
        NameRow{"FileUrl", L"file://C:\\dir\\setup.xml", "setup.log"}, NameRow{"Path", L"C:\\dir\\setup.xml", "setup.log"},
        NameRow{"Query", L"http://host/get.asp?name=x", "get.log"}, NameRow{"ParentFolder", L"http://host/..", "..log"},
        NameRow{"FolderAbove", L"http://host/..\\", "Norvik.log"},
        NameRow{"FolderAboveSlash", L"http://host/../", "Norvik.log"}, NameRow{"FolderAboveTwice", L"..\\\\", "Norvik.log"},
        NameRow{"DotAndASlash", L"http://host/.a/", ".log"}, NameRow{"SecondDotAndASlash", L"http://host/a./", "a.log"},
        NameRow{"DotsBeforeAName", L"http://host/../a.xml", "a.log"}, NameRow{"NameWithDots", L"..a.xml", "..a.log"}),
    [](const auto& row) { return row.param.title; });

TEST(LogPathTest, ANameOf129CharactersIsUsedAndOneOf130IsNot) {
  EXPECT_EQ(InLogFolder(std::string(125, 'a') + ".log"), PathFor((std::wstring(125, L'a') + L".xml").c_str()));
  EXPECT_EQ(InLogFolder("Norvik.log"), PathFor((std::wstring(126, L'a') + L".xml").c_str()));
}

TEST(LogPathTest, ANameThatCannotBeConvertedIsNotUsed) {
  PATCH_IMPORT(noConversion, WideCharToMultiByte, FailWith(0, ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(InLogFolder("Norvik.log"), PathFor(L"setup.xml"));
}

TEST(LogPathTest, TheLogFolderIsMade) {
  TemporaryFolder folder;
  PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder.Path()));
  EXPECT_EQ(folder.File("Vantor\\Logs\\Norvik\\setup.log"), PathFor(L"setup.xml"));
  EXPECT_TRUE(FileExistsAt(folder.File("Vantor\\Logs\\Norvik")));
}

TEST(LogPathTest, WithoutLocalApplicationDataTheBaseIsTheDrive) {
  PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, auto...) { return E_FAIL; });
  PATCH_IMPORT(exists, GetFileAttributesA, [](auto, const char*) { return DWORD{FILE_ATTRIBUTE_DIRECTORY}; });
  EXPECT_EQ("C:\\Vantor\\Logs\\Norvik\\setup.log", PathFor(L"setup.xml"));
}

// What the shell leaves in the buffer with it is nobody's folder yet.
TEST(LogPathTest, AHalfHeartedAnswerOfTheShellIsNoFolder) {
  PATCH_IMPORT(halfHearted, SHGetFolderPathA, FolderAt("X:\\Later", S_FALSE));
  PATCH_IMPORT(exists, GetFileAttributesA, [](auto, const char*) { return DWORD{FILE_ATTRIBUTE_DIRECTORY}; });
  EXPECT_EQ("C:\\Vantor\\Logs\\Norvik\\setup.log", PathFor(L"setup.xml"));
}

TEST(LogPathTest, ANameIsConvertedAsItIs) {
  PATCH_IMPORT(conversion, WideCharToMultiByte,
               [](auto original, UINT codePage, DWORD flags, const wchar_t* text, int length, char* buffer, int bytes,
                  const char* replacement, BOOL* isReplaced) {
    EXPECT_EQ(UINT{CP_ACP}, codePage);
    EXPECT_EQ(0u, flags);
    EXPECT_EQ(-1, length);
    EXPECT_EQ(260, bytes);
    EXPECT_EQ(nullptr, replacement);
    EXPECT_EQ(nullptr, isReplaced);
    return original(1252, flags, text, length, buffer, bytes, replacement, isReplaced);
  });
  EXPECT_EQ(InLogFolder("Zo\xeb.log"), PathFor(L"Zo\u00eb.xml"));
}

TEST(LogPathTest, AFolderThatCannotBeMadeIsReplacedByTheDrive) {
  TemporaryFolder folder;
  PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder.Path()));
  PATCH_IMPORT(readOnly, CreateDirectoryA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_EQ("C:\\setup.log", PathFor(L"setup.xml"));
}

// The base and the room for the log folder (25) fit into 260 characters, or the base is used as it is.
TEST(LogPathTest, AFolderTooLongForTheLogFolderIsUsedBare) {
  PATCH_IMPORT(exists, GetFileAttributesA, [](auto, const char*) { return DWORD{FILE_ATTRIBUTE_DIRECTORY}; });
  const std::string fits = "C:\\" + std::string(232, 'f');
  {
    PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(fits));
    EXPECT_EQ(fits + "\\Vantor\\Logs\\Norvik\\a", PathFor(L"a"));  // no room for .log
  }
  PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(fits + "f"));
  EXPECT_EQ(fits + "f\\a.log", PathFor(L"a"));
}

TEST(LogPathTest, AFileNameTooLongForTheFolderIsReplaced) {
  PATCH_IMPORT(exists, GetFileAttributesA, [](auto, const char*) { return DWORD{FILE_ATTRIBUTE_DIRECTORY}; });
  const std::string folder = "C:\\" + std::string(237, 'f');  // 240 characters
  PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder));
  EXPECT_EQ(
      folder + "\\" + std::string(18, 'a').substr(0, 14) + ".log", PathFor((std::wstring(14, L'a') + L".xml").c_str()));
  EXPECT_EQ(folder + "\\Norvik.log", PathFor((std::wstring(15, L'a') + L".xml").c_str()));
}

TEST(LogPathTest, EvenTheDefaultNameTooLongGoesToTheCurrentFolder) {
  PATCH_IMPORT(exists, GetFileAttributesA, [](auto, const char*) { return DWORD{FILE_ATTRIBUTE_DIRECTORY}; });
  const std::string folder = "C:\\" + std::string(244, 'f');  // 247 characters
  {
    PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder));
    EXPECT_EQ(folder + "\\Norvik.log", PathFor((std::wstring(40, L'a') + L".xml").c_str()));
  }
  PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder + "f"));
  EXPECT_EQ("Norvik.log", PathFor((std::wstring(40, L'a') + L".xml").c_str()));
}

TEST(LogPathTest, AnExtensionThatDoesNotFitIsNotAdded) {
  PATCH_IMPORT(exists, GetFileAttributesA, [](auto, const char*) { return DWORD{FILE_ATTRIBUTE_DIRECTORY}; });
  const std::string folder = "C:\\" + std::string(237, 'f');
  PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder));
  EXPECT_EQ(folder + "\\" + std::string(14, 'a') + ".log", PathFor(std::wstring(14, L'a').c_str()));
  EXPECT_EQ(folder + "\\" + std::string(15, 'a'), PathFor(std::wstring(15, L'a').c_str()));
}

}  // namespace
