#include "engine/CommandCollector.h"

#include <wrl/client.h>

#include "log/LogFile.h"

using Microsoft::WRL::ComPtr;

namespace {

// Signed with the name of the command's file, as lines of another one.
constexpr SourceFile SignedBy(const CommandKind& kind) {
  return {kind.sourceFile, 3000};
}

HRESULT GetElements(IXMLDOMDocument2* document, const CommandKind& kind, ComPtr<IXMLDOMNodeList>& elements) {
  const wchar_t* const name = kind.elementName;
  const BString tagName(SysAllocString(name));
  const HRESULT hr = tagName ? document->getElementsByTagName(tagName.Get(), &elements) : E_OUTOFMEMORY;
  if (FAILED(hr))
    return ReportedW(HERE_IN(SignedBy(kind)), hr, L"Failed to get '%s' (Element: %s) commands from XML.", name, name);
  if (!elements) {
    return ReportedW(HERE_IN(SignedBy(kind)), E_FAIL,
                     L"Empty node list returned when retrieving '%s' (Node: %s) commands from XML.", name, name);
  }
  return S_OK;
}

HRESULT GetElement(IXMLDOMNodeList* elements, LONG index, const CommandKind& kind, ComPtr<IXMLDOMNode>& element) {
  const HRESULT hr = elements->get_item(index, &element);
  if (FAILED(hr))
    return ReportedW(HERE_IN(SignedBy(kind)), hr, L"Getting %s element failed.", kind.elementName);
  if (!element)
    return ReportedW(HERE_IN(SignedBy(kind)), E_FAIL, L"Empty node returned when getting %s element.", kind.elementName);
  return S_OK;
}

}  // namespace

HRESULT CollectCommands(IXMLDOMDocument2* document, const CommandKind& kind, CListBuilder& commands) {
  ComPtr<IXMLDOMNodeList> elements;
  HRESULT hr = GetElements(document, kind, elements);
  if (FAILED(hr))
    return hr;
  LONG length = 0;
  hr = elements->get_length(&length);
  if (FAILED(hr))
    return ReportedW(HERE_IN(SignedBy(kind)), hr, L"Failed to get number of %s elements in XML.", kind.elementName);
  hr = elements->reset();
  if (FAILED(hr))
    return ReportedW(HERE_IN(SignedBy(kind)), hr, L"Reseting %s element list failed.", kind.elementName);

  for (LONG index = 0; index < length && SUCCEEDED(hr); ++index) {
    ComPtr<IXMLDOMNode> element;
    hr = GetElement(elements.Get(), index, kind, element);
    if (FAILED(hr))
      return hr;
    std::unique_ptr<CCommand> command = kind.make(element.Get(), &hr);
    if (!command)
      return Reported(HERE_IN(SignedBy(kind)), E_OUTOFMEMORY, "%s", kind.allocationFailure);
    commands.Append(std::move(command));
  }
  return hr;
}
