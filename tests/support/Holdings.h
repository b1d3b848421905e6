#pragma once

#include "common/Windows.h"

#include <cstdint>

// What the process holds, for a comparison with what it held before.

// The number of the lowest handle that is free: it rises when handles are kept. Not every system counts them.
std::uintptr_t LowestFreeHandle();

// The bytes of all blocks that are in use in the process heap.
SIZE_T HeapBytesInUse();
