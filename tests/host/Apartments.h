#pragma once

#include "common/Windows.h"

#include <functional>

// What COM is on a thread of a host.
enum class Apartment { SingleThreaded, MultiThreaded, None };

// A name for a row of a table.
const char* NameOf(Apartment apartment);

// Carries `work` out on a thread of its own that entered the apartment, and waits for it.
void InThread(Apartment apartment, const std::function<void()>& work);

// Expects the thread to be in that apartment still, or in none.
void ExpectApartment(Apartment apartment);
