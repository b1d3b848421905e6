#include "xml/XMLUtilities.h"

#include <wrl/client.h>

#include <utility>

#include "common/Variant.h"
#include "log/LogFile.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"XMLUtilities"};

HRESULT GetDocumentElement(IXMLDOMDocument2* document, ComPtr<IXMLDOMElement>& element) {
  const HRESULT hr = document->get_documentElement(&element);
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (!element)
    return Traced(HERE, E_POINTER);
  return S_OK;
}

// Not every parser lists an attribute that has its value only from the document type; asked for it by name, the element
// knows it all the same. A parser that lists it never gets here.
HRESULT GetDefaultedAttribute(IXMLDOMNode* node, const wchar_t* name, BString& text) {
  ComPtr<IXMLDOMElement> element;
  if (FAILED(node->QueryInterface(IID_IXMLDOMElement, reinterpret_cast<void**>(element.GetAddressOf()))))
    return E_FAIL;
  const BString attributeName(SysAllocString(name));
  if (!attributeName)
    return Traced(HERE, E_OUTOFMEMORY);
  Variant value;
  const HRESULT hr = element->getAttribute(attributeName.Get(), &value.Get());
  if (hr != S_OK || value.Get().vt != VT_BSTR || !value.Get().bstrVal)
    return E_FAIL;
  text = value.TakeString();
  return S_OK;
}

}  // namespace

HRESULT SelectNode(IXMLDOMNode* node, const wchar_t* pattern, IXMLDOMNode** found) {
  if (found)
    *found = nullptr;
  if (!node || !pattern)
    return Traced(HERE, E_INVALIDARG);
  const BString query(SysAllocString(pattern));
  if (!query)
    return Traced(HERE, E_OUTOFMEMORY);

  ComPtr<IXMLDOMNode> match;
  const HRESULT hr = node->selectSingleNode(query.Get(), &match);
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (!match)
    return E_POINTER;
  if (found)
    *found = match.Detach();
  return hr;
}

HRESULT SelectNodes(IXMLDOMNode* node, const wchar_t* pattern, IXMLDOMNodeList** found) {
  if (found)
    *found = nullptr;
  if (!node || !pattern || !found)
    return Traced(HERE, E_INVALIDARG);
  const BString query(SysAllocString(pattern));
  if (!query)
    return Traced(HERE, E_OUTOFMEMORY);

  ComPtr<IXMLDOMNodeList> matches;
  const HRESULT hr = node->selectNodes(query.Get(), &matches);
  if (FAILED(hr))
    return ReportedW(HERE, hr, L"%s", pattern);
  if (!matches)
    return Traced(HERE, E_POINTER);
  *found = matches.Detach();
  return hr;
}

HRESULT SelectDocumentNode(IXMLDOMDocument2* document, const wchar_t* pattern, IXMLDOMNode** found) {
  if (found)
    *found = nullptr;
  if (!document || !pattern)
    return Traced(HERE, E_INVALIDARG);
  ComPtr<IXMLDOMElement> element;
  const HRESULT hr = GetDocumentElement(document, element);
  return FAILED(hr) ? hr : SelectNode(element.Get(), pattern, found);
}

HRESULT SelectDocumentNodes(IXMLDOMDocument2* document, const wchar_t* pattern, IXMLDOMNodeList** found) {
  if (found)
    *found = nullptr;
  if (!document || !pattern || !found)
    return Traced(HERE, E_INVALIDARG);
  ComPtr<IXMLDOMElement> element;
  const HRESULT hr = GetDocumentElement(document, element);
  return FAILED(hr) ? hr : SelectNodes(element.Get(), pattern, found);
}

bool NodeExists(IXMLDOMNode* node, const wchar_t* pattern) {
  return SUCCEEDED(SelectNode(node, pattern, nullptr));
}

HRESULT GetNodeTextW(IXMLDOMNode* node, const wchar_t* pattern, BString& text) {
  text = BString();
  ComPtr<IXMLDOMNode> match;
  HRESULT hr = SelectNode(node, pattern, &match);
  if (FAILED(hr))
    return hr;
  BString matchText;
  hr = match->get_text(matchText.Receive());
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (!matchText)
    matchText = BString(SysAllocString(L""));
  if (!matchText)
    return Traced(HERE, E_OUTOFMEMORY);
  text = std::move(matchText);
  return text.IsEmpty() ? S_FALSE : S_OK;
}

HRESULT GetNodeText(IXMLDOMNode* node, const wchar_t* pattern, OwnedText& text) {
  text.reset();
  BString wideText;
  const HRESULT hr = GetNodeTextW(node, pattern, wideText);
  if (FAILED(hr))
    return hr;
  text = NarrowText(wideText.Get());
  return text ? hr : Traced(HERE, E_OUTOFMEMORY);
}

HRESULT GetAttributeText(IXMLDOMNode* node, const wchar_t* name, BString& text) {
  text = BString();
  if (!node || !name)
    return Traced(HERE, E_INVALIDARG);
  ComPtr<IXMLDOMNamedNodeMap> attributes;
  HRESULT hr = node->get_attributes(&attributes);
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (!attributes)
    return E_FAIL;

  const BString attributeName(SysAllocString(name));
  if (!attributeName)
    return Traced(HERE, E_OUTOFMEMORY);
  ComPtr<IXMLDOMNode> attribute;
  hr = attributes->getNamedItem(attributeName.Get(), &attribute);
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (!attribute)
    return GetDefaultedAttribute(node, name, text);

  BString value;
  hr = attribute->get_text(value.Receive());
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (!value)
    return E_FAIL;
  text = std::move(value);
  return S_OK;
}
