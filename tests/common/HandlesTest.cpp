#include "common/Handles.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "support/Files.h"
#include "support/ImportPatch.h"

namespace {

constexpr DWORD kErrorBefore = 4711;

// Handles of no system, and a record of those that were closed. Closing changes the thread's last error.
class HandlesTest : public testing::Test {
 protected:
  static HANDLE Handle(int number) { return reinterpret_cast<HANDLE>(static_cast<INT_PTR>(number)); }

  std::vector<HANDLE> closed;
  BOOL answer = TRUE;

 private:
  ImportedFunction<struct RecordedClose, decltype(&::CloseHandle)> close{
      "CloseHandle", [this](auto, HANDLE handle) {
        closed.push_back(handle);
        SetLastError(ERROR_DISK_FULL);
        return answer;
      }};
};

TEST_F(HandlesTest, AnOwnerClosesItsHandleOnceAndKeepsTheLastError) {
  SetLastError(kErrorBefore);
  { const FileHandle owner(Handle(4)); }
  EXPECT_EQ(kErrorBefore, GetLastError());
  EXPECT_EQ(std::vector<HANDLE>{Handle(4)}, closed);
}

TEST_F(HandlesTest, AnEmptyOwnerClosesNothing) {
  {
    const FileHandle none;
    const FileHandle invalid(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(none);
    EXPECT_FALSE(invalid);
    EXPECT_EQ(INVALID_HANDLE_VALUE, none.Get());
  }
  EXPECT_EQ(std::vector<HANDLE>{}, closed);
}

TEST_F(HandlesTest, AHandleMovesWithItsOwner) {
  FileHandle first(Handle(4));
  FileHandle second(std::move(first));
  EXPECT_FALSE(first);
  EXPECT_EQ(Handle(4), second.Get());
  first = std::move(second);
  EXPECT_FALSE(second);
  EXPECT_EQ(Handle(4), first.Get());
  EXPECT_EQ(std::vector<HANDLE>{}, closed);
}

TEST_F(HandlesTest, AHandleIsClosedWhenAnotherTakesItsPlace) {
  FileHandle owner(Handle(4));
  SetLastError(kErrorBefore);
  owner = FileHandle(Handle(8));
  EXPECT_EQ(kErrorBefore, GetLastError());
  EXPECT_EQ(std::vector<HANDLE>{Handle(4)}, closed);
  EXPECT_EQ(Handle(8), owner.Get());
  FileHandle& same = owner;
  owner = std::move(same);
  EXPECT_EQ(std::vector<HANDLE>{Handle(4)}, closed);
  EXPECT_EQ(Handle(8), owner.Get());
}

TEST_F(HandlesTest, ClosingTellsWhetherTheSystemDid) {
  FileHandle owner(Handle(4));
  EXPECT_TRUE(owner.Close());
  answer = FALSE;
  FileHandle refused(Handle(8));
  SetLastError(kErrorBefore);
  EXPECT_FALSE(refused.Close());
  EXPECT_EQ(DWORD{ERROR_DISK_FULL}, GetLastError());
  EXPECT_FALSE(refused);
  EXPECT_TRUE(refused.Close());
  EXPECT_EQ((std::vector<HANDLE>{Handle(4), Handle(8)}), closed);
}

TEST(LocalTextTest, TheTextIsGivenBackToTheLocalHeap) {
  std::vector<HLOCAL> freed;
  PATCH_IMPORT(record, LocalFree, [&](auto original, HLOCAL memory) {
    freed.push_back(memory);
    return original(memory);
  });
  LocalText text(static_cast<char*>(LocalAlloc(LPTR, 8)));
  ASSERT_TRUE(static_cast<bool>(text));
  const HLOCAL memory = text.Get();
  EXPECT_TRUE(text.Close());
  EXPECT_FALSE(text);
  EXPECT_EQ(nullptr, text.Get());
  EXPECT_TRUE(text.Close());
  EXPECT_EQ(std::vector<HLOCAL>{memory}, freed);
}

TEST(LocalTextTest, ATextThatIsNotTakenBackIsAFailure) {
  char memory[8];
  PATCH_IMPORT(refuse, LocalFree, [](auto, HLOCAL kept) { return kept; });
  LocalText text(memory);
  EXPECT_FALSE(text.Close());
}

TEST(IsDeviceTest, AFileIsNoneAndTheNullDeviceIsOne) {
  const TemporaryFolder folder;
  WriteWholeFile(folder.File("a"), "x");
  const FileHandle file(CreateFileA(folder.File("a").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  const FileHandle device(CreateFileA("nul", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(file && device);
  EXPECT_FALSE(IsDevice(file));
  EXPECT_TRUE(IsDevice(device));
}

}  // namespace
