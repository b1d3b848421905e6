#pragma once

#include "common/Windows.h"

#include "torture/CallCounter.h"

// Objects of the system whose methods ask the counter before they do what the object behind them does. Everything that they
// hand out is made to fail in the same way, and is on the counter's account until it is given back.

// In the place of an object that the module created; takes over the reference. `object` is a document of the XML parser
// (IXMLDOMDocument2).
void* MakeFailingDocument(void* object, CallCounter& counter);

// The same for the SAX reader of the XML parser (ISAXXMLReader).
void* MakeFailingReader(void* object, CallCounter& counter);

// The same for the platform's registrar.
void* MakeFailingRegistrar(void* object, CallCounter& counter);
