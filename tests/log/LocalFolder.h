#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <string>

// A handler of SHGetFolderPathA: gives the local application data folder another path, of which the test is the owner.
inline auto FolderAt(const std::string& path, HRESULT result = S_OK) {
  return [path, result](auto, HWND window, int folder, HANDLE token, DWORD flags, char* buffer) -> HRESULT {
    EXPECT_EQ(nullptr, window);
    EXPECT_EQ(CSIDL_LOCAL_APPDATA, folder);
    EXPECT_EQ(nullptr, token);
    EXPECT_EQ(0u, flags);
    lstrcpynA(buffer, path.c_str(), MAX_PATH);
    return result;
  };
}
