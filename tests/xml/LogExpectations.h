#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/LogCapture.h"

using Lines = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

// A failure that leaves one trace line and no message.
inline void ExpectOnlyTrace(const LogCapture& log, HRESULT code) {
  EXPECT_EQ(Lines(), log.Messages());
  EXPECT_EQ(Codes{code}, log.ErrorTraces());
}

// A failure that leaves its messages and no trace line.
inline void ExpectOnlyMessages(const LogCapture& log, const Lines& messages) {
  EXPECT_EQ(messages, log.Messages());
  EXPECT_EQ(Codes(), log.ErrorTraces());
}
