// What arguments a script host may pass: how many, and of which types.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"
#include "host/Invocation.h"

namespace {

struct WrongCount {
  const char* name;
  DISPID member;
  WORD flags;
  int count;
  HRESULT code;
};

class WrongCountTest : public ControlTest, public testing::WithParamInterface<WrongCount> {};

TEST_P(WrongCountTest, IsRefusedAndNothingRuns) {
  const WrongCount& row = GetParam();
  const std::vector<Variant> arguments(static_cast<std::size_t>(row.count), Variant::Text(Narrow(Serve(Copy("a.txt")))));
  EXPECT_HRESULT(row.code, Invoke(control.Get(), row.member, row.flags, arguments).code);
  EXPECT_EQ(Lines{}, server.Asked());
}

// Not every system minds arguments that are left over behind those of a method.
const WrongCount kWrongCounts[] = {
    {"ExecuteWithNone", kExecute, DISPATCH_METHOD, 0, DISP_E_BADPARAMCOUNT},
    {"ExecuteNavigateWithNone", kExecuteNavigate, DISPATCH_METHOD, 0, DISP_E_BADPARAMCOUNT},
    {"ExecuteNavigateWithOne", kExecuteNavigate, DISPATCH_METHOD, 1, DISP_E_BADPARAMCOUNT},
    {"SetEnableLogDebugWithNone", kSetEnableLogDebug, DISPATCH_METHOD, 0, DISP_E_BADPARAMCOUNT},
    {"ManifestURLPutWithNone", kManifestURL, DISPATCH_PROPERTYPUT, 0, DISP_E_PARAMNOTFOUND},
    // An argument for a property that has none would be an index into its value.
    {"ManifestURLGetWithOne", kManifestURL, DISPATCH_PROPERTYGET, 1, DISP_E_NOTACOLLECTION},
    {"LogDebugGetWithOne", kLogDebug, DISPATCH_PROPERTYGET, 1, DISP_E_NOTACOLLECTION},
};
INSTANTIATE_TEST_SUITE_P(Rows, WrongCountTest, testing::ValuesIn(kWrongCounts), [](const auto& row) {
  return row.param.name;
});

// A value, and what the property reads afterwards; or null when the value cannot be put.
struct PutValue {
  const char* name;
  DISPID member;
  Variant value;
  const char* read;
};

class PutValueTest : public ControlTest, public testing::WithParamInterface<PutValue> {
 protected:
  std::string Read() { return Show(Invoke(control.Get(), GetParam().member, DISPATCH_PROPERTYGET).result); }
};

TEST_P(PutValueTest, IsConvertedOrRefused) {
  const PutValue& row = GetParam();
  const std::string before = Read();
  EXPECT_HRESULT(row.read ? S_OK : DISP_E_TYPEMISMATCH, InvokePut(control.Get(), row.member, row.value).code);
  EXPECT_EQ(row.read ? row.read : before, Read());
}

const PutValue kPutValues[] = {
    {"TextAsText", kManifestURL, Variant::Text("any text"), "8 any text"},
    {"EmptyText", kManifestURL, Variant::Text(""), "8 "},
    {"NumberAsText", kManifestURL, Variant::Long(42), "8 42"},
    {"NothingAsText", kManifestURL, Variant(), "8 "},
    {"ObjectAsText", kManifestURL, Variant::NoObject(), nullptr},
    {"FlagAsFlag", kLogDebug, Variant::Bool(VARIANT_TRUE), "11 -1"},
    {"FalseAsFlag", kLogDebug, Variant::Bool(VARIANT_FALSE), "11 0"},
    {"ZeroAsFlag", kLogDebug, Variant::Long(0), "11 0"},
    {"NumberAsFlag", kLogDebug, Variant::Long(7), "11 -1"},
    {"WordAsFlag", kLogDebug, Variant::Text("False"), "11 0"},
    {"NothingAsFlag", kLogDebug, Variant(), "11 0"},
    {"AnotherWordAsFlag", kLogDebug, Variant::Text("perhaps"), nullptr},
    {"ObjectAsFlag", kLogDebug, Variant::NoObject(), nullptr},
};
INSTANTIATE_TEST_SUITE_P(Rows, PutValueTest, testing::ValuesIn(kPutValues), [](const auto& row) { return row.param.name; });

class DispatchValueTest : public ControlTest {
 protected:
  Invocation Call(DISPID member, const std::vector<Variant>& arguments) {
    return Invoke(control.Get(), member, DISPATCH_METHOD, arguments);
  }
  Variant Manifest(const std::string& commands) { return Variant::Text(Narrow(Serve(commands))); }
};

TEST_F(DispatchValueTest, AnObjectIsNoManifestUrl) {
  EXPECT_HRESULT(DISP_E_TYPEMISMATCH, Call(kExecute, {Variant::NoObject()}).code);
  EXPECT_EQ(Lines{}, Messages(kRunLog));
}

TEST_F(DispatchValueTest, AWordIsNoFlagForSetEnableLogDebug) {
  EXPECT_HRESULT(DISP_E_TYPEMISMATCH, Call(kSetEnableLogDebug, {Variant::Text("perhaps")}).code);
  EXPECT_EQ("11 1", Show(Invoke(control.Get(), kLogDebug, DISPATCH_PROPERTYGET).result));
}

TEST_F(DispatchValueTest, TheManifestUrlMayComeByReference) {
  BString url = Serve(Copy("a.txt"));
  BSTR place = url.Get();
  EXPECT_HRESULT(S_OK, Call(kExecute, {Variant::TextAt(&place)}).code);
  Variant held = Manifest(Copy("b.txt"));
  EXPECT_HRESULT(S_OK, Call(kExecute, {Variant::VariantAt(held)}).code);
  EXPECT_EQ("a.txt b.txt", NamesIn(destination.Path()));
}

// A script that passes a variable of its own passes a value, not a string, by reference.
TEST_F(DispatchValueTest, TheUrlsPlaceIsNoValueByReference) {
  for (const Variant& before : {Variant(), Variant::Text("as it was")}) {
    Variant held = before;
    EXPECT_HRESULT(
        DISP_E_TYPEMISMATCH, Call(kExecuteNavigate, {Manifest(OpenInBrowser("page.htm")), Variant::VariantAt(held)}).code);
    EXPECT_EQ(Show(before), Show(held));
  }
  EXPECT_EQ(Lines{}, server.Asked());
}

TEST_F(DispatchValueTest, AStringThatIsPassedAsAValueDoesNotReceiveTheUrl) {
  const Variant text = Variant::Text("as it was");
  EXPECT_HRESULT(S_OK, Call(kExecuteNavigate, {Manifest(OpenInBrowser("page.htm")), text}).code);
  EXPECT_EQ("8 as it was", Show(text));
  EXPECT_EQ("page.htm", NamesIn(destination.Path()));
}

}  // namespace
