#include "common/SystemError.h"

#include <gtest/gtest.h>

#include "support/HResult.h"

namespace {

TEST(SystemErrorTest, APositiveNumberBecomesAWin32Code) {
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), ResultFromError(ERROR_FILE_NOT_FOUND));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072EE7), ResultFromError(12007));
}

TEST(SystemErrorTest, OnlyTheLowSixteenBitsOfANumberAreKept) {
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070005), ResultFromError(0x10005));
  EXPECT_HRESULT(static_cast<HRESULT>(0x8007FFFF), ResultFromError(0x7FFFFFFF));
}

TEST(SystemErrorTest, AnyOtherValueIsUsedAsItIs) {
  EXPECT_HRESULT(S_OK, ResultFromError(0));
  EXPECT_HRESULT(E_FAIL, ResultFromError(E_FAIL));
}

TEST(SystemErrorTest, TheLastErrorGivesItsCode) {
  SetLastError(ERROR_ACCESS_DENIED);
  EXPECT_HRESULT(E_ACCESSDENIED, ResultFromLastError());
}

TEST(SystemErrorTest, AFailureWithoutANumberIsStillAFailure) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_HRESULT(E_FAIL, ResultFromLastError());
}

}  // namespace
