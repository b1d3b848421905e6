#pragma once

#include "common/Windows.h"

#include <msxml2.h>

#include "common/Text.h"

// Access to the platform's XML parser. Every operation logs its failures and returns a result code; out-parameters are
// cleared first and filled only on success. Interface pointers that are handed out belong to the caller.
//
// A lookup answers S_OK (present), S_FALSE (present, but without text) or E_POINTER (absent, which is not logged).
// Patterns are simple child paths such as L"Destination/Path".

// One in-process instance of the MSXML 2 document class. A failure is logged: "Loading the Microsoft XML Parser Library
// failed.".
[[nodiscard]] HRESULT CreateXMLDocument(IXMLDOMDocument2** document);

// Loads and parses a document synchronously. With `fromFile` (any value but 0) `name` is a path or URL in the ANSI code
// page, and the document is validated against its document type; else `name` is the document itself, which is only parsed.
// S_OK; E_INVALIDARG without a name or document; E_OUTOFMEMORY; the load's own failure; E_FAIL for a document that does not
// parse or is not valid, which is logged with the parser's line and reason.
[[nodiscard]] HRESULT LoadXMLDocument(const char* name, IXMLDOMDocument2* document, LONG fromFile);

// Writes the document to a file. `pretty` (any value but 0) writes UTF-8 without a byte-order mark and with a line end
// between elements that follow each other directly. E_INVALIDARG without a document or name, else S_OK: a file that cannot
// be written shows in the log only.
HRESULT SaveXMLDocument(IXMLDOMDocument2* document, const char* fileName, LONG pretty);

// The first node below `node` that matches `pattern`. `found` may be null to ask only whether there is one.
[[nodiscard]] HRESULT SelectNode(IXMLDOMNode* node, const wchar_t* pattern, IXMLDOMNode** found);

// All nodes below `node` that match.
[[nodiscard]] HRESULT SelectNodes(IXMLDOMNode* node, const wchar_t* pattern, IXMLDOMNodeList** found);

// The same below the document element.
[[nodiscard]] HRESULT SelectDocumentNode(IXMLDOMDocument2* document, const wchar_t* pattern, IXMLDOMNode** found);
[[nodiscard]] HRESULT SelectDocumentNodes(IXMLDOMDocument2* document, const wchar_t* pattern, IXMLDOMNodeList** found);

// True when a node matches.
bool NodeExists(IXMLDOMNode* node, const wchar_t* pattern);

// The text of the first node that matches, in the ANSI code page or as an automation string. A text that is present but
// empty gives S_FALSE and an empty text.
[[nodiscard]] HRESULT GetNodeText(IXMLDOMNode* node, const wchar_t* pattern, OwnedText& text);
[[nodiscard]] HRESULT GetNodeTextW(IXMLDOMNode* node, const wchar_t* pattern, BString& text);

// The value of an attribute of the element `node`, its default from the document type included. E_FAIL when the element has
// no such attribute, which is not logged; the parser's failures are traced.
[[nodiscard]] HRESULT GetAttributeText(IXMLDOMNode* node, const wchar_t* name, BString& text);
