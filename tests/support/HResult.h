#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>

// A result code that a failed assertion prints in hex.
struct ResultCode {
  HRESULT value;
};

inline bool operator==(ResultCode a, ResultCode b) {
  return a.value == b.value;
}
void PrintTo(ResultCode code, std::ostream* stream);

#define EXPECT_HRESULT(expected, actual) EXPECT_EQ(ResultCode{expected}, ResultCode{actual})
#define ASSERT_HRESULT(expected, actual) ASSERT_EQ(ResultCode{expected}, ResultCode{actual})
