#pragma once

#include <string>
#include <vector>

#include "support/FakeXmlBase.h"

// A code that no method gives unless it is told to.
constexpr HRESULT kAnyFailure = static_cast<HRESULT>(0x80041234);

// Stand-ins for the objects of the platform's XML parser, for the failures that only a parser can produce. A test makes them
// as local variables, connects them through their fields (real nodes fit in as well), and tells methods to fail:
//
//   FakeNode source(L"http://server/a.txt");
//   FakeNode copy;
//   copy.children[L"Source"] = &source;
//   source.Answer("get_text", E_FAIL);
//
// What a field leaves null is absent: the method hands out nothing and answers S_FALSE. Objects that were not given back
// when the test ends fail it, so declare them in an order in which the users go first. No lookup allocates memory: the
// process heap may be made to fail meanwhile. Texts are made with SysAllocStringLen.

// An element, or, with `isElement` off, a node of another kind, such as an attribute.
class FakeNode : public FakeNodeMethods<IXMLDOMElement, &IID_IXMLDOMElement> {
 public:
  explicit FakeNode(const wchar_t* nodeText = nullptr) { text = nodeText; }

  bool isElement = true;

  // What getAttribute answers for every name: a text of type VT_BSTR, or an empty variant of another type.
  const wchar_t* attributeText = nullptr;
  VARTYPE attributeType = VT_BSTR;

  HRESULT WINAPI getAttribute(BSTR attributeName, VARIANT* value) override;
  HRESULT WINAPI get_tagName(BSTR* out) override { return HandOutText("get_tagName", name, out); }

  FAKE_METHOD_REFUSED(setAttribute, BSTR, VARIANT)
  FAKE_METHOD_REFUSED(removeAttribute, BSTR)
  FAKE_METHOD_REFUSED(getAttributeNode, BSTR, IXMLDOMAttribute**)
  FAKE_METHOD_REFUSED(setAttributeNode, IXMLDOMAttribute*, IXMLDOMAttribute**)
  FAKE_METHOD_REFUSED(removeAttributeNode, IXMLDOMAttribute*, IXMLDOMAttribute**)
  FAKE_METHOD_REFUSED(getElementsByTagName, BSTR, IXMLDOMNodeList**)
  FAKE_METHOD_REFUSED(normalize)

 protected:
  bool Implements(REFIID iid) const override;
};

// A list; an entry may be null. `claimedLength` replaces the true length when it is not negative.
class FakeNodeList : public FakeDispatch<IXMLDOMNodeList, &IID_IXMLDOMNodeList> {
 public:
  std::vector<IXMLDOMNode*> items;
  LONG claimedLength = -1;

  HRESULT WINAPI get_length(LONG* length) override;
  HRESULT WINAPI get_item(LONG index, IXMLDOMNode** item) override;
  HRESULT WINAPI nextNode(IXMLDOMNode** item) override;
  HRESULT WINAPI reset() override;
  FAKE_METHOD_REFUSED(get__newEnum, IUnknown**)

 private:
  IXMLDOMNode* At(LONG index) const;

  LONG next = 0;
};

// The attributes of a node.
class FakeAttributes : public FakeDispatch<IXMLDOMNamedNodeMap, &IID_IXMLDOMNamedNodeMap> {
 public:
  std::map<std::wstring_view, IXMLDOMNode*> named;

