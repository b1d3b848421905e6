// A copy of the module that nobody registered: its type library is its own, and stays its own.

#include <gtest/gtest.h>

#include "host/ControlFixture.h"
#include "host/Invocation.h"
#include "host/RegistryKeys.h"
#include "support/ImportPatch.h"

using Microsoft::WRL::ComPtr;

namespace {

class UnregisteredControlTest : public ControlTest {
 protected:
  HRESULT FindExecute(DISPID& id) {
    std::wstring text = L"Execute";
    wchar_t* name = text.data();
    return control->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_NEUTRAL, &id);
  }

  // What every call through IDispatch answers when the type library cannot be had.
  void ExpectNoTypeLibrary(HRESULT code) {
    ITypeInfo* information = reinterpret_cast<ITypeInfo*>(this);
    EXPECT_HRESULT(code, control->GetTypeInfo(0, LOCALE_NEUTRAL, &information));
    EXPECT_EQ(nullptr, information);
    DISPID id = 99;
    EXPECT_HRESULT(code, FindExecute(id));
    EXPECT_EQ(99, id);
    EXPECT_HRESULT(code, Invoke(control.Get(), kLogDebug, DISPATCH_PROPERTYGET).code);
  }

  ModuleEntriesAside aside;
};

TEST_F(UnregisteredControlTest, CanBeCalledByName) {
  DISPID id = 99;
  ASSERT_HRESULT(S_OK, FindExecute(id));
  const Variant manifest = Variant::Text(Narrow(Serve(Copy("a.txt"))));
  EXPECT_HRESULT(S_OK, Invoke(control.Get(), id, DISPATCH_METHOD, {manifest}).code);
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
}

TEST_F(UnregisteredControlTest, RegistersNothingOnTheWay) {
  DISPID id = 99;
  ASSERT_HRESULT(S_OK, FindExecute(id));
  EXPECT_EQ(Lines{}, DumpClassKeys());
  EXPECT_EQ(Lines{}, DumpClassKey(LibraryKey()));
  EXPECT_EQ(Lines{}, DumpClassKey(InterfaceKey()));
}

TEST_F(UnregisteredControlTest, ATypeLibraryThatCannotBeLoadedIsTold) {
  PATCH_IMPORT(
      library, LoadTypeLibEx, [](auto, auto...) -> HRESULT { return TYPE_E_UNSUPFORMAT; }, module.Handle());
  ExpectNoTypeLibrary(TYPE_E_UNSUPFORMAT);
}

TEST_F(UnregisteredControlTest, WithoutTheModulesPathThereIsNoTypeLibrary) {
  PATCH_IMPORT(path, GetModuleFileNameW, FailWith<DWORD>(0, ERROR_INVALID_HANDLE), module.Handle());
  ExpectNoTypeLibrary(TYPE_E_CANTLOADLIBRARY);
}

// The system cuts a path that is too long, and says that it filled the buffer.
TEST_F(UnregisteredControlTest, APathThatDoesNotFitGivesNoTypeLibrary) {
  PATCH_IMPORT(
      path, GetModuleFileNameW,
      [](auto original, HMODULE handle, wchar_t* buffer, DWORD size) -> DWORD {
        EXPECT_LT(0u, original(handle, buffer, size));
        return size;
      },
      module.Handle());
  ExpectNoTypeLibrary(TYPE_E_CANTLOADLIBRARY);
}

TEST_F(UnregisteredControlTest, APathThatJustFitsIsTaken) {
  PATCH_IMPORT(
      path, GetModuleFileNameW,
      [](auto original, HMODULE handle, wchar_t* buffer, DWORD size) -> DWORD {
        EXPECT_LT(0u, original(handle, buffer, size));
        return size - 1;
      },
      module.Handle());
  DISPID id = 99;
  EXPECT_HRESULT(S_OK, FindExecute(id));
  EXPECT_EQ(kExecute, id);
}

TEST_F(UnregisteredControlTest, TheLibraryIsLoadedOnce) {
  int loads = 0;
  PATCH_IMPORT(
      library, LoadTypeLibEx,
      [&loads](auto original, auto... arguments) {
    ++loads;
    return original(arguments...);
      },
      module.Handle());
  DISPID id = 99;
  EXPECT_HRESULT(S_OK, FindExecute(id));
  EXPECT_HRESULT(S_OK, FindExecute(id));
  EXPECT_HRESULT(S_OK, Invoke(control.Get(), kLogDebug, DISPATCH_PROPERTYGET).code);
  EXPECT_EQ(1, loads);
}

TEST_F(UnregisteredControlTest, AFailureToLoadTheLibraryIsNotRemembered) {
  DISPID id = 99;
  {
    PATCH_IMPORT(
        library, LoadTypeLibEx, [](auto, auto...) -> HRESULT { return E_OUTOFMEMORY; }, module.Handle());
    EXPECT_HRESULT(E_OUTOFMEMORY, FindExecute(id));
  }
  EXPECT_HRESULT(S_OK, FindExecute(id));
  EXPECT_EQ(kExecute, id);
}

}  // namespace
