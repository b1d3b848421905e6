#include "advice/Document.h"

#include <gtest/gtest.h>

#include "advice/Words.h"
#include "support/Files.h"
#include "support/ImportPatch.h"

namespace {

class ReadDocumentTest : public testing::Test {
 protected:
  // What is said of a file that is not read; empty when it is.
  std::string Complaint(const std::string& name) const {
    try {
      ReadDocument(WideFromAnsi(folder.File(name).c_str()));
      return {};
    } catch (const Unanswered& unanswered) {
      return unanswered.what();
    }
  }

  std::string CannotRead(const std::string& name, DWORD error) const {
    return "'" + folder.File(name) + "' cannot be read: " + SystemText(HRESULT_FROM_WIN32(error));
  }

  const TemporaryFolder folder;
};

TEST_F(ReadDocumentTest, GivesTheBytes) {
  const std::string bytes("a\0\r\n\xE4", 5);
  WriteWholeFile(folder.File("a.xml"), bytes);
  WriteWholeFile(folder.File("empty.xml"), "");
  EXPECT_EQ(bytes, ReadDocument(WideFromAnsi(folder.File("a.xml").c_str())));
  EXPECT_EQ("", ReadDocument(WideFromAnsi(folder.File("empty.xml").c_str())));
}

TEST_F(ReadDocumentTest, TellsWhyAFileIsNotRead) {
  EXPECT_EQ(CannotRead("none.xml", ERROR_FILE_NOT_FOUND), Complaint("none.xml"));
  EXPECT_EQ(CannotRead("none\\a.xml", ERROR_PATH_NOT_FOUND), Complaint("none\\a.xml"));
  ASSERT_TRUE(CreateDirectoryA(folder.File("folder").c_str(), nullptr));
  EXPECT_EQ(CannotRead("folder", ERROR_ACCESS_DENIED), Complaint("folder"));
  WriteWholeFile(folder.File("a.xml"), "a");
  {
    PATCH_IMPORT(devices, GetFileType, [](auto, auto...) -> DWORD { return FILE_TYPE_CHAR; });
    EXPECT_EQ(CannotRead("a.xml", ERROR_INVALID_NAME), Complaint("a.xml"));
  }
  {
    PATCH_IMPORT(sizes, GetFileSizeEx, FailWith(FALSE, ERROR_GEN_FAILURE));
    EXPECT_EQ(CannotRead("a.xml", ERROR_GEN_FAILURE), Complaint("a.xml"));
  }
  {
    PATCH_IMPORT(reads, ReadFile, FailWith(FALSE, ERROR_READ_FAULT));
    EXPECT_EQ(CannotRead("a.xml", ERROR_READ_FAULT), Complaint("a.xml"));
  }
  EXPECT_EQ("", Complaint("a.xml"));
}

TEST_F(ReadDocumentTest, AFileMayHave64MiBAndNoByteMore) {
  WriteWholeFile(folder.File("a.xml"), "a");
  LONGLONG told = 64LL * 1024 * 1024 + 1;
  PATCH_IMPORT(sizes, GetFileSizeEx, [&told](auto, HANDLE, LARGE_INTEGER* size) -> BOOL {
    size->QuadPart = told;
    return TRUE;
  });
  EXPECT_EQ("'" + folder.File("a.xml") + "' has more than 64 MiB, which no manifest and no permission file needs.",
            Complaint("a.xml"));
  told = 64LL * 1024 * 1024;
  EXPECT_EQ("", Complaint("a.xml"));
}

}  // namespace
