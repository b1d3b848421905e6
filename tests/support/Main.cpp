#include "common/Windows.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const HRESULT initialized = CoInitialize(nullptr);
  const int result = RUN_ALL_TESTS();
  if (SUCCEEDED(initialized))
    CoUninitialize();
  return result;
}
