#pragma once

#include "common/Windows.h"

#include "common/FileSystem.h"
#include "common/Text.h"

// Folders and file times. Their log lines, and those of the transfer, name the source file FileUtilities.

// The destination folder kinds, by the numbers that commands and permissions share. Cookie and InternetCache are stores that
// the system keeps itself: nothing is created for them and no file in them is looked for.
enum class FolderKind : LONG {
  Path = 1,
  Cookie = 2,
  InternetCache = 3,
  Temp = 4,
  VantorUser = 5,
  Personal = 6,
  Documents = 7,
  LocalApplicationData = 8,
  LocalVantorData = 9,
  CommonApplicationData = 10,
  CommonVantorData = 11,
  ApplicationData = 12,
  VantorData = 13,
};

// Resolves a kind and the text of its element to a folder without a trailing backslash (a drive's root keeps its own).
// The text is the folder itself for Path (the module's folder when empty), a subfolder for Temp, VantorUser, Personal,
// Documents, LocalVantorData, CommonVantorData and VantorData, and not used for the others.
// S_OK; S_FALSE when neither the special folder nor the temporary folder could be had and "C:\" stands in; E_INVALIDARG for
// a kind that is none; E_OUTOFMEMORY when the path is longer than 259 characters; else the system's code. `path` is null
// after a failure.
[[nodiscard]] HRESULT ResolveFolder(FolderKind kind, const char* text, OwnedText& path);

// The special folder `folderId` (a CSIDL number), with up to two subfolders appended; empty or null ones are left out.
// Results as above; after a failure `buffer` holds what had been found by then, which is no path to use.
[[nodiscard]] HRESULT GetSpecialFolder(int folderId, char (&buffer)[MAX_PATH], const char* firstSub, const char* secondSub);

// Creates every missing folder along `path`. S_OK, E_OUTOFMEMORY when the full path is longer than 259 characters, else the
// system's code for the first folder that could not be created.
[[nodiscard]] HRESULT CreatePath(const char* path, FileSystem& files = SystemFiles());

// The last-write time of a file, which is opened alone for that; zero after a failure, which is logged.
[[nodiscard]] HRESULT GetFileWriteTime(const char* path, FILETIME& time);
