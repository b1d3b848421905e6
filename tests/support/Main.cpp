#include "common/Windows.h"

#include <gtest/gtest.h>

#include "support/Turns.h"

namespace {

// A block of the process heap that was overrun, or a heap that is otherwise damaged, fails the test behind which it is
// found.
class HeapCheck : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo&) override {
    EXPECT_TRUE(HeapValidate(GetProcessHeap(), 0, nullptr)) << "the process heap is damaged";
  }
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::GTEST_FLAG(filter) = WithoutCasesOfTheOtherWidth(testing::GTEST_FLAG(filter));
  testing::UnitTest::GetInstance()->listeners().Append(new HeapCheck);
  const HRESULT initialized = CoInitialize(nullptr);
  const int result = RUN_ALL_TESTS();
  if (SUCCEEDED(initialized))
    CoUninitialize();
  return result;
}
