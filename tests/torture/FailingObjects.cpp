#include "torture/FailingObjects.h"

#include <wrl/client.h>

#include "control/Registrar.h"
#include "support/FakeReader.h"
#include "support/FakeXml.h"

using Microsoft::WRL::ComPtr;

namespace {

// What nothing else fails with, so that the log shows whose failure it tells.
constexpr HRESULT kFailure = __HRESULT_FROM_WIN32(ERROR_XML_PARSE_ERROR);

std::string Narrow(const wchar_t* text) {
  return std::string(text, text + wcslen(text));
}

// `Base` is a stand-in that has all methods of the interface; those that are passed on are overridden below. Lives as long
// as it is referred to.
template <class Base, class Interface>
class Failing : public Base {
 public:
  Failing(Interface* passedOn, CallCounter& callCounter) : counter(callCounter) {
    *real.GetAddressOf() = passedOn;  // Attach of this header would take a reference of its own
    counter.Take("object", this);
  }

  ULONG WINAPI AddRef() override { return ++count; }
  ULONG WINAPI Release() override {
    const ULONG left = --count;
    if (left == 0) {
      counter.GiveBack("object", this);
      delete this;
    }
    return left;
  }

 protected:
  // Hands out in place of `Object` one that fails as well.
  template <class Substitute, class Object, class Get>
  HRESULT HandOn(const char* method, Object** out, Get get, const wchar_t* name = L"") {
    *out = nullptr;
    if (IsToFail(method, Narrow(name)))
      return kFailure;
    Object* object = nullptr;
    const HRESULT hr = get(&object);
    if (object)
      *out = new Substitute(object, counter);
    return hr;
  }

  template <class Get>
  HRESULT HandText(const char* method, BSTR* out, Get get) {
    *out = nullptr;
    if (IsToFail(method))
      return kFailure;
    const HRESULT hr = get(out);
    counter.Take("string", *out);
    return hr;
  }

  template <class Do>
  HRESULT PassOn(const char* method, Do pass) {
    return IsToFail(method) ? kFailure : pass();
  }

  bool IsToFail(const char* method, const std::string& name = "") {
    if (counter.Decide(method, "xml", 1, name) < 0)
      return false;
    counter.failedWith = static_cast<DWORD>(kFailure);
    return true;
  }

  ComPtr<Interface> real;
  CallCounter& counter;

 private:
  ULONG count = 1;
};

class FailingNode;

class FailingAttributes : public Failing<FakeAttributes, IXMLDOMNamedNodeMap> {
 public:
  using Failing::Failing;
  HRESULT WINAPI getNamedItem(BSTR name, IXMLDOMNode** item) override;
};

class FailingList : public Failing<FakeNodeList, IXMLDOMNodeList> {
 public:
  using Failing::Failing;
  HRESULT WINAPI get_length(LONG* length) override {
    return PassOn("get_length", [&] { return real->get_length(length); });
  }
  HRESULT WINAPI get_item(LONG index, IXMLDOMNode** item) override;
  HRESULT WINAPI nextNode(IXMLDOMNode** item) override;
  HRESULT WINAPI reset() override {
    return PassOn("reset", [&] { return real->reset(); });
  }
};

class FailingNode : public Failing<FakeNode, IXMLDOMNode> {
 public:
  using Failing::Failing;

