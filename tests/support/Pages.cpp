#include "support/Pages.h"

#include <regex>

#include "support/Files.h"

std::string ReadPage(const std::string& name) {
  return std::regex_replace(ReadWholeFile(ProjectFile(name)), std::regex("\r\n"), "\n");
}

std::vector<std::string> Blocks(const std::string& page, const std::string& language) {
  std::vector<std::string> blocks;
  const std::string opening = "\n```" + language + "\n";
  for (std::size_t start = page.find(opening); start != std::string::npos; start = page.find(opening, start)) {
    start += opening.size();
    const std::size_t end = page.find("\n```", start);
    blocks.push_back(page.substr(start, end - start + 1));
  }
  return blocks;
}
