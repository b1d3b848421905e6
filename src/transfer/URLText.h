#pragma once

#include "common/Windows.h"

#include "common/Text.h"

// URLs as text. A URL is web when it begins with "http:" or "https:" in any case; every other one names a local file.
bool IsWebURL(const char* url);

// The corrected form of a URL, a path or a bare file name; null when out of memory. A web URL gets its scheme in lower case,
// everything else becomes "file://" and a path, where a bare name lies in the module's folder. A text that begins with
// "file:" loses its first seven characters, whatever they are. Nothing else is changed: no escaping, no turning of slashes.
OwnedText CorrectURL(const char* url);

// Splits a corrected URL, or a full file name, at its last separator (`\`, `/` or `:`). `folder` is the text before it, less
// one trailing separator; `fileName` the text behind it, without a query; `extension` (may be null) the text behind the last
// dot. S_OK; S_FALSE when there is no separator: then the whole text is the folder, and the others are null. A part that
// cannot be allocated is null.
HRESULT SplitURL(const char* url, OwnedText& folder, OwnedText& fileName, OwnedText* extension);