  HRESULT WINAPI QueryInterface(REFIID iid, void** object) override {
    if (iid == IID_IXMLDOMElement && !element)
      isElement = SUCCEEDED(real->QueryInterface(IID_IXMLDOMElement, reinterpret_cast<void**>(element.GetAddressOf())));
    return Failing::QueryInterface(iid, object);
  }
  HRESULT WINAPI get_text(BSTR* out) override {
    return HandText("get_text", out, [&](BSTR* text) { return real->get_text(text); });
  }
  HRESULT WINAPI get_nodeName(BSTR* out) override {
    return HandText("get_nodeName", out, [&](BSTR* text) { return real->get_nodeName(text); });
  }
  HRESULT WINAPI get_nodeType(DOMNodeType* type) override {
    return PassOn("get_nodeType", [&] { return real->get_nodeType(type); });
  }
  HRESULT WINAPI get_attributes(IXMLDOMNamedNodeMap** out) override {
    return HandOn<FailingAttributes>("get_attributes", out, [&](auto** map) { return real->get_attributes(map); });
  }
  HRESULT WINAPI selectSingleNode(BSTR pattern, IXMLDOMNode** out) override {
    return HandOn<FailingNode>(
        "selectSingleNode", out, [&](auto** node) { return real->selectSingleNode(pattern, node); }, pattern);
  }
  HRESULT WINAPI selectNodes(BSTR pattern, IXMLDOMNodeList** out) override {
    return HandOn<FailingList>(
        "selectNodes", out, [&](auto** list) { return real->selectNodes(pattern, list); }, pattern);
  }
  HRESULT WINAPI get_firstChild(IXMLDOMNode** out) override {
    return HandOn<FailingNode>("get_firstChild", out, [&](auto** node) { return real->get_firstChild(node); });
  }
  HRESULT WINAPI get_nextSibling(IXMLDOMNode** out) override {
    return HandOn<FailingNode>("get_nextSibling", out, [&](auto** node) { return real->get_nextSibling(node); });
  }
  HRESULT WINAPI getAttribute(BSTR attribute, VARIANT* value) override {
    const HRESULT hr = PassOn("getAttribute", [&] { return element->getAttribute(attribute, value); });
    if (SUCCEEDED(hr) && value->vt == VT_BSTR)
      counter.Take("string", value->bstrVal);
    return hr;
  }

 private:
  ComPtr<IXMLDOMElement> element;
};

// An element where a node is expected, and the reverse: the same object.
class FailingElement : public FailingNode {
 public:
  FailingElement(IXMLDOMElement* object, CallCounter& callCounter) : FailingNode(object, callCounter) {}
};

class FailingParseError : public Failing<FakeParseError, IXMLDOMParseError> {
 public:
  using Failing::Failing;
  HRESULT WINAPI get_line(LONG* out) override {
    return PassOn("get_line", [&] { return real->get_line(out); });
  }
  HRESULT WINAPI get_reason(BSTR* out) override {
    return HandText("get_reason", out, [&](BSTR* text) { return real->get_reason(text); });
  }
};

class FailingDocumentType : public Failing<FakeDocumentType, IXMLDOMDocumentType> {
 public:
  using Failing::Failing;
};

class FailingDocument : public Failing<FakeDocument, IXMLDOMDocument2> {
 public:
  using Failing::Failing;

