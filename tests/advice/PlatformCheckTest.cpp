#include "advice/PlatformCheck.h"

#include "common/Windows.h"

#include <gtest/gtest.h>

#include "advice/DoctorExpectations.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

TEST(PlatformCheckTest, WhatTheSystemHasIsOk) {
  ExpectCheck("xml-parser", DoctorStatus::Ok, "is there", CheckParser());
  ExpectCheck("registrar", DoctorStatus::Ok, "is there", CheckRegistrar());
}

TEST(PlatformCheckTest, WithoutAParserNothingRuns) {
  const LogCapture log;
  PATCH_IMPORT(none, CoCreateInstance, [](auto, auto...) -> HRESULT { return REGDB_E_CLASSNOTREG; });
  ExpectCheck("xml-parser", DoctorStatus::Failed, "cannot be had (0x80040154", CheckParser());
  EXPECT_EQ("", log.Text());
}

TEST(PlatformCheckTest, WithoutARegistrarOnlyRegisteringSuffers) {
  PATCH_IMPORT(none, CoCreateInstance, [](auto, auto...) -> HRESULT { return REGDB_E_CLASSNOTREG; });
  ExpectCheck("registrar", DoctorStatus::Warning, "regsvr32 cannot register the module", CheckRegistrar());
}

}  // namespace
