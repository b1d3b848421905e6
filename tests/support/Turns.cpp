#include "support/Turns.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "support/Seed.h"

namespace {

bool IsShared() {
  return std::getenv("NORVIK_TURNS") != nullptr;
}

std::set<std::string>& SharedGroups() {
  static std::set<std::string> groups;
  return groups;
}

bool IsSharedGroup(const std::string& suite, const std::string& test) {
  return SharedGroups().count(suite.substr(suite.rfind('/') + 1) + "." + test.substr(0, test.find('/'))) != 0;
}

bool IsTurn(std::uint32_t drawn) {
  return drawn % 2 == TurnOfThisWidth(2);
}

}  // namespace

std::uint32_t TurnOfThisWidth(std::uint32_t turns) {
  return sizeof(void*) == 8 ? 0 : turns / 2;
}

int WholeInOneWidth(int whole, int part, Half half) {
  return !IsShared() || IsTurn(Drawn(0) + static_cast<std::uint32_t>(half)) ? whole : part;
}

bool ShareCases(const char* suite, const char* test) {
  return SharedGroups().insert(std::string(suite) + "." + test).second;
}

std::string WithoutCasesOfTheOtherWidth(const std::string& filter) {
  std::string all = filter;
  if (!IsShared())
    return all;
  const testing::UnitTest& program = *testing::UnitTest::GetInstance();
  for (int i = 0; i < program.total_test_suite_count(); ++i) {
    const testing::TestSuite& suite = *program.GetTestSuite(i);
    for (int j = 0; j < suite.total_test_count(); ++j) {
      const std::string test = suite.GetTestInfo(j)->name();
      const std::string name = suite.name() + ("." + test);
      if (IsSharedGroup(suite.name(), test) && !IsTurn(Drawn(name)))
        all += (all.find('-') == std::string::npos ? "-" : ":") + name;
    }
  }
  return all;
}
