#pragma once

#include <string>

// Hands a URL to the user's browser: the program for web pages, whatever kind of file the URL names. False when there is
// none, or it cannot be started.
bool OpenInBrowser(const std::wstring& url);
