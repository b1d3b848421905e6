// What watches the process heap notices what it is there for.

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <vector>

#include "support/GuardedHeap.h"
#include "support/HeapBalance.h"

namespace {

constexpr SIZE_T kBytes = 24;

// Functions of their own: the compiler would keep the address of a system function across a patch.
[[gnu::noinline]] char* Take() {
  return static_cast<char*>(HeapAlloc(GetProcessHeap(), 0, kBytes));
}

[[gnu::noinline]] void GiveBack(void* memory) {
  HeapFree(GetProcessHeap(), 0, memory);
}

TEST(GuardedHeapTest, ABlockThatWasFilledToItsEndIsInOrder) {
  GuardedHeap heap;
  char* const block = Take();
  std::memset(block, 'x', kBytes);
  GiveBack(block);
  EXPECT_EQ(1, heap.Checked());
}

void OverrunOneOfThousand() {
  GuardedHeap heap;
  std::vector<char*> blocks;
  for (int i = 0; i < 1000; ++i)
    blocks.push_back(Take());
  blocks.back()[kBytes] = 'x';
  for (char* const block : blocks)
    GiveBack(block);
  EXPECT_LE(1000, heap.Checked());
}

TEST(GuardedHeapTest, TheLastOfAThousandBlocksIsGuardedToo) {
  EXPECT_NONFATAL_FAILURE(OverrunOneOfThousand(), "byte 0 behind 24");
}

char* keptBlock = nullptr;

void OverrunAndKeep() {
  GuardedHeap heap;
  keptBlock = Take();
  keptBlock[kBytes + 15] = 'x';
}

TEST(GuardedHeapTest, ABlockThatIsKeptIsCheckedAtTheEnd) {
  EXPECT_NONFATAL_FAILURE(OverrunAndKeep(), "byte 15 behind 24");
  GiveBack(keptBlock);
}

TEST(HeapBalanceTest, ABlockIsOutstandingUntilItIsGivenBack) {
  const HeapBalance heap;
  EXPECT_EQ(0, heap.Outstanding());
  char* const block = Take();
  EXPECT_EQ(1, heap.Outstanding());
  GiveBack(nullptr);
  EXPECT_EQ(1, heap.Outstanding());
  GiveBack(block);
  EXPECT_EQ(0, heap.Outstanding());
}

}  // namespace
