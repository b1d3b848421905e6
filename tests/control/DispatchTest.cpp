// The control as a script host sees it: names, type information, and calls through IDispatch. Nothing is registered.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"
#include "host/Invocation.h"

using Microsoft::WRL::ComPtr;

namespace {

class DispatchTest : public ControlTest {
 protected:
  HRESULT FindName(const std::string& name, DISPID& id) {
    std::wstring wide = Wide(name);
    wchar_t* text = wide.data();
    return control->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_NEUTRAL, &id);
  }

  Invocation Call(DISPID member, const std::vector<Variant>& arguments) {
    return Invoke(control.Get(), member, DISPATCH_METHOD, arguments);
  }

  Invocation Get(DISPID member) { return Invoke(control.Get(), member, DISPATCH_PROPERTYGET); }

  Variant Manifest(const std::string& commands) { return Variant::Text(Narrow(Serve(commands))); }
};

TEST_F(DispatchTest, ThereIsOneTypeInformation) {
  UINT count = 99;
  EXPECT_HRESULT(S_OK, control->GetTypeInfoCount(&count));
  EXPECT_EQ(1u, count);
  EXPECT_HRESULT(E_POINTER, control->GetTypeInfoCount(nullptr));
}

TEST_F(DispatchTest, TheTypeInformationIsThatOfTheInterface) {
  ComPtr<ITypeInfo> information;
  ASSERT_HRESULT(S_OK, control->GetTypeInfo(0, LOCALE_NEUTRAL, &information));
  TYPEATTR* attributes = nullptr;
  ASSERT_HRESULT(S_OK, information->GetTypeAttr(&attributes));
  EXPECT_EQ(IID_IAXNorvik, attributes->guid);
  information->ReleaseTypeAttr(attributes);
}

TEST_F(DispatchTest, ThereIsNoOtherTypeInformation) {
  ITypeInfo* information = reinterpret_cast<ITypeInfo*>(this);
  EXPECT_HRESULT(DISP_E_BADINDEX, control->GetTypeInfo(1, LOCALE_NEUTRAL, &information));
  EXPECT_EQ(nullptr, information);
  EXPECT_HRESULT(E_POINTER, control->GetTypeInfo(0, LOCALE_NEUTRAL, nullptr));
}

TEST_F(DispatchTest, MembersHaveNamesWhateverTheirCase) {
  const std::pair<const char*, DISPID> names[] = {
      {"Execute", kExecute},
      {"ExecuteNavigate", kExecuteNavigate},
      {"SetEnableLogDebug", kSetEnableLogDebug},
      {"ManifestURL", kManifestURL},
      {"LogDebug", kLogDebug},
      {"execute", kExecute},
      {"manifesturl", kManifestURL},
      {"LOGDEBUG", kLogDebug},
  };
  for (const auto& [name, expected] : names) {
    DISPID id = 99;
    EXPECT_HRESULT(S_OK, FindName(name, id)) << name;
    EXPECT_EQ(expected, id) << name;
  }
}

TEST_F(DispatchTest, OtherNamesAreUnknown) {
  for (const char* name : {"", "Execut", "ExecuteX", "get_LogDebug", "Run"}) {
    DISPID id = 99;
    EXPECT_HRESULT(DISP_E_UNKNOWNNAME, FindName(name, id)) << name;
    EXPECT_EQ(DISPID_UNKNOWN, id) << name;
  }
}

TEST_F(DispatchTest, ParametersHaveNames) {
  std::wstring texts[] = {L"ExecuteNavigate", L"pbstrNavigateURL", L"bstrManifestURL"};
  wchar_t* names[] = {texts[0].data(), texts[1].data(), texts[2].data()};
  DISPID ids[] = {99, 99, 99};
  EXPECT_HRESULT(S_OK, control->GetIDsOfNames(IID_NULL, names, 3, LOCALE_NEUTRAL, ids));
  EXPECT_EQ(kExecuteNavigate, ids[0]);
  EXPECT_EQ(1, ids[1]);
  EXPECT_EQ(0, ids[2]);
}

TEST_F(DispatchTest, ReservedArgumentsMustBeNothing) {
  DISPID id = 99;
  std::wstring text = L"Execute";
  wchar_t* name = text.data();
  EXPECT_HRESULT(DISP_E_UNKNOWNINTERFACE, control->GetIDsOfNames(IID_IDispatch, &name, 1, LOCALE_NEUTRAL, &id));
  EXPECT_EQ(99, id);
  DISPPARAMS none = {};
  EXPECT_HRESULT(
      DISP_E_UNKNOWNINTERFACE,
      control->Invoke(kManifestURL, IID_IDispatch, LOCALE_NEUTRAL, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr));
}

