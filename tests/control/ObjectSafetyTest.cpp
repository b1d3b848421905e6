// The options that a host asks for before it lets a page script the control.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <objsafe.h>
#include <ocidl.h>
#include <oleidl.h>

#include "host/ControlFixture.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr DWORD kUntrustedCaller = INTERFACESAFE_FOR_UNTRUSTED_CALLER;
constexpr DWORD kUntrustedData = INTERFACESAFE_FOR_UNTRUSTED_DATA;
constexpr DWORD kUnset = 0xCDCDCDCD;

// The compiler knows no identifier of IObjectSafety.
ComPtr<IObjectSafety> SafetyOf(IUnknown* object) {
  ComPtr<IObjectSafety> safety;
  EXPECT_HRESULT(S_OK, object->QueryInterface(IID_IObjectSafety, reinterpret_cast<void**>(safety.GetAddressOf())));
  return safety;
}

class ObjectSafetyTest : public ControlTest {
 protected:
  HRESULT Set(DWORD mask, DWORD enabled, REFIID interfaceId = IID_IDispatch) {
    return SafetyOf(control.Get())->SetInterfaceSafetyOptions(interfaceId, mask, enabled);
  }

  HRESULT Get(REFIID interfaceId = IID_IDispatch) {
    return SafetyOf(control.Get())->GetInterfaceSafetyOptions(interfaceId, &supported, &enabled);
  }

  void ExpectEnabled(DWORD expected) {
    EXPECT_HRESULT(S_OK, Get());
    EXPECT_EQ(kUntrustedCaller, supported);
    EXPECT_EQ(expected, enabled);
  }

  DWORD supported = kUnset;
  DWORD enabled = kUnset;
};

TEST_F(ObjectSafetyTest, NothingIsEnabledAtFirst) {
  ExpectEnabled(0);
}

TEST_F(ObjectSafetyTest, SafetyForUntrustedCallersCanBeEnabledAndDisabled) {
  EXPECT_HRESULT(S_OK, Set(kUntrustedCaller, kUntrustedCaller));
  ExpectEnabled(kUntrustedCaller);
  EXPECT_HRESULT(S_OK, Set(kUntrustedCaller, 0));
  ExpectEnabled(0);
}

TEST_F(ObjectSafetyTest, TheOptionsAreThoseOfTheWholeControl) {
  EXPECT_HRESULT(S_OK, Set(kUntrustedCaller, kUntrustedCaller, IID_IPersistPropertyBag));
  for (const IID* interfaceId : {&IID_IUnknown, &IID_IAXNorvik, &IID_IDispatch, &IID_IObjectWithSite, &IID_IObjectSafety}) {
    EXPECT_HRESULT(S_OK, Get(*interfaceId));
    EXPECT_EQ(kUntrustedCaller, supported);
    EXPECT_EQ(kUntrustedCaller, enabled);
  }
}

TEST_F(ObjectSafetyTest, WhatTheMaskLeavesOutStaysAsItWas) {
  EXPECT_HRESULT(S_OK, Set(kUntrustedCaller, kUntrustedCaller));
  EXPECT_HRESULT(S_OK, Set(0, 0));
  ExpectEnabled(kUntrustedCaller);
}

TEST_F(ObjectSafetyTest, WhatIsEnabledOutsideOfTheMaskIsLeftOut) {
  EXPECT_HRESULT(S_OK, Set(0, kUntrustedCaller | kUntrustedData));
  ExpectEnabled(0);
  EXPECT_HRESULT(S_OK, Set(kUntrustedCaller, kUntrustedCaller | kUntrustedData));
  ExpectEnabled(kUntrustedCaller);
}

TEST_F(ObjectSafetyTest, AMaskWithAnyOtherOptionIsRefusedAsAWhole) {
  for (const DWORD mask : {kUntrustedData, kUntrustedCaller | kUntrustedData, DWORD{0x80000000}, DWORD{0xFFFFFFFF}}) {
    EXPECT_HRESULT(E_FAIL, Set(mask, kUntrustedCaller));
    ExpectEnabled(0);
  }
}

TEST_F(ObjectSafetyTest, AnInterfaceThatTheControlLacksHasNoOptions) {
  EXPECT_HRESULT(S_OK, Set(kUntrustedCaller, kUntrustedCaller));
  EXPECT_HRESULT(E_NOINTERFACE, Get(IID_IOleObject));
  EXPECT_EQ(0u, supported);
  EXPECT_EQ(0u, enabled);
}

TEST_F(ObjectSafetyTest, AnInterfaceThatTheControlLacksCannotBeSet) {
  EXPECT_HRESULT(E_NOINTERFACE, Set(kUntrustedCaller, kUntrustedCaller, IID_IOleObject));
  EXPECT_HRESULT(E_NOINTERFACE, Set(kUntrustedData, kUntrustedData, IID_IOleObject));
  ExpectEnabled(0);
}

TEST_F(ObjectSafetyTest, NoPlaceForAnOptionIsRefused) {
  const auto safety = SafetyOf(control.Get());
  EXPECT_HRESULT(E_POINTER, safety->GetInterfaceSafetyOptions(IID_IDispatch, nullptr, &enabled));
  EXPECT_EQ(kUnset, enabled);
  EXPECT_HRESULT(E_POINTER, safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, nullptr));
  EXPECT_EQ(kUnset, supported);
  EXPECT_HRESULT(E_POINTER, safety->GetInterfaceSafetyOptions(IID_IOleObject, nullptr, nullptr));
}

TEST_F(ObjectSafetyTest, EveryControlHasOptionsOfItsOwn) {
  const auto other = module.CreateControl();
  EXPECT_HRESULT(S_OK, Set(kUntrustedCaller, kUntrustedCaller));
  EXPECT_HRESULT(S_OK, SafetyOf(other.Get())->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled));
  EXPECT_EQ(0u, enabled);
}

}  // namespace
