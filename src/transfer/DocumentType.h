#pragma once

#include "common/Windows.h"

// The document types that the module carries. A document that comes from outside is validated against these and never
// against what it declares itself.

// The whole document type declarations, to be written in place of a document's own; line feeds between their lines and one
// behind the last.
extern const char kManifestDTD[];
extern const char kPermitDTD[];

// The alternative to them: declarations that refer to a file "manifest.dtd" or "permit.dtd" in the module's folder, for
// documents that are prepared with kTransferSystemLine. Process-wide; null until built, and built at most once until freed.
// Nothing is built without a folder or without memory.
void BuildSystemLines(const char* folder);
void FreeSystemLines();
const char* GetManifestSystemLine();
const char* GetPermitSystemLine();
