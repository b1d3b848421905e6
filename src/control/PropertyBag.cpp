#include "control/PropertyBag.h"

namespace {

class Variant {
 public:
  explicit Variant(VARTYPE type) {
    VariantInit(&value);
    value.vt = type;
  }
  ~Variant() { VariantClear(&value); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;

  VARIANT value;
};

// Reads the property as `property`'s own type. S_FALSE when the bag does not hold it: bags answer that with a failure, or
// with an empty value.
HRESULT Read(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, Variant& property) {
  const VARTYPE type = property.value.vt;
  if (FAILED(bag->Read(name, &property.value, errors)) || property.value.vt == VT_EMPTY)
    return S_FALSE;
  if (property.value.vt == type)
    return S_OK;
  return FAILED(VariantChangeType(&property.value, &property.value, 0, type)) ? E_FAIL : S_OK;
}

}  // namespace

HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, DWORD& value) {
  Variant property(VT_UI4);
  property.value.ulVal = value;
  const HRESULT hr = Read(bag, errors, name, property);
  if (hr == S_OK)
    value = property.value.ulVal;
  return hr;
}

HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, VARIANT_BOOL& value) {
  Variant property(VT_BOOL);
  property.value.boolVal = value;
  const HRESULT hr = Read(bag, errors, name, property);
  if (hr == S_OK)
    value = property.value.boolVal;
  return hr;
}

HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, BString& value) {
  Variant property(VT_BSTR);
  property.value.bstrVal = nullptr;
  const HRESULT hr = Read(bag, errors, name, property);
  if (hr != S_OK)
    return hr;
  value = BString(property.value.bstrVal);
  property.value.vt = VT_EMPTY;
  return S_OK;
}

HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, DWORD value) {
  Variant property(VT_UI4);
  property.value.ulVal = value;
  return bag->Write(name, &property.value);
}

HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, VARIANT_BOOL value) {
  Variant property(VT_BOOL);
  property.value.boolVal = value;
  return bag->Write(name, &property.value);
}

HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, const BString& value) {
  Variant property(VT_BSTR);
  property.value.bstrVal = SysAllocString(value ? value.Get() : L"");
  return property.value.bstrVal ? bag->Write(name, &property.value) : E_OUTOFMEMORY;
}
