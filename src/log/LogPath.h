#pragma once

#include "common/Windows.h"

// Finds the path of the log file for `name` (a file name, path or URL; may be null): "Vantor\Logs\Norvik" below the user's
// local application data folder, then the name's final component with ".log" in place of its extension. Creates the folder.
// What cannot be had is replaced in steps: the folder by "C:\", the name by "Norvik.log".
void ChooseLogPath(const wchar_t* name, char (&path)[MAX_PATH]);
