#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "support/Seed.h"
#include "torture/CallCounter.h"

// The numbers of the calls of a scenario that a test tries: one in `stride`, and one of each kind (a function and the object
// that it is for) in every eighth scenario; which ones these are depends on Seed, and they are others in the other width.
// With NORVIK_TORTURE=all (scripts/torture) all of them, and with a number in its place that call only.
std::set<std::size_t> ChooseCalls(const std::vector<FallibleCall>& calls, std::size_t scenario, std::uint32_t stride);
