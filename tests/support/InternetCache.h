#pragma once

#include <string>

// The local file that the Internet cache holds for a URL or path; empty when it holds none.
std::string CachedFile(const std::string& location);
