// Which interfaces the control answers to, and that all of them are one object.

#include "common/Windows.h"

#include <dispex.h>
#include <gtest/gtest.h>
#include <objsafe.h>
#include <ocidl.h>
#include <oleidl.h>

#include "host/ControlFixture.h"

using Microsoft::WRL::ComPtr;

namespace {

struct Named {
  const char* name;
  const GUID* interfaceId;
};

const Named kAnswered[] = {
    {"Unknown", &IID_IUnknown},           {"Norvik", &IID_IAXNorvik},
    {"Dispatch", &IID_IDispatch},         {"ObjectWithSite", &IID_IObjectWithSite},
    {"ObjectSafety", &IID_IObjectSafety}, {"PersistPropertyBag", &IID_IPersistPropertyBag},
};

const Named kRefused[] = {
    {"Nothing", &IID_NULL},
    {"Persist", &IID_IPersist},
    {"PersistStream", &IID_IPersistStream},
    {"PersistStreamInit", &IID_IPersistStreamInit},
    {"PersistStorage", &IID_IPersistStorage},
    {"PersistFile", &IID_IPersistFile},
    {"PersistPropertyBag2", &IID_IPersistPropertyBag2},
    {"OleObject", &IID_IOleObject},
    {"OleControl", &IID_IOleControl},
    {"OleWindow", &IID_IOleWindow},
    {"OleInPlaceObject", &IID_IOleInPlaceObject},
    {"OleInPlaceActiveObject", &IID_IOleInPlaceActiveObject},
    {"ViewObject", &IID_IViewObject},
    {"ViewObject2", &IID_IViewObject2},
    {"DataObject", &IID_IDataObject},
    {"QuickActivate", &IID_IQuickActivate},
    {"ConnectionPointContainer", &IID_IConnectionPointContainer},
    {"ProvideClassInfo", &IID_IProvideClassInfo},
    {"ProvideClassInfo2", &IID_IProvideClassInfo2},
    {"SupportErrorInfo", &IID_ISupportErrorInfo},
    {"DispatchEx", &__uuidof(IDispatchEx)},
    {"Marshal", &IID_IMarshal},
    {"ClassFactory", &IID_IClassFactory},
    {"TheClassIdentifier", &CLSID_AXNorvik},
};

std::string NameOf(const testing::TestParamInfo<Named>& row) {
  return row.param.name;
}

ComPtr<IUnknown> Query(IUnknown* object, REFIID interfaceId) {
  ComPtr<IUnknown> found;
  EXPECT_HRESULT(S_OK, object->QueryInterface(interfaceId, reinterpret_cast<void**>(found.GetAddressOf())));
  return found;
}

class AnsweredInterfaceTest : public ControlTest, public testing::WithParamInterface<Named> {};

TEST_P(AnsweredInterfaceTest, IsTheSameObject) {
  const ComPtr<IUnknown> object = Query(control.Get(), *GetParam().interfaceId);
  ASSERT_TRUE(object);
  EXPECT_EQ(Query(control.Get(), IID_IUnknown).Get(), Query(object.Get(), IID_IUnknown).Get());
}

TEST_P(AnsweredInterfaceTest, LeadsToAllOthers) {
  const ComPtr<IUnknown> object = Query(control.Get(), *GetParam().interfaceId);
  for (const Named& other : kAnswered) {
    const ComPtr<IUnknown> found = Query(object.Get(), *other.interfaceId);
    EXPECT_EQ(Query(control.Get(), *other.interfaceId).Get(), found.Get()) << other.name;
  }
}

TEST_P(AnsweredInterfaceTest, CountsAReference) {
  control->AddRef();
  const ULONG before = control->Release();
  const ComPtr<IUnknown> object = Query(control.Get(), *GetParam().interfaceId);
  control->AddRef();
  EXPECT_EQ(before + 1, control->Release());
}

TEST_P(AnsweredInterfaceTest, CanBeAskedForWhenTheControlIsMade) {
  ComPtr<IUnknown> object;
  EXPECT_HRESULT(S_OK, module.Factory()->CreateInstance(
                           nullptr, *GetParam().interfaceId, reinterpret_cast<void**>(object.GetAddressOf())));
  EXPECT_TRUE(object);
}

INSTANTIATE_TEST_SUITE_P(Rows, AnsweredInterfaceTest, testing::ValuesIn(kAnswered), NameOf);

class RefusedInterfaceTest : public ControlTest, public testing::WithParamInterface<Named> {};

TEST_P(RefusedInterfaceTest, GivesNothing) {
  for (const Named& from : kAnswered) {
    const ComPtr<IUnknown> object = Query(control.Get(), *from.interfaceId);
    void* refused = this;
    EXPECT_HRESULT(E_NOINTERFACE, object->QueryInterface(*GetParam().interfaceId, &refused)) << from.name;
    EXPECT_EQ(nullptr, refused) << from.name;
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, RefusedInterfaceTest, testing::ValuesIn(kRefused), NameOf);

using InterfacesTest = ControlTest;

TEST_F(InterfacesTest, NoPlaceForTheInterfaceIsRefused) {
  EXPECT_HRESULT(E_POINTER, control->QueryInterface(IID_IUnknown, nullptr));
}

TEST_F(InterfacesTest, TheDispatchInterfaceIsTheControlsOwn) {
  EXPECT_EQ(static_cast<IUnknown*>(control.Get()), Query(control.Get(), IID_IDispatch).Get());
}

TEST_F(InterfacesTest, TheClassIdentifierIsTheControls) {
  CLSID classId = CLSID_NULL;
  EXPECT_HRESULT(S_OK, As<IPersistPropertyBag>()->GetClassID(&classId));
  EXPECT_EQ(CLSID_AXNorvik, classId);
}

TEST_F(InterfacesTest, NoPlaceForTheClassIdentifierIsRefused) {
  EXPECT_HRESULT(E_FAIL, As<IPersistPropertyBag>()->GetClassID(nullptr));
}

}  // namespace
