#include "support/Files.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(FilesTest, AMissingFileHasNoAttributes) {
  const TemporaryFolder folder;
  const std::string missing = folder.File("missing");
  EXPECT_NONFATAL_FAILURE(AttributesOf(missing), "cannot get the attributes of");
}

TEST(FilesTest, AFileHasItsAttributes) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a"), "x");
  EXPECT_FALSE(AttributesOf(folder.File("a")) & FILE_ATTRIBUTE_READONLY);
  ASSERT_TRUE(SetFileAttributesA(folder.File("a").c_str(), FILE_ATTRIBUTE_READONLY));
  EXPECT_TRUE(AttributesOf(folder.File("a")) & FILE_ATTRIBUTE_READONLY);
  EXPECT_TRUE(AttributesOf(folder.Path()) & FILE_ATTRIBUTE_DIRECTORY);
}

TEST(FilesTest, EveryByteOfAPatternDiffersFromThatOneChunkBefore) {
  const std::string pattern = PatternOf(20000);
  ASSERT_EQ(20000u, pattern.size());
  for (std::size_t i = 4096; i < pattern.size(); ++i)
    ASSERT_NE(pattern[i - 4096], pattern[i]) << i;
}

TEST(FilesTest, TheProjectsFilesAreThere) {
  EXPECT_EQ(0u, ReadWholeFile(ProjectFile("README.md")).find("# Norvik"));
}

TEST(FilesTest, TheProjectsFolderMayBeNamed) {
  const char* const variable = "NORVIK_PROJECT_FOLDER";
  const char* const usual = std::getenv(variable);
  const std::string before = usual ? usual : "";
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("page.md"), "named");
  ASSERT_EQ(0, _putenv_s(variable, folder.Path().c_str()));
  EXPECT_EQ("named", ReadWholeFile(ProjectFile("page.md")));
  ASSERT_EQ(0, _putenv_s(variable, before.c_str()));
}

}  // namespace
