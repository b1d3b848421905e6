#pragma once

#include "common/Windows.h"

#include <string>

#include "common/RegistryKey.h"

// A key to read, as programs of that width (64 or 32) see it; none when it cannot be opened.
RegistryKey OpenKey(HKEY root, const wchar_t* name, int bits);

// The text of a value (null: the key's default one), with the environment's variables in it replaced; empty when there is
// none.
std::wstring ReadText(const RegistryKey& key, const wchar_t* name);

// The number of a value; 0 when there is none.
DWORD ReadNumber(const RegistryKey& key, const wchar_t* name);
