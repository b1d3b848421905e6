#pragma once

#include "common/Windows.h"

#include <string>

#include "advice/Finding.h"
#include "advice/Outline.h"
#include "advice/PermitDocument.h"

// A document that the module refuses.
struct RefusedDocument {
  const Outline& outline;
  const std::string& bytes;      // as they stand
  DWORD kind;                    // kTransferManifest or kTransferPermitFile
  HRESULT code;                  // the module's
  const std::string& complaint;  // the module's first one
};

// Why: place and reason of what is not well-formed; else what the module complains about, with the line of the document as
// it stands and not as it is once the module's document type is in it.
Finding InvalidFinding(const RefusedDocument& document);

// The same of a permission file that is not usable.
Finding WhyInvalid(const PermitDocument& permit);

// The finding in one sentence, with its line.
std::string SentenceOf(const Finding& finding);
