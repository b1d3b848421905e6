#include "advice/KeptLog.h"

#include <gtest/gtest.h>

#include "log/LogFile.h"
#include "support/LogCapture.h"

namespace {

constexpr SourceFile kSourceFile = {"KeptLogTest"};

TEST(KeptLogTest, OneWithinAnotherTakesItsPlaceForItsLife) {
  const LogCapture file(false);
  {
    const KeptLog outer;
    LogError(HERE, E_FAIL, "first");
    {
      const KeptLog inner;
      LogError(HERE, E_FAIL, "second");
      EXPECT_EQ("second", inner.FirstComplaint());
    }
    LogError(HERE, E_FAIL, "third");
    ASSERT_EQ(2u, outer.Entries().size());
    EXPECT_EQ("third", outer.Entries()[1].message);
  }
  EXPECT_EQ("", file.Text());
  LogError(HERE, E_FAIL, "fourth");
  EXPECT_NE("", file.Text());
}

TEST(KeptLogTest, AThousandEntriesAreKept) {
  const KeptLog log;
  for (int i = 0; i < 1001; ++i)
    LogError(HERE, E_FAIL, "%d", i);
  ASSERT_EQ(1000u, log.Entries().size());
  EXPECT_EQ("999", log.Entries().back().message);
}

// Who keeps the log for a reader wants what is said, and not what helps to find mistakes of the module.
TEST(KeptLogTest, OnlyALogThatIsWrittenHasDebugLines) {
  const LONG before = GetDebugLogging();
  SetDebugLogging(1);
  {
    const KeptLog quiet;
    EXPECT_EQ(0, GetDebugLogging());
  }
  EXPECT_EQ(1, GetDebugLogging());
  {
    const KeptLog written(KeptLog::Also::LogFile);
    EXPECT_EQ(1, GetDebugLogging());
  }
  EXPECT_EQ(1, GetDebugLogging());
  SetDebugLogging(before);
}

}  // namespace