  HRESULT WINAPI getNamedItem(BSTR name, IXMLDOMNode** item) override {
    return HandOut("getNamedItem", FindNamed(named, name), item);
  }
  FAKE_METHOD_REFUSED(setNamedItem, IXMLDOMNode*, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(removeNamedItem, BSTR, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(get_item, LONG, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(get_length, LONG*)
  FAKE_METHOD_REFUSED(getQualifiedItem, BSTR, BSTR, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(removeQualifiedItem, BSTR, BSTR, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(nextNode, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(reset)
  FAKE_METHOD_REFUSED(get__newEnum, IUnknown**)
};

// What the parser says about a document it refused. The line is written whatever get_line answers.
class FakeParseError : public FakeDispatch<IXMLDOMParseError, &IID_IXMLDOMParseError> {
 public:
  explicit FakeParseError(LONG errorLine = 0, const wchar_t* errorReason = nullptr) : line(errorLine), reason(errorReason) {}

  LONG line;
  const wchar_t* reason;

  HRESULT WINAPI get_line(LONG* out) override {
    *out = line;
    return CodeOf("get_line");
  }
  HRESULT WINAPI get_reason(BSTR* out) override { return HandOutText("get_reason", reason, out); }
  FAKE_METHOD_REFUSED(get_errorCode, LONG*)
  FAKE_METHOD_REFUSED(get_url, BSTR*)
  FAKE_METHOD_REFUSED(get_srcText, BSTR*)
  FAKE_METHOD_REFUSED(get_linepos, LONG*)
  FAKE_METHOD_REFUSED(get_filepos, LONG*)
};

// A document type without content.
class FakeDocumentType : public FakeNodeMethods<IXMLDOMDocumentType, &IID_IXMLDOMDocumentType> {
 public:
  FAKE_METHOD_REFUSED(get_name, BSTR*)
  FAKE_METHOD_REFUSED(get_entities, IXMLDOMNamedNodeMap**)
  FAKE_METHOD_REFUSED(get_notations, IXMLDOMNamedNodeMap**)
};

// IXMLDOMDocument2, of which the import libraries know no identifier.
inline constexpr IID kDocumentInterface = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

// A document that loads, unless it is told otherwise, and that keeps a record of how it was used.
class FakeDocument : public FakeNodeMethods<IXMLDOMDocument2, &kDocumentInterface> {
 public:
  IXMLDOMElement* documentElement = nullptr;
  IXMLDOMDocumentType* documentType = nullptr;
  std::map<std::wstring_view, IXMLDOMNodeList*> elements;  // by tag name, a literal
  VARIANT_BOOL isLoaded = VARIANT_TRUE;                    // what load and loadXML report; without success S_FALSE
  IXMLDOMParseError* parseError = nullptr;
  IXMLDOMParseError* validationError = nullptr;  // validate answers S_FALSE when there is one

  // Settings, loads, validations and saves in their order, such as "async 0", "load C:\a.xml", "validate".
  std::vector<std::string> calls;

  HRESULT WINAPI get_documentElement(IXMLDOMElement** out) override {
    return HandOut("get_documentElement", documentElement, out);
  }
  HRESULT WINAPI get_doctype(IXMLDOMDocumentType** out) override { return HandOut("get_doctype", documentType, out); }
  HRESULT WINAPI get_parseError(IXMLDOMParseError** out) override { return HandOut("get_parseError", parseError, out); }
  HRESULT WINAPI getElementsByTagName(BSTR tagName, IXMLDOMNodeList** out) override {
    return HandOut("getElementsByTagName", FindNamed(elements, tagName), out);
  }
  HRESULT WINAPI load(VARIANT source, VARIANT_BOOL* isSuccessful) override;
  HRESULT WINAPI loadXML(BSTR source, VARIANT_BOOL* isSuccessful) override;
  HRESULT WINAPI validate(IXMLDOMParseError** error) override;
  HRESULT WINAPI save(VARIANT destination) override;
  HRESULT WINAPI put_async(VARIANT_BOOL value) override { return Put("put_async", value); }
  HRESULT WINAPI put_validateOnParse(VARIANT_BOOL value) override { return Put("put_validateOnParse", value); }
  HRESULT WINAPI put_resolveExternals(VARIANT_BOOL value) override { return Put("put_resolveExternals", value); }
  HRESULT WINAPI put_preserveWhiteSpace(VARIANT_BOOL value) override { return Put("put_preserveWhiteSpace", value); }

  FAKE_METHOD_REFUSED(get_implementation, IXMLDOMImplementation**)
  FAKE_METHOD_REFUSED(putref_documentElement, IXMLDOMElement*)
  FAKE_METHOD_REFUSED(createElement, BSTR, IXMLDOMElement**)
  FAKE_METHOD_REFUSED(createDocumentFragment, IXMLDOMDocumentFragment**)
  FAKE_METHOD_REFUSED(createTextNode, BSTR, IXMLDOMText**)
  FAKE_METHOD_REFUSED(createComment, BSTR, IXMLDOMComment**)
  FAKE_METHOD_REFUSED(createCDATASection, BSTR, IXMLDOMCDATASection**)
  FAKE_METHOD_REFUSED(createProcessingInstruction, BSTR, BSTR, IXMLDOMProcessingInstruction**)
  FAKE_METHOD_REFUSED(createAttribute, BSTR, IXMLDOMAttribute**)
  FAKE_METHOD_REFUSED(createEntityReference, BSTR, IXMLDOMEntityReference**)
  FAKE_METHOD_REFUSED(createNode, VARIANT, BSTR, BSTR, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(nodeFromID, BSTR, IXMLDOMNode**)
  FAKE_METHOD_REFUSED(get_readyState, LONG*)
  FAKE_METHOD_REFUSED(get_url, BSTR*)
  FAKE_METHOD_REFUSED(get_async, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(abort)
  FAKE_METHOD_REFUSED(get_validateOnParse, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(get_resolveExternals, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(get_preserveWhiteSpace, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(put_onreadystatechange, VARIANT)
  FAKE_METHOD_REFUSED(put_ondataavailable, VARIANT)
  FAKE_METHOD_REFUSED(put_ontransformnode, VARIANT)
  FAKE_METHOD_REFUSED(get_namespaces, IXMLDOMSchemaCollection**)
  FAKE_METHOD_REFUSED(get_schemas, VARIANT*)
  FAKE_METHOD_REFUSED(putref_schemas, VARIANT)
  FAKE_METHOD_REFUSED(setProperty, BSTR, VARIANT)
  FAKE_METHOD_REFUSED(getProperty, BSTR, VARIANT*)

 protected:
  bool Implements(REFIID iid) const override;

 private:
  HRESULT Put(std::string_view method, VARIANT_BOOL value);
  HRESULT Loaded(std::string_view method, const wchar_t* source, VARIANT_BOOL* isSuccessful);
};
