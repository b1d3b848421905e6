// Several controls in one process, and the apartments that they live in.

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "host/ControlFixture.h"

using Microsoft::WRL::ComPtr;

namespace {

using ControlsTest = ControlTest;

TEST_F(ControlsTest, TheOlderOutlivesTheNewer) {
  ComPtr<IAXNorvik> newer = module.CreateControl();
  EXPECT_HRESULT(S_OK, newer->Execute(Serve(Copy("newer.txt")).Get()));
  newer.Reset();
  EXPECT_HRESULT(S_OK, Execute(Copy("older.txt")));
  EXPECT_EQ("newer.txt older.txt", NamesIn(destination.Path()));
}

TEST_F(ControlsTest, TheNewerOutlivesTheOlder) {
  ComPtr<IAXNorvik> newer = module.CreateControl();
  EXPECT_HRESULT(S_OK, Execute(Copy("older.txt")));
  control.Reset();
  EXPECT_HRESULT(S_OK, newer->Execute(Serve(Copy("newer.txt")).Get()));
  EXPECT_EQ("newer.txt older.txt", NamesIn(destination.Path()));
}

TEST_F(ControlsTest, EachHasThePermissionsOfItsTime) {
  installed.WritePermit("http://127.0.0.1:1/", "C:\\Apps\\");
  ComPtr<IAXNorvik> newer = module.CreateControl();
  const BString url = Serve(Copy("a.txt"));
  EXPECT_HRESULT(E_ACCESSDENIED, newer->Execute(url.Get()));
  EXPECT_HRESULT(S_OK, control->Execute(url.Get()));
  EXPECT_HRESULT(E_ACCESSDENIED, newer->Execute(url.Get()));
}

enum class Apartment { SingleThreaded, MultiThreaded, None };

// A thread of a host, with all that the host does there.
void InThread(Apartment apartment, const std::function<void()>& work) {
  std::thread([&] {
    HRESULT entered = E_FAIL;
    if (apartment != Apartment::None)
      entered =
          CoInitializeEx(nullptr, apartment == Apartment::SingleThreaded ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED);
    work();
    if (SUCCEEDED(entered))
      CoUninitialize();
  }).join();
}

class ApartmentTest : public ControlTest, public testing::WithParamInterface<Apartment> {};

TEST_P(ApartmentTest, AControlLivesAndDiesOnAThreadOfItsOwn) {
  control.Reset();
  const BString url = Serve(Copy("a.txt"));
  for (int round = 0; round < 5; ++round) {
    InThread(GetParam(), [&] {
      const ComPtr<IAXNorvik> own = module.CreateControl();
      ASSERT_TRUE(own);
      EXPECT_HRESULT(S_OK, own->Execute(url.Get()));
    });
    EXPECT_HRESULT(S_OK, module.CanUnloadNow());
    EXPECT_EQ("a.txt", NamesIn(destination.Path()));
    ASSERT_TRUE(DeleteFileA(destination.File("a.txt").c_str()));
  }
}

TEST_P(ApartmentTest, TheApartmentOfTheHostIsLeftAsItWas) {
  control.Reset();
  InThread(GetParam(), [&] {
    module.CreateControl().Reset();
    const HRESULT again = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    switch (GetParam()) {
      case Apartment::SingleThreaded:
        EXPECT_HRESULT(S_FALSE, again);
        break;
      case Apartment::MultiThreaded:
        EXPECT_HRESULT(RPC_E_CHANGED_MODE, again);
        break;
      case Apartment::None:
        EXPECT_HRESULT(S_OK, again);
        break;
    }
    if (SUCCEEDED(again))
      CoUninitialize();
  });
}

INSTANTIATE_TEST_SUITE_P(Apartments, ApartmentTest,
                         testing::Values(Apartment::SingleThreaded, Apartment::MultiThreaded, Apartment::None),
                         [](const auto& row) {
  return row.param == Apartment::SingleThreaded ? "SingleThreaded"
         : row.param == Apartment::MultiThreaded
             ? "MultiThreaded"
             : "None";
});

TEST_F(ControlsTest, ControlsOfSeveralThreadsTakeTurns) {
  const BString first = Serve(Copy("a.txt"));
  EXPECT_HRESULT(S_OK, control->Execute(first.Get()));
  InThread(Apartment::SingleThreaded, [&] {
    const ComPtr<IAXNorvik> other = module.CreateControl();
    EXPECT_HRESULT(S_OK, other->Execute(first.Get()));
  });
  EXPECT_HRESULT(S_OK, control->Execute(first.Get()));
  EXPECT_EQ("a.txt", ReadWholeFile(destination.File("a.txt")));
}

}  // namespace
