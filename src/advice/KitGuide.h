#pragma once

#include <string>
#include <vector>

#include "advice/BrowserKit.h"

constexpr char kSiteListName[] = "ie-mode-sites.xml";

// The text that explains the files of a kit, in lines of at most 100 characters that end in line feeds, ASCII only.
std::string KitGuide(const std::vector<std::string>& origins, const std::vector<KitFile>& files);
