#include "support/XmlDocuments.h"

#include <gtest/gtest.h>

#include "common/Text.h"

using Microsoft::WRL::ComPtr;

ComPtr<IXMLDOMDocument2> NewXmlDocument() {
  constexpr CLSID kDocumentClass = {0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
  constexpr IID kInterface = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
  ComPtr<IXMLDOMDocument2> document;
  const HRESULT hr = CoCreateInstance(
      kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, kInterface, reinterpret_cast<void**>(document.GetAddressOf()));
  if (FAILED(hr))
    ADD_FAILURE() << "no XML parser, code " << hr;
  return document;
}

ComPtr<IXMLDOMDocument2> ParseXml(const std::string& text) {
  const ComPtr<IXMLDOMDocument2> document = NewXmlDocument();
  const BString source = WideText(text.c_str());
  VARIANT_BOOL isLoaded = VARIANT_FALSE;
  if (document && (document->loadXML(source.Get(), &isLoaded) != S_OK || !isLoaded))
    ADD_FAILURE() << "does not parse: " << text;
  return document;
}

ComPtr<IXMLDOMElement> ParseElement(const std::string& text) {
  ComPtr<IXMLDOMElement> element;
  if (const ComPtr<IXMLDOMDocument2> document = ParseXml(text))
    document->get_documentElement(&element);
  if (!element)
    ADD_FAILURE() << "no document element: " << text;
  return element;
}

std::wstring XmlOf(IXMLDOMNode* node) {
  BString xml;
  if (!node || FAILED(node->get_xml(xml.Receive())) || !xml)
    return L"(none)";
  return xml.Get();
}
