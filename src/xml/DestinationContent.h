#pragma once

#include "common/Windows.h"

#include <msxml2.h>

// Checks the content of every `Destination` element of a manifest or a permission file; any other document has nothing to be
// checked. A parser has done this already, unless it passes over content models in which an element's name alone does not
// tell the branch that is meant: both document types have such a one there.
// S_OK; S_FALSE for content that the document type forbids; the parser's failure.
[[nodiscard]] HRESULT CheckDestinations(IXMLDOMDocument2* document);
