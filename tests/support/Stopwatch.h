#pragma once

#include "common/Windows.h"

// How many seconds of real time `function` takes.
template <typename Function>
double SecondsOf(Function function) {
  LARGE_INTEGER frequency, start, end;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&start);
  function();
  QueryPerformanceCounter(&end);
  return static_cast<double>(end.QuadPart - start.QuadPart) / static_cast<double>(frequency.QuadPart);
}
