#include "transfer/DocumentType.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Files.h"
#include "support/ImportPatch.h"

namespace {

TEST(DocumentTypeTest, TheManifestsTypeIsThisTextByteForByte) {
  const std::string expected = ReadWholeFile(ProjectFile("tests/transfer/data/manifest.dtd.txt"));
  EXPECT_EQ(expected, kManifestDTD);
  EXPECT_EQ(0u, expected.find("<!DOCTYPE VantorManifest [\n"));
  EXPECT_EQ(std::string::npos, expected.find('\r'));
  EXPECT_EQ(expected.size() - 4, expected.find("\n]>\n"));
}

TEST(DocumentTypeTest, ThePermissionFilesTypeIsThisTextByteForByte) {
  const std::string expected = ReadWholeFile(ProjectFile("tests/transfer/data/permit.dtd.txt"));
  EXPECT_EQ(expected, kPermitDTD);
  EXPECT_EQ(0u, expected.find("<!DOCTYPE VantorPermissions [\n"));
  EXPECT_EQ(std::string::npos, expected.find('\r'));
  EXPECT_EQ(expected.size() - 4, expected.find("\n]>\n"));
}

class SystemLinesTest : public testing::Test {
 protected:
  SystemLinesTest() { FreeSystemLines(); }
  ~SystemLinesTest() override { FreeSystemLines(); }
};

TEST_F(SystemLinesTest, TheLinesNameFilesInTheFolder) {
  BuildSystemLines("C:\\Apps");
  EXPECT_STREQ("\r\n<!DOCTYPE VantorManifest SYSTEM \"file://C:\\Apps\\manifest.dtd\">", GetManifestSystemLine());
  EXPECT_STREQ("\r\n<!DOCTYPE VantorPermissions SYSTEM \"file://C:\\Apps\\permit.dtd\">", GetPermitSystemLine());
}

TEST_F(SystemLinesTest, ThereAreNoneBeforeAndAfter) {
  EXPECT_EQ(nullptr, GetManifestSystemLine());
  EXPECT_EQ(nullptr, GetPermitSystemLine());
  BuildSystemLines("C:\\Apps");
  FreeSystemLines();
  EXPECT_EQ(nullptr, GetManifestSystemLine());
  EXPECT_EQ(nullptr, GetPermitSystemLine());
  FreeSystemLines();
}

TEST_F(SystemLinesTest, TheFirstFolderStays) {
  BuildSystemLines("C:\\One");
  const char* const line = GetManifestSystemLine();
  BuildSystemLines("C:\\Two");
  EXPECT_EQ(line, GetManifestSystemLine());
  EXPECT_STREQ("\r\n<!DOCTYPE VantorPermissions SYSTEM \"file://C:\\One\\permit.dtd\">", GetPermitSystemLine());
  FreeSystemLines();
  BuildSystemLines("C:\\Two");
  EXPECT_STREQ("\r\n<!DOCTYPE VantorManifest SYSTEM \"file://C:\\Two\\manifest.dtd\">", GetManifestSystemLine());
}

TEST_F(SystemLinesTest, WithoutAFolderNothingIsBuilt) {
  BuildSystemLines(nullptr);
  BuildSystemLines("");
  EXPECT_EQ(nullptr, GetManifestSystemLine());
  EXPECT_EQ(nullptr, GetPermitSystemLine());
}

TEST_F(SystemLinesTest, ALongFolderAndOneWithFormatsAreTakenAsTheyAre) {
  const std::string folder = "C:\\%s%n" + std::string(252, 'a');
  BuildSystemLines(folder.c_str());
  EXPECT_EQ("\r\n<!DOCTYPE VantorManifest SYSTEM \"file://" + folder + "\\manifest.dtd\">", GetManifestSystemLine());
  EXPECT_EQ("\r\n<!DOCTYPE VantorPermissions SYSTEM \"file://" + folder + "\\permit.dtd\">", GetPermitSystemLine());
}

TEST_F(SystemLinesTest, TheTextsFitIntoWhatIsAllocated) {
  std::vector<SIZE_T> sizes;
  {
    PATCH_IMPORT(record, LocalAlloc, [&](auto original, UINT flags, SIZE_T bytes) {
      sizes.push_back(bytes);
      return original(flags, bytes);
    });
    BuildSystemLines("C:\\Apps");
  }
  ASSERT_EQ(2u, sizes.size());
  EXPECT_GT(sizes[0], std::string(GetManifestSystemLine()).size());
  EXPECT_GT(sizes[1], std::string(GetPermitSystemLine()).size());
}

TEST_F(SystemLinesTest, WithoutMemoryALineIsMissing) {
  {
    PATCH_IMPORT(noMemory, LocalAlloc, FailCall(1, static_cast<HLOCAL>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    BuildSystemLines("C:\\Apps");
  }
  EXPECT_EQ(nullptr, GetManifestSystemLine());
  EXPECT_NE(nullptr, GetPermitSystemLine());
  BuildSystemLines("C:\\Apps");
  EXPECT_NE(nullptr, GetManifestSystemLine());
}

}  // namespace
