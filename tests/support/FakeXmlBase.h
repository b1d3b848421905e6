#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <msxml2.h>

#include <map>
#include <string_view>

// What the stand-ins of FakeXml.h are made of. A method that is not named there answers E_NOTIMPL.
#define FAKE_METHOD_REFUSED(method, ...)        \
  HRESULT WINAPI method(__VA_ARGS__) override { \
    return E_NOTIMPL;                           \
  }

// An object that its test owns: references are counted and must all be back when the test ends, and every method answers
// with the code that the test gave it. `InterfaceId` is the identifier of `Interface`.
template <class Interface, const IID* InterfaceId>
class FakeDispatch : public Interface {
 public:
  FakeDispatch() = default;
  FakeDispatch(const FakeDispatch&) = delete;
  FakeDispatch& operator=(const FakeDispatch&) = delete;
  virtual ~FakeDispatch() { EXPECT_EQ(0, references) << "references that were not given back, or given back too often"; }

  // From now on `method` (a literal, the method's name) answers `code`. A failing code hands nothing out.
  void Answer(std::string_view method, HRESULT code) { codes[method] = code; }

  HRESULT WINAPI QueryInterface(REFIID iid, void** object) override {
    *object = Implements(iid) ? this : nullptr;
    if (!*object)
      return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references); }
  ULONG WINAPI Release() override { return static_cast<ULONG>(--references); }

  FAKE_METHOD_REFUSED(GetTypeInfoCount, UINT*)
  FAKE_METHOD_REFUSED(GetTypeInfo, UINT, LCID, ITypeInfo**)
  FAKE_METHOD_REFUSED(GetIDsOfNames, REFIID, LPOLESTR*, UINT, LCID, DISPID*)
  FAKE_METHOD_REFUSED(Invoke, DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)

 protected:
  virtual bool Implements(REFIID iid) const { return iid == IID_IUnknown || iid == IID_IDispatch || iid == *InterfaceId; }

  HRESULT CodeOf(std::string_view method, HRESULT usual = S_OK) const {
    const auto code = codes.find(method);
    return code == codes.end() ? usual : code->second;
  }

  // What is null is absent: that is S_FALSE, as the parser answers it.
  template <class Object>
  HRESULT HandOut(std::string_view method, Object* object, Object** out) const {
    const HRESULT code = CodeOf(method, object ? S_OK : S_FALSE);
    *out = SUCCEEDED(code) ? object : nullptr;
    if (*out)
      (*out)->AddRef();
    return code;
  }

  HRESULT HandOutText(std::string_view method, const wchar_t* text, BSTR* out) const {
    const HRESULT code = CodeOf(method, text ? S_OK : S_FALSE);
    *out = SUCCEEDED(code) && text ? SysAllocStringLen(text, static_cast<UINT>(wcslen(text))) : nullptr;
    return code;
  }

 private:
  std::map<std::string_view, HRESULT> codes;
  int references = 0;
};

// The object that a map of objects holds under a name; null when it holds none.
template <class Object>
Object* FindNamed(const std::map<std::wstring_view, Object*>& objects, const wchar_t* name) {
  const auto found = objects.find(name);
  return found == objects.end() ? nullptr : found->second;
}

// A node of any kind, with text, serialised text, children by pattern and attributes.
template <class Interface, const IID* InterfaceId>
class FakeNodeMethods : public FakeDispatch<Interface, InterfaceId> {
 public:
  const wchar_t* text = nullptr;
  const wchar_t* xml = nullptr;
  const wchar_t* name = nullptr;
  DOMNodeType type = NODE_ELEMENT;
  IXMLDOMNamedNodeMap* attributes = nullptr;

  // The nodes as a walk meets them.
  IXMLDOMNode* firstChild = nullptr;
  IXMLDOMNode* nextSibling = nullptr;

  // Named by the pattern that selects them, a literal.
  std::map<std::wstring_view, IXMLDOMNode*> children;
  std::map<std::wstring_view, IXMLDOMNodeList*> lists;

  HRESULT WINAPI get_nodeName(BSTR* out) override { return this->HandOutText("get_nodeName", name, out); }
  HRESULT WINAPI get_nodeType(DOMNodeType* out) override {
    *out = type;
    return this->CodeOf("get_nodeType");
  }
  HRESULT WINAPI get_firstChild(IXMLDOMNode** out) override { return this->HandOut("get_firstChild", firstChild, out); }
  HRESULT WINAPI get_nextSibling(IXMLDOMNode** out) override { return this->HandOut("get_nextSibling", nextSibling, out); }
  HRESULT WINAPI get_text(BSTR* out) override { return this->HandOutText("get_text", text, out); }
  HRESULT WINAPI get_xml(BSTR* out) override { return this->HandOutText("get_xml", xml, out); }
  HRESULT WINAPI get_attributes(IXMLDOMNamedNodeMap** out) override {
    return this->HandOut("get_attributes", attributes, out);
  }
  HRESULT WINAPI selectSingleNode(BSTR pattern, IXMLDOMNode** out) override {
    return this->HandOut("selectSingleNode", FindNamed(children, pattern), out);
  }
  HRESULT WINAPI selectNodes(BSTR pattern, IXMLDOMNodeList** out) override {
    return this->HandOut("selectNodes", FindNamed(lists, pattern), out);
  }

  FAKE_METHOD_REFUSED(get_nodeValue, VARIANT*)
  FAKE_METHOD_REFUSED(put_nodeValue, VARIANT)
  FAKE_METHOD_REFUSED(get_parentNode, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(get_childNodes, IXMLDOMNodeList**)
  FAKE_METHOD_REFUSED(get_lastChild, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(get_previousSibling, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(insertBefore, IXMLDOMNode*, VARIANT, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(replaceChild, IXMLDOMNode*, IXMLDOMNode*, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(removeChild, IXMLDOMNode*, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(appendChild, IXMLDOMNode*, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(hasChildNodes, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(get_ownerDocument, IXMLDOMDocument**)
  FAKE_METHOD_REFUSED(cloneNode, VARIANT_BOOL, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(get_nodeTypeString, BSTR*)
  FAKE_METHOD_REFUSED(put_text, BSTR)
  FAKE_METHOD_REFUSED(get_specified, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(get_definition, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(get_nodeTypedValue, VARIANT*)
  FAKE_METHOD_REFUSED(put_nodeTypedValue, VARIANT)
  FAKE_METHOD_REFUSED(get_dataType, VARIANT*)
  FAKE_METHOD_REFUSED(put_dataType, BSTR)
  FAKE_METHOD_REFUSED(transformNode, IXMLDOMNode*, BSTR*)
  FAKE_METHOD_REFUSED(get_parsed, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(get_namespaceURI, BSTR*)
  FAKE_METHOD_REFUSED(get_prefix, BSTR*)
  FAKE_METHOD_REFUSED(get_baseName, BSTR*)
  FAKE_METHOD_REFUSED(transformNodeToObject, IXMLDOMNode*, VARIANT)

 protected:
  bool Implements(REFIID iid) const override {
    return iid == IID_IXMLDOMNode || FakeDispatch<Interface, InterfaceId>::Implements(iid);
  }
};
