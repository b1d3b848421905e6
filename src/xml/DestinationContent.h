#pragma once

#include "common/Windows.h"

#include <msxml2.h>

#include "common/Text.h"

// A `Destination` with content that the document type forbids.
struct ForbiddenDestination {
  LONG index = 0;   // among all `Destination` elements of the document, from 0
  BString content;  // the name of the first child that may not stand where it stands; null when a folder is missing
};

// Checks the content of every `Destination` element of a manifest or a permission file; any other document has nothing to be
// checked. A parser has done this already, unless it passes over content models in which an element's name alone does not
// tell the branch that is meant: both document types have such a one there.
// S_OK; S_FALSE for content that the document type forbids, with the first such element in `forbidden`; the parser's
// failure.
[[nodiscard]] HRESULT CheckDestinations(IXMLDOMDocument2* document, ForbiddenDestination& forbidden);
