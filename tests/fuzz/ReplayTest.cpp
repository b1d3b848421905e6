// Runs the inputs that are kept below tests/fuzz/corpus against the system's own functions.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "Target.h"
#include "support/Files.h"
#include "support/LogCapture.h"

void Broken(const char* promise, const char* file, int line) {
  ADD_FAILURE_AT(file, line) << "does not hold: " << promise;
}

void UseCodePage(bool /*isDoubleByte*/) {}

namespace {

struct TargetRow {
  const char* name;
  void (*run)(Input& input);
};

void PrintTo(const TargetRow& row, std::ostream* stream) {
  *stream << row.name;
}

class KeptInputsTest : public testing::TestWithParam<TargetRow> {};

TEST_P(KeptInputsTest, KeepEveryPromise) {
  const LogCapture log;
  const std::string folder = ProjectFile(std::string("tests/fuzz/corpus/") + GetParam().name);
  const std::string names = NamesIn(folder);
  ASSERT_NE("", names);
  for (std::size_t start = 0; start < names.size();) {
    const std::size_t end = std::min(names.find(' ', start), names.size());
    const std::string name = names.substr(start, end - start);
    SCOPED_TRACE(name);
    const std::string bytes = ReadWholeFile(folder + "\\" + name);
    Input input(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    GetParam().run(input);
    start = end + 1;
  }
}

INSTANTIATE_TEST_SUITE_P(
    , KeptInputsTest,
    testing::Values(TargetRow{"URL", FuzzURL}, TargetRow{"Time", FuzzTime}, TargetRow{"Head", FuzzHead},
                    TargetRow{"LogName", FuzzLogName}, TargetRow{"Rename", FuzzRename}, TargetRow{"Search", FuzzSearch},
                    TargetRow{"Cookie", FuzzCookie}, TargetRow{"Link", FuzzLink}),
    [](const auto& row) { return row.param.name; });

}  // namespace
