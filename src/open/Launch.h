#pragma once

#include <string>

// What the program does for a link: reads the raw command line, runs the manifest as a page would, shows what people need to
// see, and hands the page that it opens to the user's browser. Gives the exit code, with the meaning that it has for
// `norvik run`.
int Launch(const std::wstring& commandLine);
