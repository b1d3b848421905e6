#pragma once

#include "common/Windows.h"

// Puts the thread into a single-threaded apartment of COM for as long as the object lives; one that is in the multithreaded
// apartment stays there.
class Apartment {
 public:
  Apartment() : initialized(CoInitialize(nullptr)) {}
  ~Apartment() {
    if (SUCCEEDED(initialized))
      CoUninitialize();
  }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

 private:
  HRESULT initialized;
};
