#pragma once

#include "common/Windows.h"

#include "common/FileSystem.h"

// Creates every missing folder along `path`, from the first one below the drive or the server on, with default security.
// S_OK when the path exists afterwards; E_OUTOFMEMORY when the full path is longer than 259 characters; else the system
// error of the first folder that could not be created, as a result code.
[[nodiscard]] HRESULT CreateFolderTree(const char* path, FileSystem& files = SystemFiles());
