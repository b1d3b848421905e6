// The threads and the apartments that controls live in.

#include <gtest/gtest.h>

#include "host/Apartments.h"
#include "host/ControlFixture.h"

using Microsoft::WRL::ComPtr;

namespace {

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
    ExpectApartment(GetParam());
  });
}

INSTANTIATE_TEST_SUITE_P(Apartments, ApartmentTest,
                         testing::Values(Apartment::SingleThreaded, Apartment::MultiThreaded, Apartment::None),
                         [](const auto& row) { return NameOf(row.param); });

using ControlsTest = ControlTest;

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
