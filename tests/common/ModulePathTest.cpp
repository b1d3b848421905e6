#include "common/ModulePath.h"

#include <gtest/gtest.h>

#include "support/ImportPatch.h"

namespace {

class ModulePathTest : public testing::Test {
 protected:
  void TearDown() override { RecordModulePath(nullptr); }
};

TEST_F(ModulePathTest, TheFolderIsThePathUpToItsLastSeparator) {
  SetModulePath("C:\\Prog\\Mod\\norvik.dll");
  EXPECT_STREQ("C:\\Prog\\Mod\\norvik.dll", GetModulePath());
  EXPECT_STREQ("C:\\Prog\\Mod", GetModuleFolder());
}

TEST_F(ModulePathTest, AModuleInTheRootOfADriveLiesInTheDrive) {
  SetModulePath("C:\\norvik.dll");
  EXPECT_STREQ("C:", GetModuleFolder());
}

TEST_F(ModulePathTest, APathOf259CharactersIsTheLongest) {
  const std::string folder = "C:\\" + std::string(254, 'f');
  SetModulePath((folder + "\\n").c_str());
  EXPECT_EQ(folder + "\\n", GetModulePath());
  EXPECT_EQ(folder, GetModuleFolder());
  SetModulePath((folder + "\\norvik.dll").c_str());
  EXPECT_EQ(folder + "\\n", GetModulePath());
}

TEST_F(ModulePathTest, APathWithoutASeparatorHasNoFolder) {
  SetModulePath("C:\\Prog\\norvik.dll");
  SetModulePath("norvik.dll");
  EXPECT_STREQ("norvik.dll", GetModulePath());
  EXPECT_STREQ("", GetModuleFolder());
}

TEST_F(ModulePathTest, APathThatJustFitsIsRecorded) {
  PATCH_IMPORT(name, GetModuleFileNameA, [](auto, HMODULE module, char* buffer, DWORD size) {
    EXPECT_EQ(reinterpret_cast<HMODULE>(4), module);
    EXPECT_EQ(260u, size);
    lstrcpyA(buffer, ("C:\\" + std::string(256, 'n')).c_str());
    return DWORD{259};
  });
  RecordModulePath(reinterpret_cast<HMODULE>(4));
  EXPECT_EQ("C:\\" + std::string(256, 'n'), GetModulePath());
  EXPECT_STREQ("C:", GetModuleFolder());
}

TEST_F(ModulePathTest, TheRunningProgramHasAPath) {
  RecordModulePath(nullptr);
  char expected[MAX_PATH];
  GetModuleFileNameA(nullptr, expected, MAX_PATH);
  EXPECT_STREQ(expected, GetModulePath());
}

TEST_F(ModulePathTest, APathThatCannotBeHadIsEmpty) {
  SetModulePath("C:\\Prog\\norvik.dll");
  PATCH_IMPORT(noName, GetModuleFileNameA, FailWith(DWORD{0}, ERROR_INVALID_HANDLE));
  RecordModulePath(nullptr);
  EXPECT_STREQ("", GetModulePath());
  EXPECT_STREQ("", GetModuleFolder());
}

TEST_F(ModulePathTest, APathThatWasCutIsNotUsed) {
  PATCH_IMPORT(longName, GetModuleFileNameA, [](auto, HMODULE, char* buffer, DWORD size) {
    memset(buffer, 'a', size);
    return size;
  });
  RecordModulePath(nullptr);
  EXPECT_STREQ("", GetModulePath());
  EXPECT_STREQ("", GetModuleFolder());
}

}  // namespace
