#pragma once

// The one place where <windows.h> is included, so that every file sees the same subset of it.
#ifdef _WINDOWS_
#error "Include common/Windows.h before the system's headers."
#endif

#ifndef STRICT
#define STRICT
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
