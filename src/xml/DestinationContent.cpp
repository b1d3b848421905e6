#include "xml/DestinationContent.h"

#include <wrl/client.h>

#include <cwchar>

using Microsoft::WRL::ComPtr;

namespace {

// The parts of a manifest's destination, in the order in which they may stand, each once.
enum class Part { None, FileName, Folder, Attributes, Policy, Cache, Unknown };

struct PartName {
  const wchar_t* name;
  Part part;
};

constexpr PartName kPartNames[] = {
    {L"FileName", Part::FileName},
    {L"VantorUser", Part::Folder},
    {L"Personal", Part::Folder},
    {L"Documents", Part::Folder},
    {L"LocalVantorData", Part::Folder},
    {L"LocalApplicationData", Part::Folder},
    {L"CommonVantorData", Part::Folder},
    {L"CommonApplicationData", Part::Folder},
    {L"VantorData", Part::Folder},
    {L"ApplicationData", Part::Folder},
    {L"Temp", Part::Folder},
    {L"Path", Part::Folder},
    {L"Attributes", Part::Attributes},
    {L"IfFileExists", Part::Policy},
    {L"InternetCache", Part::Cache},
};

Part FindPart(const wchar_t* name) {
  for (const PartName& known : kPartNames) {
    if (std::wcscmp(known.name, name) == 0)
      return known.part;
  }
  return Part::Unknown;
}

HRESULT GetName(IXMLDOMNode* node, BString& name) {
  const HRESULT hr = node->get_nodeName(name.Receive());
  return SUCCEEDED(hr) && !name ? E_FAIL : hr;
}

// What a child of a destination is: comments are nothing, and so is white space.
HRESULT GetPart(IXMLDOMNode* child, Part& part) {
  DOMNodeType type = NODE_INVALID;
  HRESULT hr = child->get_nodeType(&type);
  if (FAILED(hr))
    return hr;
  part = type == NODE_COMMENT || type == NODE_PROCESSING_INSTRUCTION ? Part::None : Part::Unknown;
  BString text;
  if (type == NODE_ELEMENT) {
    hr = GetName(child, text);
    if (SUCCEEDED(hr))
      part = FindPart(text.Get());
  } else if (type == NODE_TEXT) {
    hr = child->get_text(text.Receive());
    if (SUCCEEDED(hr) && (text.IsEmpty() || !text.Get()[std::wcsspn(text.Get(), L" \t\r\n")]))
      part = Part::None;
  }
  return hr;
}

// Takes the parts of one destination one after the other, up to the first that may not stand there.
class PartOrder {
 public:
  explicit PartOrder(bool isManifestDestination) : isManifest(isManifestDestination) {}

  // False when it may not stand here.
  bool Take(Part part) {
    if (part == Part::None)
      return true;
    const bool isRight = isManifest ? MayFollow(part) : part == Part::Folder || part == Part::Cache;
    hasFolder = hasFolder || part == Part::Folder;
    last = part;
    return isRight;
  }

  bool IsComplete() const { return !isManifest || hasFolder || last == Part::Cache; }

 private:
  bool MayFollow(Part part) const {
    switch (part) {
      case Part::FileName:
      case Part::Cache:
        return last == Part::None;
      case Part::Folder:
        return !hasFolder && last < part;
      case Part::Attributes:
      case Part::Policy:
        return hasFolder && last < part;
      case Part::None:
      case Part::Unknown:
        break;
    }
    return false;
  }

  bool isManifest;
  bool hasFolder = false;
  Part last = Part::None;
};

// `content` is the name of the child that is refused.
HRESULT CheckDestination(IXMLDOMNode* destination, bool isManifest, BString& content) {
  PartOrder order(isManifest);
  ComPtr<IXMLDOMNode> child;
  HRESULT hr = destination->get_firstChild(&child);
  while (SUCCEEDED(hr) && child) {
    Part part = Part::Unknown;
    hr = GetPart(child.Get(), part);
    if (FAILED(hr))
      return hr;
    if (!order.Take(part)) {
      hr = GetName(child.Get(), content);
      return FAILED(hr) ? hr : S_FALSE;
    }
    ComPtr<IXMLDOMNode> next;
    hr = child->get_nextSibling(&next);
    child = next;
  }
  if (FAILED(hr))
    return hr;
  return order.IsComplete() ? S_OK : S_FALSE;
}

HRESULT CheckAll(IXMLDOMNodeList* destinations, bool isManifest, ForbiddenDestination& forbidden) {
  LONG length = 0;
  HRESULT hr = destinations->get_length(&length);
  for (LONG index = 0; hr == S_OK && index < length; ++index) {
    ComPtr<IXMLDOMNode> destination;
    hr = destinations->get_item(index, &destination);
    if (SUCCEEDED(hr))
      hr = destination ? CheckDestination(destination.Get(), isManifest, forbidden.content) : E_FAIL;
    forbidden.index = index;
  }
  return hr;
}

}  // namespace

HRESULT CheckDestinations(IXMLDOMDocument2* document, ForbiddenDestination& forbidden) {
  ComPtr<IXMLDOMElement> root;
  HRESULT hr = document->get_documentElement(&root);
  if (FAILED(hr) || !root)
    return FAILED(hr) ? hr : S_OK;
  BString name;
  hr = GetName(root.Get(), name);
  if (FAILED(hr))
    return hr;
  const bool isManifest = std::wcscmp(name.Get(), L"VantorManifest") == 0;
  if (!isManifest && std::wcscmp(name.Get(), L"VantorPermissions") != 0)
    return S_OK;

  const BString tagName(SysAllocString(L"Destination"));
  if (!tagName)
    return E_OUTOFMEMORY;
  ComPtr<IXMLDOMNodeList> destinations;
  hr = document->getElementsByTagName(tagName.Get(), &destinations);
  if (FAILED(hr))
    return hr;
  return destinations ? CheckAll(destinations.Get(), isManifest, forbidden) : E_FAIL;
}
