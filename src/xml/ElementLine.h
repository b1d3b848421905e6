#pragma once

#include "common/Windows.h"

// The line on which the `index`th element of that name (from 0, in document order) begins in a file, counted from 1; 0 when
// there is none, or when the platform's SAX reader cannot tell. The parser's documents do not know their lines.
int FindElementLine(const wchar_t* fileName, const wchar_t* elementName, int index);
