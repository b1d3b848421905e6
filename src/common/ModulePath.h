#pragma once

#include "common/Windows.h"

// The file from which the module was loaded, and its folder. Process-wide; recorded once, when the module is loaded.

// Records the path of `module`. A path that cannot be had, or is longer than 259 characters, is recorded as empty.
void RecordModulePath(HMODULE module);

// Records `path` (at most 259 characters) as the module's path.
void SetModulePath(const char* path);

// The module's full path; an empty text when it is unknown.
const char* GetModulePath();

// The module's folder without a trailing separator; an empty text when the path is unknown.
const char* GetModuleFolder();
