#include "host/Apartments.h"

#include <thread>

#include "support/HResult.h"

namespace {

// What a thread of the apartment is told that asks for one of its own.
HRESULT AnswerTo(Apartment apartment) {
  switch (apartment) {
    case Apartment::SingleThreaded:
      return S_FALSE;
    case Apartment::MultiThreaded:
      return RPC_E_CHANGED_MODE;
    case Apartment::None:
      break;
  }
  return S_OK;
}

}  // namespace

const char* NameOf(Apartment apartment) {
  switch (apartment) {
    case Apartment::SingleThreaded:
      return "SingleThreaded";
    case Apartment::MultiThreaded:
      return "MultiThreaded";
    case Apartment::None:
      break;
  }
  return "None";
}

void InThread(Apartment apartment, const std::function<void()>& work) {
  std::thread([&] {
    if (apartment == Apartment::None) {
      work();
      return;
    }
    const DWORD kind = apartment == Apartment::SingleThreaded ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED;
    EXPECT_HRESULT(S_OK, CoInitializeEx(nullptr, kind));
    work();
    CoUninitialize();
  }).join();
}

void ExpectApartment(Apartment apartment) {
  const HRESULT again = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  EXPECT_HRESULT(AnswerTo(apartment), again);
  if (SUCCEEDED(again))
    CoUninitialize();
}
