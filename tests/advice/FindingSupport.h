#pragma once

#include <string>
#include <vector>

#include "advice/Finding.h"

// The findings of one code.
inline Findings OfCode(const Findings& findings, const std::string& code) {
  Findings found;
  for (const Finding& finding : findings) {
    if (finding.code == code)
      found.push_back(finding);
  }
  return found;
}

// The codes, in the order of the findings, separated by blanks.
inline std::string CodesOf(const Findings& findings) {
  std::string codes;
  for (const Finding& finding : findings)
    codes += (codes.empty() ? "" : " ") + finding.code;
  return codes;
}

// Finds out whether a message holds a text.
inline bool Says(const Finding& finding, const std::string& text) {
  return finding.message.find(text) != std::string::npos;
}
