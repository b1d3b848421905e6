#pragma once

#include "common/Windows.h"

#include <msxml2.h>
#include <wrl/client.h>

#include <string>

// An empty document of the platform's own parser.
Microsoft::WRL::ComPtr<IXMLDOMDocument2> NewXmlDocument();

// A document made from its text, without validation; white space between elements is dropped. A text that does not parse
// fails the test.
Microsoft::WRL::ComPtr<IXMLDOMDocument2> ParseXml(const std::string& text);

// The document element of ParseXml(text).
Microsoft::WRL::ComPtr<IXMLDOMElement> ParseElement(const std::string& text);

// The text of a node with its markup.
std::wstring XmlOf(IXMLDOMNode* node);
