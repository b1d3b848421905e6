#include "support/FakeXml.h"

namespace {

std::string Narrow(const wchar_t* text) {
  const std::wstring_view wide = text ? text : L"(null)";
  return std::string(wide.begin(), wide.end());
}

std::string Narrow(const VARIANT& value) {
  return value.vt == VT_BSTR ? Narrow(value.bstrVal) : "(variant of type " + std::to_string(value.vt) + ")";
}

}  // namespace

HRESULT FakeNode::getAttribute(BSTR, VARIANT* value) {
  const HRESULT code = CodeOf("getAttribute", attributeText ? S_OK : S_FALSE);
  VariantInit(value);
  value->vt = SUCCEEDED(code) ? attributeType : VARTYPE{VT_NULL};
  if (value->vt == VT_BSTR)
    value->bstrVal = attributeText ? SysAllocStringLen(attributeText, static_cast<UINT>(wcslen(attributeText))) : nullptr;
  return code;
}

bool FakeNode::Implements(REFIID iid) const {
  return iid == IID_IXMLDOMElement ? isElement : FakeNodeMethods::Implements(iid);
}

HRESULT FakeNodeList::get_length(LONG* length) {
  *length = claimedLength >= 0 ? claimedLength : static_cast<LONG>(items.size());
  return CodeOf("get_length");
}

IXMLDOMNode* FakeNodeList::At(LONG index) const {
  return index >= 0 && index < static_cast<LONG>(items.size()) ? items[static_cast<std::size_t>(index)] : nullptr;
}

HRESULT FakeNodeList::get_item(LONG index, IXMLDOMNode** item) {
  return HandOut("get_item", At(index), item);
}

HRESULT FakeNodeList::nextNode(IXMLDOMNode** item) {
  return HandOut("nextNode", At(next++), item);
}

HRESULT FakeNodeList::reset() {
  next = 0;
  return CodeOf("reset");
}

bool FakeDocument::Implements(REFIID iid) const {
  return iid == IID_IXMLDOMDocument || FakeNodeMethods::Implements(iid);
}

HRESULT FakeDocument::Put(std::string_view method, VARIANT_BOOL value) {
  calls.push_back(std::string(method.substr(4)) + " " + std::to_string(value));
  return CodeOf(method);
}

HRESULT FakeDocument::Loaded(std::string_view method, const wchar_t* source, VARIANT_BOOL* isSuccessful) {
  calls.push_back(std::string(method) + " " + Narrow(source));
  *isSuccessful = isLoaded;
  return CodeOf(method, isLoaded ? S_OK : S_FALSE);
}

HRESULT FakeDocument::load(VARIANT source, VARIANT_BOOL* isSuccessful) {
  return Loaded("load", source.vt == VT_BSTR ? source.bstrVal : nullptr, isSuccessful);
}

HRESULT FakeDocument::loadXML(BSTR source, VARIANT_BOOL* isSuccessful) {
  return Loaded("loadXML", source, isSuccessful);
}

HRESULT FakeDocument::validate(IXMLDOMParseError** error) {
  calls.push_back("validate");
  HandOut("validate", validationError, error);
  return CodeOf("validate", validationError ? S_FALSE : S_OK);
}

HRESULT FakeDocument::save(VARIANT destination) {
  calls.push_back("save " + Narrow(destination));
  return CodeOf("save");
}
