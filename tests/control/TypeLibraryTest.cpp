// The type library inside the DLL, as a development tool or a host reads it.

#include <gtest/gtest.h>

#include <set>

#include "host/ControlFixture.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr WORD kNoFlags = 0;

class TypeLibraryTest : public ModuleTest {
 protected:
  void SetUp() override {
    ASSERT_HRESULT(S_OK, LoadTypeLibEx(Wide(installed.Path()).c_str(), REGKIND_NONE, &library));
    ASSERT_HRESULT(S_OK, library->GetTypeInfoOfGuid(IID_IAXNorvik, &dispatch));
    // The members of a dual interface that are its own stand in its other half.
    HREFTYPE other = 0;
    ASSERT_HRESULT(S_OK, dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &other));
    ASSERT_HRESULT(S_OK, dispatch->GetRefTypeInfo(other, &members));
  }

  void TearDown() override {
    members.Reset();
    dispatch.Reset();
    library.Reset();
    ModuleTest::TearDown();
  }

  static std::string Documentation(ITypeInfo* information, MEMBERID member, std::string& help) {
    BString name, text;
    EXPECT_HRESULT(S_OK, information->GetDocumentation(member, name.Receive(), text.Receive(), nullptr, nullptr));
    help = Narrow(text);
    return Narrow(name);
  }

  std::string LibraryText(INT index, bool isHelp) {
    BString name, help;
    EXPECT_HRESULT(S_OK, library->GetDocumentation(index, name.Receive(), help.Receive(), nullptr, nullptr));
    return Narrow(isHelp ? help : name);
  }

  // The library as the DLL carries it.
  std::string Resource() const {
    const HRSRC found = FindResourceA(module.Handle(), MAKEINTRESOURCEA(1), "TYPELIB");
    const auto* bytes = static_cast<const char*>(LockResource(LoadResource(module.Handle(), found)));
    return std::string(bytes, SizeofResource(module.Handle(), found));
  }

  static TYPEATTR Attributes(ITypeInfo* information) {
    TYPEATTR* received = nullptr;
    EXPECT_HRESULT(S_OK, information->GetTypeAttr(&received));
    const TYPEATTR copy = *received;
    information->ReleaseTypeAttr(received);
    return copy;
  }

  ComPtr<ITypeLib> library;
  ComPtr<ITypeInfo> dispatch;
  ComPtr<ITypeInfo> members;
};

TEST_F(TypeLibraryTest, HasItsIdentifierAndVersion) {
  TLIBATTR* attributes = nullptr;
  ASSERT_HRESULT(S_OK, library->GetLibAttr(&attributes));
  EXPECT_EQ(LIBID_NORVIKLib, attributes->guid);
  EXPECT_EQ(1, attributes->wMajorVerNum);
  EXPECT_EQ(0, attributes->wMinorVerNum);
  EXPECT_EQ(static_cast<LCID>(LOCALE_NEUTRAL), attributes->lcid);
  EXPECT_EQ(sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32, attributes->syskind);
  library->ReleaseTLibAttr(attributes);
}

TEST_F(TypeLibraryTest, HasItsNameAndHelpText) {
  EXPECT_EQ("NORVIKLib", LibraryText(-1, false));
  EXPECT_EQ("Quorvane ActiveX Control 1.0 Type Library", LibraryText(-1, true));
}

TEST_F(TypeLibraryTest, HoldsTheInterfaceAndTheClassAndNothingElse) {
  EXPECT_EQ(2u, library->GetTypeInfoCount());
  std::multiset<std::string> names = {LibraryText(0, false), LibraryText(1, false)};
  EXPECT_EQ((std::multiset<std::string>{"AXNorvik", "IAXNorvik"}), names);
}

