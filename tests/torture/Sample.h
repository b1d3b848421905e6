#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "torture/CallCounter.h"

// What the sample depends on: NORVIK_SEED, a number from 0 to 4294967295 (0 without it).
std::uint32_t Seed();

// The numbers of the calls of a scenario that a test tries: one in `stride`, and one of each kind (a function and the object
// that it is for); which ones these are depends on Seed. With NORVIK_TORTURE=all (scripts/torture) all of them, and with a
// number in its place that call only.
std::set<std::size_t> ChooseCalls(const std::vector<FallibleCall>& calls, std::size_t scenario, std::uint32_t stride);
