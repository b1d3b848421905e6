#include "advice/PlatformCheck.h"

#include "common/Windows.h"

#include <gtest/gtest.h>

#include "advice/DoctorExpectations.h"
#include "advice/Words.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

TEST(PlatformCheckTest, WhatTheSystemHasIsOk) {
  ExpectCheck("xml-parser", DoctorStatus::Ok, "The system's XML parser is there.", CheckParser());
  ExpectCheck("registrar", DoctorStatus::Ok, "The registrar of the system's atl.dll is there.", CheckRegistrar());
}

TEST(PlatformCheckTest, WithoutAParserNothingRuns) {
  const LogCapture log;
  PATCH_IMPORT(none, CoCreateInstance, [](auto, auto...) -> HRESULT { return REGDB_E_CLASSNOTREG; });
  ExpectCheck(
      "xml-parser", DoctorStatus::Failed,
      "The system's XML parser cannot be had (" + CodeAndText(REGDB_E_CLASSNOTREG) + "). Every run is refused without it.",
      CheckParser());
  EXPECT_EQ("", log.Text());
}

TEST(PlatformCheckTest, WithoutARegistrarOnlyRegisteringSuffers) {
  PATCH_IMPORT(none, CoCreateInstance, [](auto, auto...) -> HRESULT { return REGDB_E_CLASSNOTREG; });
  ExpectCheck("registrar", DoctorStatus::Warning,
              "The registrar of the system's atl.dll cannot be had (" + CodeAndText(REGDB_E_CLASSNOTREG) +
                  "). What is registered stays, but regsvr32 cannot register the module so that it works.",
              CheckRegistrar());
}

}  // namespace