TEST_F(TypeLibraryTest, TheClassHasOneInterfaceWhichIsItsDefault) {
  ComPtr<ITypeInfo> controlClass;
  ASSERT_HRESULT(S_OK, library->GetTypeInfoOfGuid(CLSID_AXNorvik, &controlClass));
  std::string help;
  EXPECT_EQ("AXNorvik", Documentation(controlClass.Get(), MEMBERID_NIL, help));
  EXPECT_EQ("Quorvane ActiveX Control", help);
  const TYPEATTR attributes = Attributes(controlClass.Get());
  EXPECT_EQ(TKIND_COCLASS, attributes.typekind);
  ASSERT_EQ(1, attributes.cImplTypes);
  INT flags = 0;
  EXPECT_HRESULT(S_OK, controlClass->GetImplTypeFlags(0, &flags));
  EXPECT_EQ(IMPLTYPEFLAG_FDEFAULT, flags);
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> implemented;
  ASSERT_HRESULT(S_OK, controlClass->GetRefTypeOfImplType(0, &reference));
  ASSERT_HRESULT(S_OK, controlClass->GetRefTypeInfo(reference, &implemented));
  EXPECT_EQ(IID_IAXNorvik, Attributes(implemented.Get()).guid);
}

TEST_F(TypeLibraryTest, TheInterfaceIsDualForAutomationAndDispatchable) {
  std::string help;
  EXPECT_EQ("IAXNorvik", Documentation(dispatch.Get(), MEMBERID_NIL, help));
  EXPECT_EQ("Quorvane ActiveX Control Interface", help);
  EXPECT_EQ(TKIND_DISPATCH, Attributes(dispatch.Get()).typekind);
  // The half for dispatching never shows that the interface is one for automation.
  EXPECT_EQ(TYPEFLAG_FDUAL | TYPEFLAG_FDISPATCHABLE, Attributes(dispatch.Get()).wTypeFlags);
  EXPECT_EQ(TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FDISPATCHABLE, Attributes(members.Get()).wTypeFlags);
}

TEST_F(TypeLibraryTest, TheInterfaceIsDerivedFromDispatch) {
  const TYPEATTR attributes = Attributes(members.Get());
  EXPECT_EQ(TKIND_INTERFACE, attributes.typekind);
  ASSERT_EQ(1, attributes.cImplTypes);
  HREFTYPE reference = 0;
  ComPtr<ITypeInfo> base;
  ASSERT_HRESULT(S_OK, members->GetRefTypeOfImplType(0, &reference));
  ASSERT_HRESULT(S_OK, members->GetRefTypeInfo(reference, &base));
  EXPECT_EQ(IID_IDispatch, Attributes(base.Get()).guid);
}

struct Parameter {
  const char* name;
  VARTYPE type;
  VARTYPE pointedTo;  // VT_EMPTY when the type is no pointer
  WORD flags;
};

struct Member {
  const char* name;
  MEMBERID id;
  INVOKEKIND kind;
  std::vector<Parameter> parameters;
  const char* help;
};

constexpr WORD kOutRetval = PARAMFLAG_FOUT | PARAMFLAG_FRETVAL;

const std::vector<Member> kMembers = {
    {"Execute",
     1,
     INVOKE_FUNC,
     {{"bstrManifestURL", VT_BSTR, VT_EMPTY, kNoFlags}},
     "Execute a manifest specified by the URL"},
    {"ExecuteNavigate",
     2,
     INVOKE_FUNC,
     {{"bstrManifestURL", VT_BSTR, VT_EMPTY, kNoFlags}, {"pbstrNavigateURL", VT_PTR, VT_BSTR, kNoFlags}},
     "Execute a manifest specified by the URL and return the destination URL"},
    {"SetEnableLogDebug",
     3,
     INVOKE_FUNC,
     {{"bEnabled", VT_BOOL, VT_EMPTY, kNoFlags}},
     "Enable or disable extra debugging log information"},
    {"ManifestURL",
     4,
     INVOKE_PROPERTYGET,
     {{"pVal", VT_PTR, VT_BSTR, kOutRetval}},
     "Get the manifest URL to execute during the loading of the ActiveX control"},
    {"ManifestURL",
     4,
     INVOKE_PROPERTYPUT,
     {{"pVal", VT_BSTR, VT_EMPTY, PARAMFLAG_FIN}},
     "Set the manifest URL to execute during the loading of the ActiveX control"},
    {"LogDebug",
     5,
     INVOKE_PROPERTYGET,
     {{"pVal", VT_PTR, VT_BOOL, kOutRetval}},
     "Retrieve the state of extra debugging log information"},
    {"LogDebug",
     5,
     INVOKE_PROPERTYPUT,
     {{"pVal", VT_BOOL, VT_EMPTY, PARAMFLAG_FIN}},
     "Enable or disable extra debugging log information"},
};

