// Part of every test program: writes which functions of src/ each test case entered into the file that
// NORVIK_FUNCTION_TRACE names. A line is a test case, "SUITE.*" for what a suite does beside its cases or "*" for what the
// program does beside its suites, then words "IMAGE+POSITION", the position in hexadecimal.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "function_trace.h"

namespace {

constexpr const char* kImageNames[] = {"test", "norvik.dll", "norvik.exe", "norvikopen.exe"};

class TestTrace : public testing::EmptyTestEventListener {
 public:
  explicit TestTrace(const char* path) : file(std::fopen(path, "w")), trace(OpenFunctionTrace(true)) {}

 private:
  void OnTestSuiteStart(const testing::TestSuite&) override { Write("*"); }
  void OnTestStart(const testing::TestInfo& test) override { Write(test.test_suite_name() + std::string(".*")); }
  void OnTestEnd(const testing::TestInfo& test) override { Write(test.test_suite_name() + std::string(".") + test.name()); }
  void OnTestSuiteEnd(const testing::TestSuite& suite) override { Write(suite.name() + std::string(".*")); }
  void OnTestProgramEnd(const testing::UnitTest&) override { Write("*"); }

  void Write(const std::string& name) {
    std::fprintf(file, "%s", name.c_str());
    for (LONG number = 0; number < trace->count && number < kMostFunctions; ++number) {
      const EnteredFunction& entered = trace->functions[number];
      std::fprintf(file, " %s+%lx", kImageNames[static_cast<LONG>(entered.image)], entered.position);
    }
    std::fprintf(file, "\n");
    std::fflush(file);
    trace->count = 0;
    ++trace->step;
  }

  FILE* const file;
  FunctionTrace* const trace;
};

const bool isListening = [] {
  if (const char* const path = std::getenv("NORVIK_FUNCTION_TRACE")) {
    testing::UnitTest::GetInstance()->listeners().Append(new TestTrace(path));
    SetEnvironmentVariableA("NORVIK_FUNCTION_TRACE", nullptr);  // the programs that a test starts leave the file alone
  }
  return true;
}();

}  // namespace
