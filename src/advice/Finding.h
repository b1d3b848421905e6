#pragma once

#include <string>
#include <vector>

enum class FindingLevel { Error, Warning, Note };

// Something that the reader of a permission file or a manifest should know about it.
struct Finding {
  FindingLevel level;
  std::string code;     // stable, as it is documented: "url-no-separator"
  int line;             // of the document, counted from 1; 0 when it is about no line
  std::string entry;    // the entry or the command's text that it is about; empty when it is about the whole file
  std::string message;  // a sentence or two, in UTF-8, without user names and passwords
};

using Findings = std::vector<Finding>;

// "error", "warning" or "note".
const char* NameOf(FindingLevel level);
