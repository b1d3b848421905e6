// The properties that a page's parameters set, and that are written back.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"
#include "host/HostDoubles.h"

namespace {

constexpr char kLoadFailed[] = "Failed to load ActiveX properties or HTML <PARAM> tags.";

class PropertyBagTest : public ControlTest {
 protected:
  HRESULT Load(IPropertyBag* from, IErrorLog* errors = nullptr) { return As<IPersistPropertyBag>()->Load(from, errors); }

  // What the control writes back.
  Lines Saved(BOOL clearDirty = FALSE, BOOL saveAll = TRUE) {
    FakeBag saved;
    EXPECT_HRESULT(S_OK, As<IPersistPropertyBag>()->Save(&saved, clearDirty, saveAll));
    return saved.written;
  }

  FakeBag bag;
};

TEST_F(PropertyBagTest, AllPropertiesAreAskedForInTheirOrder) {
  EXPECT_HRESULT(S_OK, Load(&bag));
  EXPECT_EQ((Lines{"_cx", "_cy", "ManifestURL", "LogDebug"}), bag.asked);
}

// A bag may convert its text to the type that it is offered, and tell a property that it lacks by the value.
TEST_F(PropertyBagTest, EveryPropertyIsOfferedAsItsTypeWithItsValue) {
  bag.properties = {{L"_cx", Variant::Unsigned(7)}, {L"_cy", Variant::Unsigned(9)}};
  EXPECT_HRESULT(S_OK, Load(&bag));
  EXPECT_EQ((Lines{"19 0", "19 0", "8 ", "11 0"}), bag.offered);
  FakeBag again;
  EXPECT_HRESULT(S_OK, Load(&again));
  EXPECT_EQ((Lines{"19 7", "19 9", "8 ", "11 0"}), again.offered);
}

TEST_F(PropertyBagTest, TheFirstValuesAreWrittenBack) {
  EXPECT_EQ((Lines{"_cx 19 0", "_cy 19 0", "ManifestURL 8 ", "LogDebug 11 1"}), Saved());
}

TEST_F(PropertyBagTest, AnEmptyBagLeavesAllValuesAsTheyAre) {
  bag.properties = {
      {L"_cx", Variant::Unsigned(1)}, {L"_cy", Variant::Unsigned(2)}, {L"LogDebug", Variant::Bool(VARIANT_FALSE)}};
  EXPECT_HRESULT(S_OK, Load(&bag));
  FakeBag empty;
  EXPECT_HRESULT(S_OK, Load(&empty));
  EXPECT_EQ((Lines{"_cx 19 1", "_cy 19 2", "ManifestURL 8 ", "LogDebug 11 0"}), Saved());
}

TEST_F(PropertyBagTest, AnEmptyValueIsAsGoodAsNone) {
  bag.properties = {
      {L"_cx", Variant::Unsigned(1)}, {L"_cy", Variant::Unsigned(2)}, {L"LogDebug", Variant::Bool(VARIANT_TRUE)}};
  EXPECT_HRESULT(S_OK, Load(&bag));
  bag.properties = {{L"_cx", Variant()}, {L"_cy", Variant()}, {L"ManifestURL", Variant()}, {L"LogDebug", Variant()}};
  EXPECT_HRESULT(S_OK, Load(&bag));
  EXPECT_EQ((Lines{"_cx 19 1", "_cy 19 2", "ManifestURL 8 ", "LogDebug 11 -1"}), Saved());
}

TEST_F(PropertyBagTest, NoBagIsRefused) {
  EXPECT_HRESULT(E_INVALIDARG, Load(nullptr));
  EXPECT_EQ(std::string("ERROR 0x80070057 ") + kLoadFailed, LastMessage("permit"));
  EXPECT_HRESULT(E_INVALIDARG, As<IPersistPropertyBag>()->Save(nullptr, TRUE, TRUE));
}

TEST_F(PropertyBagTest, ANewControlNeedsNoBag) {
  EXPECT_HRESULT(S_OK, As<IPersistPropertyBag>()->InitNew());
  EXPECT_EQ((Lines{"_cx 19 0", "_cy 19 0", "ManifestURL 8 ", "LogDebug 11 1"}), Saved());
}

TEST_F(PropertyBagTest, TheHostsErrorLogIsHandedToTheBag) {
  IErrorLog* const errors = reinterpret_cast<IErrorLog*>(&bag);  // is only passed on
  EXPECT_HRESULT(S_OK, Load(&bag, errors));
  EXPECT_EQ(errors, bag.errors);
}

TEST_F(PropertyBagTest, WhatWasLoadedIsWrittenBack) {
  const std::string url = Narrow(Serve(Copy("a.txt")));
  bag.properties = {{L"_cx", Variant::Text("2646")},
                    {L"_cy", Variant::Text("1323")},
                    {L"ManifestURL", Variant::Text(url)},
                    {L"LogDebug", Variant::Text("-1")}};
  EXPECT_HRESULT(S_OK, Load(&bag));
  EXPECT_EQ((Lines{"_cx 19 2646", "_cy 19 1323", "ManifestURL 8 " + url, "LogDebug 11 -1"}), Saved());
}

TEST_F(PropertyBagTest, AllPropertiesAreWrittenWhateverTheHostAsksFor) {
  const Lines all = Saved();
  EXPECT_EQ(all, Saved(FALSE, FALSE));
  EXPECT_EQ(all, Saved(TRUE, FALSE));
  EXPECT_EQ(all, Saved(TRUE, TRUE));
}

TEST_F(PropertyBagTest, ABagThatCannotBeWrittenEndsTheSaving) {
  FakeBag saved;
  saved.unwritable = L"ManifestURL";
  EXPECT_HRESULT(STG_E_ACCESSDENIED, As<IPersistPropertyBag>()->Save(&saved, TRUE, TRUE));
  EXPECT_EQ((Lines{"_cx 19 0", "_cy 19 0"}), saved.written);
}

TEST_F(PropertyBagTest, WhatStandsBeforeAPropertyThatCannotBePutIsKept) {
  bag.properties = {
      {L"_cx", Variant::Unsigned(7)}, {L"_cy", Variant::Text("wide")}, {L"LogDebug", Variant::Bool(VARIANT_FALSE)}};
  EXPECT_HRESULT(E_FAIL, Load(&bag));
  EXPECT_EQ((Lines{"_cx", "_cy"}), bag.asked);
  EXPECT_EQ((Lines{"_cx 19 7", "_cy 19 0", "ManifestURL 8 ", "LogDebug 11 1"}), Saved());
}

TEST_F(PropertyBagTest, NoManifestRunsWhenAPropertyCannotBePut) {
  bag.properties = {{L"ManifestURL", Variant::Text(Narrow(Serve(Copy("a.txt"))))}, {L"LogDebug", Variant::Text("perhaps")}};
  EXPECT_HRESULT(E_FAIL, Load(&bag));
  EXPECT_EQ(Lines{}, server.Asked());
  EXPECT_EQ(std::string("ERROR 0x80004005 ") + kLoadFailed, LastMessage("permit"));
}

// One property, as the host's bag holds it and as the control then writes it back.
struct Loaded {
  const char* name;
  const wchar_t* property;
  Variant value;
  const char* saved;  // null when it cannot be put
};

class LoadedPropertyTest : public PropertyBagTest, public testing::WithParamInterface<Loaded> {};

const Loaded kLoaded[] = {
    {"WidthAsNumber", L"_cx", Variant::Unsigned(4294967295u), "_cx 19 4294967295"},
    {"WidthAsSignedNumber", L"_cx", Variant::Long(2646), "_cx 19 2646"},
    {"WidthAsText", L"_cx", Variant::Text("2646"), "_cx 19 2646"},
    {"HeightAsNumber", L"_cy", Variant::Unsigned(1323), "_cy 19 1323"},
    {"HeightAsText", L"_cy", Variant::Text("4294967295"), "_cy 19 4294967295"},
    {"DebugAsFlag", L"LogDebug", Variant::Bool(VARIANT_FALSE), "LogDebug 11 0"},
    {"DebugAsTrueFlag", L"LogDebug", Variant::Bool(VARIANT_TRUE), "LogDebug 11 -1"},
    {"DebugAsNumber", L"LogDebug", Variant::Long(0), "LogDebug 11 0"},
    {"DebugAsWord", L"LogDebug", Variant::Text("False"), "LogDebug 11 0"},
    {"DebugAsUpperCaseWord", L"LogDebug", Variant::Text("TRUE"), "LogDebug 11 -1"},
    {"DebugAsTextOfANumber", L"LogDebug", Variant::Text("0"), "LogDebug 11 0"},
    {"DebugAsTextOfOne", L"LogDebug", Variant::Text("1"), "LogDebug 11 -1"},
    {"WidthAsWord", L"_cx", Variant::Text("wide"), nullptr},
    {"WidthTooLarge", L"_cx", Variant::Text("4294967296"), nullptr},
    {"WidthAsEmptyText", L"_cx", Variant::Text(""), nullptr},
    {"HeightAsWord", L"_cy", Variant::Text("tall"), nullptr},
    {"HeightAsObject", L"_cy", Variant::NoObject(), nullptr},
    {"DebugAsAnotherWord", L"LogDebug", Variant::Text("perhaps"), nullptr},
    {"DebugAsEmptyText", L"LogDebug", Variant::Text(""), nullptr},
    {"DebugAsObject", L"LogDebug", Variant::NoObject(), nullptr},
    {"ManifestAsObject", L"ManifestURL", Variant::NoObject(), nullptr},
};

TEST_P(LoadedPropertyTest, IsTakenOrRefused) {
  const Loaded& row = GetParam();
  const Lines before = Saved();
  bag.properties[row.property] = row.value;
  EXPECT_HRESULT(row.saved ? S_OK : E_FAIL, Load(&bag));
  Lines expected = before;
  if (row.saved) {
    const std::string text = row.saved;
    for (std::string& line : expected)
      line = line.substr(0, line.find(' ')) == text.substr(0, text.find(' ')) ? text : line;
    EXPECT_EQ(1u, Messages("permit").size());
  } else {
    EXPECT_EQ(std::string("ERROR 0x80004005 ") + kLoadFailed, LastMessage("permit"));
    EXPECT_EQ("axNorvik", LastEntry("permit").file);
  }
  EXPECT_EQ(expected, Saved());
}

INSTANTIATE_TEST_SUITE_P(Rows, LoadedPropertyTest, testing::ValuesIn(kLoaded), [](const auto& row) {
  return row.param.name;
});

}  // namespace
