#include <gtest/gtest.h>

#include "host/ControlFixture.h"

using Microsoft::WRL::ComPtr;

namespace {

class ClassFactoryTest : public ModuleTest {
 protected:
  void TearDown() override {
    factory.Reset();
    ModuleTest::TearDown();
  }

  HRESULT CreateInstance(IUnknown* outer, REFIID interfaceId, void** object) {
    return factory->CreateInstance(outer, interfaceId, object);
  }

  ComPtr<IClassFactory> factory = module.Factory();
};

TEST_F(ClassFactoryTest, MakesControls) {
  ComPtr<IAXNorvik> first, second;
  EXPECT_HRESULT(S_OK, CreateInstance(nullptr, IID_IAXNorvik, reinterpret_cast<void**>(first.GetAddressOf())));
  EXPECT_HRESULT(S_OK, CreateInstance(nullptr, IID_IAXNorvik, reinterpret_cast<void**>(second.GetAddressOf())));
  ASSERT_TRUE(first && second);
  EXPECT_NE(first.Get(), second.Get());
}

TEST_F(ClassFactoryTest, RefusesAggregation) {
  void* object = this;
  EXPECT_HRESULT(CLASS_E_NOAGGREGATION, CreateInstance(factory.Get(), IID_IUnknown, &object));
  EXPECT_EQ(nullptr, object);
}

TEST_F(ClassFactoryTest, AControlIsNotMadeForAnInterfaceThatItLacks) {
  void* object = this;
  EXPECT_HRESULT(E_NOINTERFACE, CreateInstance(nullptr, IID_IOleObject, &object));
  EXPECT_EQ(nullptr, object);
  factory.Reset();
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(ClassFactoryTest, NoPlaceForTheControlIsRefused) {
  EXPECT_HRESULT(E_POINTER, CreateInstance(nullptr, IID_IAXNorvik, nullptr));
  EXPECT_HRESULT(E_POINTER, CreateInstance(factory.Get(), IID_IUnknown, nullptr));
}

TEST_F(ClassFactoryTest, AnswersToItsTwoInterfacesOnly) {
  ComPtr<IUnknown> unknown;
  EXPECT_HRESULT(S_OK, factory->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(unknown.GetAddressOf())));
  ComPtr<IClassFactory> again;
  EXPECT_HRESULT(S_OK, unknown->QueryInterface(IID_IClassFactory, reinterpret_cast<void**>(again.GetAddressOf())));
  void* refused = this;
  EXPECT_HRESULT(E_NOINTERFACE, factory->QueryInterface(IID_IMarshal, &refused));
  EXPECT_EQ(nullptr, refused);
  EXPECT_HRESULT(E_POINTER, factory->QueryInterface(IID_IUnknown, nullptr));
}

TEST_F(ClassFactoryTest, KeepsTheModuleLoadedWhileItLives) {
  EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
  factory.Reset();
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(ClassFactoryTest, AControlKeepsTheModuleLoadedWithoutTheFactory) {
  ComPtr<IAXNorvik> control = module.CreateControl();
  factory.Reset();
  EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
  control.Reset();
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

TEST_F(ClassFactoryTest, LocksKeepTheModuleLoadedUntilTheLastIsTakenBack) {
  EXPECT_HRESULT(S_OK, factory->LockServer(TRUE));
  EXPECT_HRESULT(S_OK, factory->LockServer(TRUE));
  factory.Reset();
  EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
  EXPECT_HRESULT(S_OK, module.Factory()->LockServer(FALSE));
  EXPECT_HRESULT(S_FALSE, module.CanUnloadNow());
  EXPECT_HRESULT(S_OK, module.Factory()->LockServer(FALSE));
  EXPECT_HRESULT(S_OK, module.CanUnloadNow());
}

}  // namespace
