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
  EXPECT_TRUE(FAILED(CreateFolderTree(folder.File("a\\b").c_str())));
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

// Neither the server nor the share can be made; both are asked for, and the share is the first folder that is tried.
TEST(FolderTreeTest, TheServerOfANetworkPathIsNotMade) {
  std::vector<std::string> made;
  PATCH_IMPORT(nothingThere, GetFileAttributesA, FailWith(INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND));
  PATCH_IMPORT(record, CreateDirectoryA, [&](auto, const char* path, LPSECURITY_ATTRIBUTES) {
    made.push_back(path);
    return TRUE;
  });
  EXPECT_HRESULT(S_OK, CreateFolderTree("\\\\server\\share\\a"));
  EXPECT_EQ((std::vector<std::string>{"\\\\server\\share", "\\\\server\\share\\a"}), made);
}

}  // namespace