TEST_F(TypeLibraryTest, TheInterfaceHasItsSevenFunctions) {
  EXPECT_EQ(kMembers.size(), Attributes(members.Get()).cFuncs);
  EXPECT_EQ(0, Attributes(members.Get()).cVars);
}

class MemberDescriptionTest : public TypeLibraryTest, public testing::WithParamInterface<std::size_t> {
 protected:
  void SetUp() override {
    TypeLibraryTest::SetUp();
    ASSERT_HRESULT(S_OK, members->GetFuncDesc(static_cast<UINT>(GetParam()), &description));
  }

  void TearDown() override {
    if (description)
      members->ReleaseFuncDesc(description);
    TypeLibraryTest::TearDown();
  }

  const Member& Expected() const { return kMembers[GetParam()]; }

  FUNCDESC* description = nullptr;
};

TEST_P(MemberDescriptionTest, StandsAtItsPlaceInTheTableOfFunctions) {
  EXPECT_EQ(Expected().id, description->memid);
  EXPECT_EQ(Expected().kind, description->invkind);
  EXPECT_EQ(FUNC_PUREVIRTUAL, description->funckind);
  const std::size_t dispatchFunctions = 7;
  EXPECT_EQ((dispatchFunctions + GetParam()) * sizeof(void*), static_cast<std::size_t>(description->oVft));
}

TEST_P(MemberDescriptionTest, HasItsName) {
  std::string help;
  EXPECT_EQ(Expected().name, Documentation(members.Get(), Expected().id, help));
}

TEST_P(MemberDescriptionTest, HasItsHelpText) {
  // The two halves of a property share their identifier, by which only the text of the first can be asked for.
  std::string help;
  Documentation(members.Get(), Expected().id, help);
  if (Expected().kind == INVOKE_PROPERTYPUT)
    EXPECT_NE(std::string::npos, Resource().find(Expected().help));
  else
    EXPECT_EQ(Expected().help, help);
}

TEST_P(MemberDescriptionTest, ReturnsAResultCode) {
  EXPECT_EQ(VT_HRESULT, description->elemdescFunc.tdesc.vt);
  EXPECT_EQ(CC_STDCALL, description->callconv);
  EXPECT_EQ(0, description->wFuncFlags);
}

TEST_P(MemberDescriptionTest, HasItsParameters) {
  const std::vector<Parameter>& expected = Expected().parameters;
  ASSERT_EQ(expected.size(), static_cast<std::size_t>(description->cParams));
  EXPECT_EQ(0, description->cParamsOpt);
  for (std::size_t index = 0; index < expected.size(); ++index) {
    const ELEMDESC& parameter = description->lprgelemdescParam[index];
    EXPECT_EQ(expected[index].type, parameter.tdesc.vt) << expected[index].name;
    EXPECT_EQ(expected[index].flags, parameter.paramdesc.wParamFlags) << expected[index].name;
    if (parameter.tdesc.vt == VT_PTR) {
      EXPECT_EQ(expected[index].pointedTo, parameter.tdesc.lptdesc->vt) << expected[index].name;
    }
  }
}

TEST_P(MemberDescriptionTest, NamesItsParameters) {
  BSTR names[4] = {};
  UINT count = 0;
  ASSERT_HRESULT(S_OK, members->GetNames(Expected().id, names, 4, &count));
  Lines found;
  for (UINT index = 0; index < count; ++index)
    found.push_back(Narrow(BString(names[index])));
  Lines expected = {Expected().name};
  for (const Parameter& parameter : Expected().parameters)
    expected.push_back(parameter.name);
  EXPECT_EQ(expected, found);
}

INSTANTIATE_TEST_SUITE_P(Rows, MemberDescriptionTest, testing::Range(std::size_t{0}, kMembers.size()), [](const auto& row) {
  const char* const kind =
      kMembers[row.param].kind == INVOKE_PROPERTYGET ? "Get"
      : kMembers[row.param].kind == INVOKE_PROPERTYPUT
          ? "Put"
          : "";
  return std::string(kMembers[row.param].name) + kind;
});

}  // namespace