  // Its second way is that of a parser that does not like the document.
  HRESULT WINAPI load(VARIANT source, VARIANT_BOOL* isSuccessful) override {
    *isSuccessful = VARIANT_FALSE;
    const int way = counter.Decide("load", "xml", 2);
    if (way < 0) {
      const HRESULT hr = real->load(source, isSuccessful);
      if (!*isSuccessful)
        counter.FailsByItself();
      return hr;
    }
    counter.failedWith = static_cast<DWORD>(way == 0 ? kFailure : E_FAIL);
    return way == 0 ? kFailure : S_FALSE;
  }
  HRESULT WINAPI validate(IXMLDOMParseError** out) override {
    return HandOn<FailingParseError>("validate", out, [&](auto** error) { return real->validate(error); });
  }
  HRESULT WINAPI get_parseError(IXMLDOMParseError** out) override {
    return HandOn<FailingParseError>("get_parseError", out, [&](auto** error) { return real->get_parseError(error); });
  }
  HRESULT WINAPI get_doctype(IXMLDOMDocumentType** out) override {
    return HandOn<FailingDocumentType>("get_doctype", out, [&](auto** type) { return real->get_doctype(type); });
  }
  HRESULT WINAPI get_documentElement(IXMLDOMElement** out) override {
    return HandOn<FailingElement>("get_documentElement", out, [&](auto** root) { return real->get_documentElement(root); });
  }
  HRESULT WINAPI getElementsByTagName(BSTR tagName, IXMLDOMNodeList** out) override {
    return HandOn<FailingList>(
        "getElementsByTagName", out, [&](auto** list) { return real->getElementsByTagName(tagName, list); }, tagName);
  }
  HRESULT WINAPI put_async(VARIANT_BOOL value) override {
    return PassOn("put_async", [&] { return real->put_async(value); });
  }
  HRESULT WINAPI put_validateOnParse(VARIANT_BOOL value) override {
    return PassOn("put_validateOnParse", [&] { return real->put_validateOnParse(value); });
  }
  HRESULT WINAPI put_resolveExternals(VARIANT_BOOL value) override {
    return PassOn("put_resolveExternals", [&] { return real->put_resolveExternals(value); });
  }
  HRESULT WINAPI put_preserveWhiteSpace(VARIANT_BOOL value) override {
    return PassOn("put_preserveWhiteSpace", [&] { return real->put_preserveWhiteSpace(value); });
  }
};

HRESULT FailingAttributes::getNamedItem(BSTR name, IXMLDOMNode** item) {
  return HandOn<FailingNode>(
      "getNamedItem", item, [&](auto** node) { return real->getNamedItem(name, node); }, name);
}

HRESULT FailingList::get_item(LONG index, IXMLDOMNode** item) {
  return HandOn<FailingNode>("get_item", item, [&](auto** node) { return real->get_item(index, node); });
}

HRESULT FailingList::nextNode(IXMLDOMNode** item) {
  return HandOn<FailingNode>("nextNode", item, [&](auto** node) { return real->nextNode(node); });
}

class FailingReader : public Failing<FakeReaderMethods, ISAXXMLReader> {
 public:
  using Failing::Failing;
  HRESULT WINAPI putContentHandler(ISAXContentHandler* handler) override {
    return PassOn("putContentHandler", [&] { return real->putContentHandler(handler); });
  }
  HRESULT WINAPI parseURL(const wchar_t* url) override {
    return PassOn("parseURL", [&] { return real->parseURL(url); });
  }
};

class RegistrarMethods : public IRegistrar {
 public:
  virtual ~RegistrarMethods() = default;
  HRESULT WINAPI QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  FAKE_METHOD_REFUSED(ClearReplacements)
  FAKE_METHOD_REFUSED(ResourceRegisterSz, const wchar_t*, const wchar_t*, const wchar_t*)
  FAKE_METHOD_REFUSED(ResourceUnregisterSz, const wchar_t*, const wchar_t*, const wchar_t*)
  FAKE_METHOD_REFUSED(FileRegister, const wchar_t*)
  FAKE_METHOD_REFUSED(FileUnregister, const wchar_t*)
  FAKE_METHOD_REFUSED(StringRegister, const wchar_t*)
  FAKE_METHOD_REFUSED(StringUnregister, const wchar_t*)
};

class FailingRegistrar : public Failing<RegistrarMethods, IRegistrar> {
 public:
  using Failing::Failing;
  HRESULT WINAPI AddReplacement(const wchar_t* key, const wchar_t* item) override {
    return PassOn("AddReplacement", [&] { return real->AddReplacement(key, item); });
  }
  HRESULT WINAPI ResourceRegister(const wchar_t* file, UINT id, const wchar_t* type) override {
    return PassOn("ResourceRegister", [&] { return real->ResourceRegister(file, id, type); });
  }
  HRESULT WINAPI ResourceUnregister(const wchar_t* file, UINT id, const wchar_t* type) override {
    return PassOn("ResourceUnregister", [&] { return real->ResourceUnregister(file, id, type); });
  }
};

}  // namespace

void* MakeFailingDocument(void* object, CallCounter& counter) {
  return static_cast<IXMLDOMDocument2*>(new FailingDocument(static_cast<IXMLDOMDocument2*>(object), counter));
}

void* MakeFailingReader(void* object, CallCounter& counter) {
  return static_cast<ISAXXMLReader*>(new FailingReader(static_cast<ISAXXMLReader*>(object), counter));
}

void* MakeFailingRegistrar(void* object, CallCounter& counter) {
  return static_cast<IRegistrar*>(new FailingRegistrar(static_cast<IRegistrar*>(object), counter));
}
