// Several processes that run the same manifest into the same folder at the same time.

#include <gtest/gtest.h>

#include <list>
#include <set>

#include "host/ControlFixture.h"
#include "machine/ChildProcess.h"

namespace {

class ProcessesTest : public ControlTest, public testing::WithParamInterface<int> {};

TEST_P(ProcessesTest, EveryFileIsWholeAtTheEnd) {
  std::string large;
  while (large.size() < 300000)
    large += "line " + std::to_string(large.size()) + "\r\n";
  server.Answer("/large.txt", Response().Body(large));
  const BString url = Serve(Command("Copy", server.Url("/large.txt"), destination.Path()) + Copy("small.txt"));
  std::multiset<DWORD> codes;
  {
    std::list<ChildProcess> hosts;
    for (int i = 0; i < GetParam(); ++i)
      hosts.emplace_back("run \"" + installed.Path() + "\" \"" + Narrow(url) + "\"");
    for (ChildProcess& host : hosts)
      codes.insert(host.Finish());
  }
  std::string seen;
  for (const DWORD code : codes)
    seen += std::to_string(code) + " ";
  // Files are opened alone: where another process has a file open at that moment, a command fails, or the permission file or
  // the manifest cannot be read. Nothing else may come of it, and somebody comes through.
  EXPECT_EQ(static_cast<std::size_t>(GetParam()), codes.count(0) + codes.count(1) + codes.count(2)) << seen;
  EXPECT_LT(0u, codes.count(0)) << seen;
  EXPECT_EQ("large.txt small.txt", NamesIn(destination.Path())) << seen;
  EXPECT_EQ(large, ReadWholeFile(destination.File("large.txt"))) << seen;
  EXPECT_EQ("small.txt", ReadWholeFile(destination.File("small.txt"))) << seen;
  EXPECT_HRESULT(S_OK, control->Execute(url.Get()));
}

INSTANTIATE_TEST_SUITE_P(AtOnce, ProcessesTest, testing::Values(2, 8));

}  // namespace
