#include "common/FolderTree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"

namespace {

TEST(FolderTreeTest, AnExistingFolderIsLeftAlone) {
  TemporaryFolder folder;
  PATCH_IMPORT(noFolder, CreateDirectoryA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_HRESULT(S_OK, CreateFolderTree(folder.Path().c_str()));
}

TEST(FolderTreeTest, EveryMissingFolderIsMadeInOrder) {
  TemporaryFolder folder;
  std::vector<std::string> made;
  {
    PATCH_IMPORT(record, CreateDirectoryA, [&](auto original, const char* path, LPSECURITY_ATTRIBUTES security) {
      EXPECT_EQ(nullptr, security);
      made.push_back(path);
      return original(path, security);
    });
    EXPECT_HRESULT(S_OK, CreateFolderTree(folder.File("a\\b/c").c_str()));
  }
  EXPECT_EQ((std::vector<std::string>{folder.File("a"), folder.File("a\\b"), folder.File("a\\b\\c")}), made);
  EXPECT_TRUE(FileExistsAt(folder.File("a\\b\\c")));
}

TEST(FolderTreeTest, TheFirstFolderThatCannotBeMadeStopsTheWalk) {
  TemporaryFolder folder;
  PATCH_IMPORT(second, CreateDirectoryA, FailCall(2, FALSE, ERROR_ACCESS_DENIED));
  EXPECT_HRESULT(E_ACCESSDENIED, CreateFolderTree(folder.File("a\\b\\c").c_str()));
  EXPECT_EQ("a", NamesIn(folder.Path()));
  EXPECT_EQ("", NamesIn(folder.File("a")));
}

TEST(FolderTreeTest, AFileInTheWayIsAFailure) {
  TemporaryFolder folder;
  WriteWholeFile(folder.File("a"), "x");
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), CreateFolderTree(folder.File("a\\b").c_str()));
  EXPECT_EQ("x", ReadWholeFile(folder.File("a")));
}

TEST(FolderTreeTest, AFolderThatAnotherProcessMadeMeanwhileIsFine) {
  TemporaryFolder folder;
  PATCH_IMPORT(race, CreateDirectoryA, [](auto original, const char* path, LPSECURITY_ATTRIBUTES security) {
    original(path, security);
    SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
  });
  EXPECT_HRESULT(S_OK, CreateFolderTree(folder.File("a\\b").c_str()));
}

TEST(FolderTreeTest, AFullPathOverTheLimitIsRefused) {
  TemporaryFolder folder;
  EXPECT_HRESULT(E_OUTOFMEMORY, CreateFolderTree(folder.File(std::string(260, 'a')).c_str()));
  EXPECT_HRESULT(E_OUTOFMEMORY, CreateFolderTree(folder.File(std::string(40000, 'a')).c_str()));
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST(FolderTreeTest, APathThatCannotBeMadeFullGivesTheSystemsError) {
  PATCH_IMPORT(noPath, GetFullPathNameA, FailWith(DWORD{0}, ERROR_INVALID_NAME));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), CreateFolderTree("no such folder here"));
}

// A system on which nothing exists and every folder can be made: what CreateFolderTree asks it for.
std::vector<std::string> MadeFor(const char* path) {
  std::vector<std::string> made;
  PATCH_IMPORT(nothingThere, GetFileAttributesA, FailWith(INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND));
  PATCH_IMPORT(record, CreateDirectoryA, [&](auto, const char* name, LPSECURITY_ATTRIBUTES) {
    made.push_back(name);
    return TRUE;
  });
  EXPECT_HRESULT(S_OK, CreateFolderTree(path));
  return made;
}

TEST(FolderTreeTest, AFullPathOf259CharactersIsTheLongest) {
  const std::string path = "C:\\" + std::string(256, 'a');
  EXPECT_EQ(std::vector<std::string>{path}, MadeFor(path.c_str()));
  EXPECT_HRESULT(E_OUTOFMEMORY, CreateFolderTree((path + "a").c_str()));
}

// The room that a system asks for says that the path did not fit, whatever else it leaves.
TEST(FolderTreeTest, APathForWhichTheSystemAsksForMoreRoomIsRefused) {
  PATCH_IMPORT(moreRoom, GetFullPathNameA, [](auto, const char*, DWORD size, char*, char** fileName) {
    EXPECT_EQ(260u, size);
    EXPECT_EQ(nullptr, fileName);
    return DWORD{260};
  });
  EXPECT_HRESULT(E_OUTOFMEMORY, CreateFolderTree("no such folder here"));
}

TEST(FolderTreeTest, APathThatIsTooLongByTheSystemsErrorIsRefused) {
  PATCH_IMPORT(tooLong, GetFullPathNameA, FailWith(DWORD{0}, ERROR_FILENAME_EXCED_RANGE));
  EXPECT_HRESULT(E_OUTOFMEMORY, CreateFolderTree("no such folder here"));
}

TEST(FolderTreeTest, APathThatNoSystemTakesIsTooLongWhateverTheError) {
  PATCH_IMPORT(noPath, GetFullPathNameA, FailWith(DWORD{0}, ERROR_INVALID_NAME));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), CreateFolderTree(std::string(32767, 'a').c_str()));
  EXPECT_HRESULT(E_OUTOFMEMORY, CreateFolderTree(std::string(32768, 'a').c_str()));
}

// In code page 932 the byte 0x5C is also the second byte of characters such as 0x83 0x5C.
TEST(FolderTreeTest, TheSecondByteOfACharacterEndsNoFolder) {
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte == 0x83; });
  PATCH_IMPORT(asItIs, GetFullPathNameA, [](auto, const char* path, DWORD, char* fullPath, char**) {
    lstrcpyA(fullPath, path);
    return static_cast<DWORD>(lstrlenA(path));
  });
  EXPECT_EQ((std::vector<std::string>{"C:\\a\x83\\b", "C:\\a\x83\\b\\c"}), MadeFor("C:\\a\x83\\b\\c"));
}

TEST(FolderTreeTest, AFolderThatIsThereIsNotMadeAgain) {
  TemporaryFolder folder;
  ASSERT_TRUE(CreateDirectoryA(folder.File("a").c_str(), nullptr));
  std::vector<std::string> made;
  PATCH_IMPORT(record, CreateDirectoryA, [&](auto original, const char* path, LPSECURITY_ATTRIBUTES security) {
    made.push_back(path);
    return original(path, security);
  });
  EXPECT_HRESULT(S_OK, CreateFolderTree(folder.File("a\\b").c_str()));
  EXPECT_EQ(std::vector<std::string>{folder.File("a\\b")}, made);
}

// Neither the server nor the share can be made; both are asked for, and the share is the first folder that is tried.
TEST(FolderTreeTest, TheServerOfANetworkPathIsNotMade) {
  EXPECT_EQ((std::vector<std::string>{"\\\\server\\share", "\\\\server\\share\\a"}), MadeFor("\\\\server\\share\\a"));
}

}  // namespace
