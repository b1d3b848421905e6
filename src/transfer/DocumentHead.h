#pragma once

#include "transfer/ByteSource.h"
#include "transfer/DestinationWriter.h"

// Moves the head of an XML document from `source` to `destination`: its XML declaration as it is, and in place of its
// document type declaration (and of whatever stands before that) the one that `flags` name (Transfer.h). What follows is
// left for the caller to copy. `notFoundText` as for FetchURL; null for a source that is not searched.
//
// S_OK; E_FAIL for a document without a document type declaration, with an XML declaration (or another instruction whose
// name begins like it) that does not end before the first '>', or with a head item of 512 bytes or more; kNotFoundResult;
// the code of a failed read or write.
[[nodiscard]] HRESULT PrepareDocumentHead(ByteSource& source, DestinationWriter& destination, DWORD flags,
                                          const char* notFoundText);
