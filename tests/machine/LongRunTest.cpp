// A host that stays for a day: what it holds after thousands of runs is what it held after the first ones.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>

#include "host/ControlFixture.h"
#include "support/Holdings.h"
#include "support/Turns.h"

namespace {

// One block of 16 bytes lost in each run would be 78,400 bytes. The system's own caches come and go by less than this.
constexpr SIZE_T kToleratedBytes = 64 * 1024;
constexpr std::uintptr_t kToleratedHandles = 4;

struct Holdings {
  std::uintptr_t handle = LowestFreeHandle();
  SIZE_T heapBytes = HeapBytesInUse();
};

void ExpectNoMore(const Holdings& first, const Holdings& last) {
  std::printf("lowest free handle %llu, then %llu; heap %llu, then %llu bytes\n",
              static_cast<unsigned long long>(first.handle), static_cast<unsigned long long>(last.handle),
              static_cast<unsigned long long>(first.heapBytes), static_cast<unsigned long long>(last.heapBytes));
  EXPECT_LE(last.handle, first.handle + kToleratedHandles);
  EXPECT_LE(last.heapBytes, first.heapBytes + kToleratedBytes);
}

constexpr int kFirstRuns = 100;
constexpr int kRuns = 5000;
constexpr int kFewerRuns = 1000;

class LongRunTest : public ControlTest {
 protected:
  void RunOften(int runs, const BString& url) {
    for (int i = 0; i < runs; ++i) {
      BString page;
      ASSERT_HRESULT(S_OK, control->ExecuteNavigate(url.Get(), page.Receive())) << i;
      ASSERT_EQ(FileUrl("page.htm"), Narrow(page)) << i;
    }
  }
};

TEST_F(LongRunTest, ThousandsOfRunsLeaveNothingBehind) {
  EXPECT_HRESULT(S_OK, control->put_LogDebug(VARIANT_FALSE));
  const TemporaryFolder sources;
  WriteWholeFile(sources.File("page.htm"), "page");
  installed.WritePermit(sources.Path() + "\\", destination.Path());
  control = module.CreateControl();
  const std::string manifest = sources.File("control-run.xml");
  WriteWholeFile(manifest,
                 "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n"
                 "<VantorManifest version=\"1.0\"><Open browser=\"true\"><Source>" +
                     sources.File("page.htm") + "</Source><Destination><Path>" + destination.Path() +
                     "</Path><IfFileExists><Skip/></IfFileExists></Destination></Open></VantorManifest>\r\n");
  const BString url = Automation(manifest);
  RunOften(kFirstRuns, url);
  const Holdings first;
  RunOften(WholeInOneWidth(kRuns, kFewerRuns) - kFirstRuns, url);
  ExpectNoMore(first, Holdings());
}

TEST_F(LongRunTest, AModuleThatIsLoadedAgainAndAgainLeavesNothingBehind) {
  control.Reset();
  ASSERT_TRUE(module.Free());
  Holdings first;
  const int times = WholeInOneWidth(200, 100);
  for (int i = 0; i < times; ++i) {
    LoadedModule again(installed.Path());
    ASSERT_TRUE(again.CreateControl()) << i;
    EXPECT_HRESULT(S_OK, again.CanUnloadNow());
    ASSERT_TRUE(again.Free()) << i;
    if (i == 50)
      first = Holdings();
  }
  ExpectNoMore(first, Holdings());
}

}  // namespace
