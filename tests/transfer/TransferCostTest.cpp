// What a transfer costs: one read and one write for each chunk of 4 KiB and one read for the end, and memory that does not
// depend on the size.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <string>

#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "transfer/ScriptedInternet.h"
#include "transfer/Transfer.h"

namespace {

struct Cost {
  int reads = 0;
  int writes = 0;
  int allocations = 0;
};

class TransferCostTest : public testing::TestWithParam<int> {
 protected:
  Cost CostOf(int bytes, const char* notFoundText) {
    const std::string destination = folder.File("copy.bin");
    ScriptedInternet internet({std::string(static_cast<std::size_t>(bytes), 'x')});
    Cost cost;
    HRESULT hr = E_UNEXPECTED;
    {
      PATCH_IMPORT(writes, WriteFile, [&](auto original, auto... arguments) {
        ++cost.writes;
        return original(arguments...);
      });
      PATCH_IMPORT(allocations, HeapAlloc, [&](auto original, auto... arguments) {
        ++cost.allocations;
        return original(arguments...);
      });
      hr = FetchURL("http://host/a.bin", destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, notFoundText);
    }
    EXPECT_HRESULT(S_OK, hr);
    cost.reads = internet.Reads();
    return cost;
  }

  static int Chunks(int bytes) { return (bytes + 4095) / 4096; }

  const TemporaryFolder folder;
  const LogCapture log{false};
};

TEST_P(TransferCostTest, EveryChunkIsOneReadAndOneWrite) {
  const Cost cost = CostOf(GetParam(), nullptr);
  EXPECT_EQ(Chunks(GetParam()) + 1, cost.reads);
  EXPECT_EQ(Chunks(GetParam()), cost.writes);
}

TEST_P(TransferCostTest, MemoryDoesNotDependOnTheSize) {
  EXPECT_EQ(CostOf(8192, nullptr).allocations, CostOf(8192 + GetParam(), nullptr).allocations);
  EXPECT_EQ(CostOf(8192, "not found").allocations, CostOf(8192 + GetParam(), "not found").allocations);
}

INSTANTIATE_TEST_SUITE_P(, TransferCostTest, testing::Values(1, 4095, 4096, 4097, 1000000),
                         testing::PrintToStringParamName());

}  // namespace
