#include "advice/InvalidDocument.h"

#include <gtest/gtest.h>

#include "advice/Words.h"
#include "transfer/Transfer.h"

namespace {

// What is said of a well-formed document with which the module ended with this code and this complaint.
std::string Told(HRESULT code, const std::string& complaint, DWORD kind = kTransferManifest) {
  const std::string bytes = "<a/>";
  return SentenceOf(InvalidFinding({OutlineOf(bytes), bytes, kind, code, complaint}));
}

TEST(InvalidDocumentTest, WhatTheModuleSaysOfNoPlaceIsToldAsItIs) {
  EXPECT_EQ("The module refuses this manifest: It does not like it.", Told(E_FAIL, "It does not like it."));
  EXPECT_EQ("The module refuses this permission file: It does not like it.",
            Told(E_FAIL, "It does not like it.", kTransferPermitFile));
}

TEST(InvalidDocumentTest, WhereTheModuleSaysNothingTheCodeSpeaks) {
  EXPECT_EQ("The module refuses this manifest: " + SystemText(E_OUTOFMEMORY), Told(E_OUTOFMEMORY, ""));
  EXPECT_EQ("The module refuses this manifest: 0xe0001234", Told(static_cast<HRESULT>(0xE0001234), ""));
}

}  // namespace
