#pragma once

#include "common/Windows.h"

// The class of the registrar of the system's atl.dll, which carries out registration scripts.
constexpr CLSID kRegistrarClass = {0x44EC053A, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
