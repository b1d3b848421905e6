#pragma once

#include <string>
#include <utility>
#include <vector>

// A document as it stands, element by element with its lines, whatever the module thinks of it: what the parser's own
// documents cannot tell.
struct Element {
  std::string name;
  std::string text;  // of the element itself, as it stands; UTF-8
  int line = 0;      // on which its tag ends, counted from 1; 0 when the platform cannot tell
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<Element> children;

  // The first child of that name; null when there is none.
  const Element* Child(const char* childName) const;

  // The text without white space around it.
  std::string TrimmedText() const;
};

struct Outline {
  bool isWellFormed = false;

  // Where and why it is not; the line is 0 and the reason empty where the platform does not tell.
  int errorLine = 0;
  int errorColumn = 0;
  std::string errorReason;

  // The document's element; what was read of it when the document is not well-formed. Without a name when there is none.
  Element root;
};

// Reads the bytes of a document. Its document type counts for nothing, as for the module: no entity of its own is known, and
// nothing is fetched. Unanswered when the platform's reader cannot be had.
Outline OutlineOf(const std::string& document);
