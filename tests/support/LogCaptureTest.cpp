#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include "log/LogFile.h"
#include "support/Files.h"
#include "support/HResult.h"

namespace {

constexpr SourceFile kSourceFile = {"LogCaptureTest"};

struct ParseRow {
  const char* name;
  const char* text;
  LogEntry entry;
};

class LogCaptureParseTest : public testing::TestWithParam<ParseRow> {};

TEST_P(LogCaptureParseTest, TakesAnEntryApart) {
  const LogEntry& expected = GetParam().entry;
  const std::vector<LogEntry> entries = LogCapture::Parse(GetParam().text);
  ASSERT_EQ(1u, entries.size());
  EXPECT_EQ(expected.level, entries[0].level);
  EXPECT_EQ(expected.line, entries[0].line);
  EXPECT_EQ(expected.file, entries[0].file);
  EXPECT_HRESULT(expected.code, entries[0].code);
  EXPECT_EQ(expected.systemText, entries[0].systemText);
  EXPECT_EQ(expected.message, entries[0].message);
}

INSTANTIATE_TEST_SUITE_P(
    , LogCaptureParseTest,
    testing::Values(
        ParseRow{"Message", "INFO (01/31/2020 23:59:58) \r\n\tdone\r\n", {"INFO", 0, "", S_OK, "", "done"}},
        ParseRow{"Position",
                 "WARNING (01/31/2020 23:59:58) on line 7 in file 'Text' \r\n\tdone\r\n",
                 {"WARNING", 7, "Text", S_OK, "", "done"}},
        ParseRow{"Code",
                 "ERROR (01/31/2020 23:59:58) Error (0x80070057) Invalid parameter.\r\n\tdone\r\n",
                 {"ERROR", 0, "", E_INVALIDARG, "Invalid parameter.", "done"}},
        ParseRow{"CodeWithoutText",
                 "ERROR (01/31/2020 23:59:58) on line 7 in file 'Text' Error (0x80004005)\r\n\tdone\r\n",
                 {"ERROR", 7, "Text", E_FAIL, "", "done"}},
        ParseRow{"Trace",
                 "ERROR (01/31/2020 23:59:58) on line 7 in file 'Text' Error (0x80004005) \r\n",
                 {"ERROR", 7, "Text", E_FAIL, "", ""}},
        ParseRow{"MessageOfSeveralLines",
                 "INFO (01/31/2020 23:59:58) \r\n\tone\r\ntwo\r\n\r\n\tthree\r\n",
                 {"INFO", 0, "", S_OK, "", "one\r\ntwo\r\n\r\n\tthree"}},
        ParseRow{"MissingLineEnd", "INFO (01/31/2020 23:59:58) \r\n\tdone", {"INFO", 0, "", S_OK, "", "done"}}),
    [](const testing::TestParamInfo<ParseRow>& row) { return std::string(row.param.name); });

TEST(LogCaptureTest, EveryHeadBeginsAnEntry) {
  const std::vector<LogEntry> entries = LogCapture::Parse(
      "INFO (01/31/2020 23:59:58) \r\n\tone\r\n"
      "ERROR (01/31/2020 23:59:58) Error (0x80004005)\r\n"
      "INFO (01/31/2020 23:59:59) \r\n\tINFO that is no head\r\n");
  ASSERT_EQ(3u, entries.size());
  EXPECT_EQ("one", entries[0].message);
  EXPECT_EQ("", entries[1].message);
  EXPECT_EQ("INFO that is no head", entries[2].message);
}

TEST(LogCaptureTest, LinesBeforeTheFirstHeadAreNoEntry) {
  EXPECT_EQ(0u, LogCapture::Parse("").size());
  EXPECT_EQ(0u, LogCapture::Parse("text\r\n\tmore\r\nINFO without a time\r\n").size());
}

TEST(LogCaptureTest, MessagesAndTracesAreToldApart) {
  LogCapture log;
  LogInfo(HERE, "begun");
  LogError(HERE, E_FAIL, "'%s' failed", "a");
  LogErrorTrace(HERE, E_UNEXPECTED);
  EXPECT_EQ((std::vector<std::string>{"INFO begun", "ERROR 0x80004005 'a' failed"}), log.Messages());
  EXPECT_EQ(std::vector<HRESULT>{E_UNEXPECTED}, log.ErrorTraces());
  ASSERT_EQ(3u, log.Entries().size());
  EXPECT_EQ("LogCaptureTest", log.Entries()[2].file);
}

TEST(LogCaptureTest, ACaptureBeginsEmptyAndPutsDebugLoggingBack) {
  SetDebugLogging(5);
  {
    LogCapture log(false);
    EXPECT_EQ(0, GetDebugLogging());
    EXPECT_EQ("", log.Text());
  }
  EXPECT_EQ(5, GetDebugLogging());
  SetDebugLogging(1);
}

}  // namespace
