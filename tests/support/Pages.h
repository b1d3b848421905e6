#pragma once

#include <string>
#include <vector>

// The project's own pages (ProjectFile says where they lie).

// A file of the project, with line feeds as line ends.
std::string ReadPage(const std::string& name);

// The blocks of a page that are marked with the language.
std::vector<std::string> Blocks(const std::string& page, const std::string& language);
