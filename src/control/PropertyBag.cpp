#include "control/PropertyBag.h"

#include "common/Variant.h"

namespace {

// Reads the property as `property`'s own type. S_FALSE when the bag does not hold it: bags answer that with a failure, or
// with an empty value.
HRESULT Read(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, Variant& property) {
  const VARTYPE type = property.Get().vt;
  if (FAILED(bag->Read(name, &property.Get(), errors)) || property.Get().vt == VT_EMPTY)
    return S_FALSE;
  if (property.Get().vt == type)
    return S_OK;
  return FAILED(VariantChangeType(&property.Get(), &property.Get(), 0, type)) ? E_FAIL : S_OK;
}

}  // namespace

HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, DWORD& value) {
  Variant property(VT_UI4);
  property.Get().ulVal = value;
  const HRESULT hr = Read(bag, errors, name, property);
  if (hr == S_OK)
    value = property.Get().ulVal;
  return hr;
}

HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, VARIANT_BOOL& value) {
  Variant property(VT_BOOL);
  property.Get().boolVal = value;
  const HRESULT hr = Read(bag, errors, name, property);
  if (hr == S_OK)
    value = property.Get().boolVal;
  return hr;
}

HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, BString& value) {
  Variant property(VT_BSTR);
  const HRESULT hr = Read(bag, errors, name, property);
  if (hr != S_OK)
    return hr;
  value = property.TakeString();
  return S_OK;
}

HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, DWORD value) {
  Variant property(VT_UI4);
  property.Get().ulVal = value;
  return bag->Write(name, &property.Get());
}

HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, VARIANT_BOOL value) {
  Variant property(VT_BOOL);
  property.Get().boolVal = value;
  return bag->Write(name, &property.Get());
}

HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, const BString& value) {
  Variant property(VT_BSTR);
  property.Get().bstrVal = SysAllocString(value ? value.Get() : L"");
  return property.Get().bstrVal ? bag->Write(name, &property.Get()) : E_OUTOFMEMORY;
}
