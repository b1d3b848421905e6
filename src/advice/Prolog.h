#pragma once

#include <string>

// What stands before a document's element, as bytes: the platform's readers would believe it, and fetch and expand whatever
// it names.

// The document with an empty document type in place of its own, and blanks in place of the rest, so that every line stays
// where it is. Without a document type it stays as it is. As for the module, there are no entities then.
std::string WithoutDocumentType(std::string bytes);

// Whether a document's characters have two or four bytes each. The module reads none of these.
bool HasWideCharacters(const std::string& bytes);
