#include "support/ImportPatch.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

// The patched functions. Inlined, several calls would share one look into the import table: the compiler takes its entries
// for constants.
[[gnu::noinline]] DWORD Attributes() {
  return GetFileAttributesA("C:\\");
}
[[gnu::noinline]] DWORD Process() {
  return GetCurrentProcessId();
}

TEST(ImportPatchTest, ThePatchIsGoneWithItsObject) {
  const DWORD before = Attributes();
  {
    PATCH_IMPORT(attributes, GetFileAttributesA, [](auto...) { return DWORD{12345}; });
    EXPECT_EQ(12345u, Attributes());
  }
  EXPECT_EQ(before, Attributes());
}

TEST(ImportPatchTest, TheHandlerGetsOriginalAndArguments) {
  const DWORD before = Attributes();
  std::string asked;
  PATCH_IMPORT(attributes, GetFileAttributesA, [&](auto original, const char* path) {
    asked += path;
    return original(path) + 1;
  });
  EXPECT_EQ(before + 1, Attributes());
  EXPECT_EQ("C:\\", asked);
}

TEST(ImportPatchTest, AHandlerThatCallsThePatchedFunctionGetsTheOriginal) {
  const DWORD before = Process();
  PATCH_IMPORT(process, GetCurrentProcessId, [](auto) { return GetCurrentProcessId() + 1; });
  EXPECT_EQ(before + 1, Process());
  EXPECT_EQ(before + 1, Process());
}

TEST(ImportPatchTest, AnInnerPatchGoesThroughTheOuterOne) {
  const DWORD before = Process();
  const auto addOne = [](auto original) { return original() + 1; };
  PATCH_IMPORT(outer, GetCurrentProcessId, addOne);
  {
    PATCH_IMPORT(inner, GetCurrentProcessId, [](auto original) { return original() * 2; });
    EXPECT_EQ((before + 1) * 2, Process());
  }
  EXPECT_EQ(before + 1, Process());
}

TEST(ImportPatchTest, TwoFunctionsArePatchedIndependently) {
  PATCH_IMPORT(attributes, GetFileAttributesA, [](auto...) { return Process(); });
  PATCH_IMPORT(process, GetCurrentProcessId, [](auto) { return DWORD{7}; });
  EXPECT_EQ(7u, Attributes());
}

TEST(ImportPatchTest, FailWithFailsEveryCall) {
  PATCH_IMPORT(attributes, GetFileAttributesA, FailWith(INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED));
  for (int call = 1; call <= 2; ++call) {
    SetLastError(0);
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES, Attributes());
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
  }
}

TEST(ImportPatchTest, FailCallFailsOneCall) {
  const DWORD before = Attributes();
  PATCH_IMPORT(attributes, GetFileAttributesA, FailCall(2, INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED));
  EXPECT_EQ(before, Attributes());
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, Attributes());
  EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
  EXPECT_EQ(before, Attributes());
}

TEST(ImportPatchTest, AFunctionThatIsNotImportedFailsTheTest) {
  const auto patchNothing = [] { ImportPatch patch(nullptr, "NoSuchFunctionAnywhere", nullptr); };
  EXPECT_NONFATAL_FAILURE(patchNothing(), "NoSuchFunctionAnywhere is not imported: nothing was patched");
}

}  // namespace