TEST_F(DispatchTest, ExecuteCarriesOutTheManifest) {
  EXPECT_HRESULT(S_OK, Call(kExecute, {Manifest(Copy("a.txt"))}).code);
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
}

TEST_F(DispatchTest, AMembersFailureReachesTheScript) {
  EXPECT_HRESULT(E_INVALIDARG, Call(kExecute, {Variant::Text("")}).code);
  EXPECT_HRESULT(E_ACCESSDENIED, Call(kExecute, {Variant::Text("http://127.0.0.1/control-run.xml")}).code);
}

TEST_F(DispatchTest, AFailedCommandIsNoFailureForTheScript) {
  EXPECT_HRESULT(S_OK, Call(kExecute, {Manifest(CopyRefused() + Copy("b.txt"))}).code);
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
  EXPECT_EQ("ERROR At least one command failed during the 'Execute' or 'ExecuteNavigate' method.", LastMessage(kRunLog));
}

TEST_F(DispatchTest, ExecuteNavigateFillsAStringThatIsPassedByReference) {
  BString url;
  EXPECT_HRESULT(S_OK, Call(kExecuteNavigate, {Manifest(OpenInBrowser("page.htm")), Variant::TextAt(url.Receive())}).code);
  EXPECT_EQ(FileUrl("page.htm"), Narrow(url));
}

TEST_F(DispatchTest, ExecuteNavigateLeavesTheStringAloneWithoutABrowsersFile) {
  BString url = Automation("as it was");
  BSTR place = url.Get();
  EXPECT_HRESULT(S_OK, Call(kExecuteNavigate, {Manifest(Copy("a.txt")), Variant::TextAt(&place)}).code);
  EXPECT_EQ(url.Get(), place);
  EXPECT_EQ("as it was", Narrow(place));
}

TEST_F(DispatchTest, ArgumentsMayBeNamed) {
  BString url;
  const Variant manifest = Manifest(OpenInBrowser("page.htm"));
  VARIANT arguments[] = {*manifest.Get(), *Variant::TextAt(url.Receive()).Get()};
  DISPID names[] = {0, 1};
  DISPPARAMS parameters = {arguments, names, 2, 2};
  EXPECT_HRESULT(S_OK, control->Invoke(kExecuteNavigate, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, nullptr,
                                       nullptr, nullptr));
  EXPECT_EQ(FileUrl("page.htm"), Narrow(url));
}

TEST_F(DispatchTest, SetEnableLogDebugTakesAFlag) {
  EXPECT_HRESULT(S_OK, Call(kSetEnableLogDebug, {Variant::Bool(VARIANT_FALSE)}).code);
  EXPECT_EQ("11 0", Show(Get(kLogDebug).result));
  EXPECT_HRESULT(S_OK, Call(kSetEnableLogDebug, {Variant::Bool(VARIANT_TRUE)}).code);
  EXPECT_EQ("11 -1", Show(Get(kLogDebug).result));
}

TEST_F(DispatchTest, TheManifestUrlIsAProperty) {
  EXPECT_HRESULT(S_OK, Get(kManifestURL).code);
  EXPECT_EQ("8 ", Show(Get(kManifestURL).result));
  EXPECT_HRESULT(S_OK, InvokePut(control.Get(), kManifestURL, Variant::Text("any text")).code);
  EXPECT_EQ("8 any text", Show(Get(kManifestURL).result));
}

TEST_F(DispatchTest, DebugLoggingIsAProperty) {
  EXPECT_EQ("11 1", Show(Get(kLogDebug).result));
  EXPECT_HRESULT(S_OK, InvokePut(control.Get(), kLogDebug, Variant::Bool(VARIANT_FALSE)).code);
  EXPECT_EQ("11 0", Show(Get(kLogDebug).result));
}

TEST_F(DispatchTest, APropertyMayBeReadAsAMethodToo) {
  // Some script hosts cannot tell the one from the other and ask for both.
  const Invocation call = Invoke(control.Get(), kLogDebug, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
  EXPECT_HRESULT(S_OK, call.code);
  EXPECT_EQ("11 1", Show(call.result));
}

TEST_F(DispatchTest, OtherMembersAreNotFound) {
  for (const DISPID member : {0, 6, 99, -1}) {
    EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, Call(member, {}).code) << member;
    EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, Get(member).code) << member;
  }
}

TEST_F(DispatchTest, AMethodIsNoProperty) {
  EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, Get(kExecute).code);
  EXPECT_HRESULT(DISP_E_MEMBERNOTFOUND, InvokePut(control.Get(), kExecute, Variant::Text("any")).code);
}

}  // namespace
