#include "common/Variant.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/ImportPatch.h"

namespace {

TEST(VariantTest, ANewValueIsEmpty) {
  Variant value;
  EXPECT_EQ(VT_EMPTY, value.Get().vt);
}

TEST(VariantTest, AValueOfATypeIsItsZero) {
  Variant value(VT_BSTR);
  EXPECT_EQ(VT_BSTR, value.Get().vt);
  EXPECT_EQ(nullptr, value.Get().bstrVal);
}

TEST(VariantTest, AValueIsClearedWithItsOwner) {
  std::vector<BSTR> cleared;
  PATCH_IMPORT(record, VariantClear, [&](auto original, VARIANT* value) {
    cleared.push_back(value->vt == VT_BSTR ? value->bstrVal : nullptr);
    return original(value);
  });
  const BSTR text = SysAllocString(L"a");
  {
    Variant value(VT_BSTR);
    value.Get().bstrVal = text;
  }
  EXPECT_EQ(std::vector<BSTR>{text}, cleared);
}

TEST(VariantTest, AStringThatIsTakenLeavesTheValueEmpty) {
  Variant value(VT_BSTR);
  const BSTR text = SysAllocString(L"a");
  value.Get().bstrVal = text;
  const BString taken = value.TakeString();
  EXPECT_EQ(text, taken.Get());
  EXPECT_EQ(VT_EMPTY, value.Get().vt);
  EXPECT_EQ(nullptr, value.Get().bstrVal);
}

}  // namespace
