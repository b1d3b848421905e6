// A test program that goes wrong in the ways that its cases are named after. The test of the self-check chooses among them
// with NORVIK_WAYWARD, a list of their names.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool IsAsked(const char* name) {
  const char* const asked = std::getenv("NORVIK_WAYWARD");
  return asked && std::strstr(asked, name);
}

TEST(WaywardTest, Passes) {}

TEST(WaywardTest, Fails) {
  EXPECT_FALSE(IsAsked("Fails")) << "was asked to fail, with a letter of the code page: \xE4";
}

TEST(WaywardTest, Crashes) {
  if (IsAsked("Crashes")) {
    std::puts("about to crash \xE4");
    std::fflush(stdout);
    *static_cast<volatile int*>(nullptr) = 1;
  }
}

TEST(WaywardTest, Hangs) {
  if (IsAsked("Hangs"))
    Sleep(INFINITE);
}

TEST(WaywardTest, PassesToo) {}

class EndTest : public testing::Environment {
  void TearDown() override {
    if (IsAsked("EndsBadly"))
      ExitProcess(7);
  }
};
const testing::Environment* const kEnd = testing::AddGlobalTestEnvironment(new EndTest);

}  // namespace
