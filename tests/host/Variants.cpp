#include "host/Variants.h"

#include "support/Files.h"

Variant Variant::Text(const std::string& text) {
  Variant made;
  made.value.vt = VT_BSTR;
  made.value.bstrVal = SysAllocString(Wide(text).c_str());
  return made;
}

Variant Variant::Bool(VARIANT_BOOL flag) {
  Variant made;
  made.value.vt = VT_BOOL;
  made.value.boolVal = flag;
  return made;
}

Variant Variant::Long(LONG number) {
  Variant made;
  made.value.vt = VT_I4;
  made.value.lVal = number;
  return made;
}

Variant Variant::Unsigned(ULONG number) {
  Variant made;
  made.value.vt = VT_UI4;
  made.value.ulVal = number;
  return made;
}

Variant Variant::TextAt(BSTR* place) {
  Variant made;
  made.value.vt = VT_BSTR | VT_BYREF;
  made.value.pbstrVal = place;
  return made;
}

Variant Variant::VariantAt(Variant& place) {
  Variant made;
  made.value.vt = VT_VARIANT | VT_BYREF;
  made.value.pvarVal = &place.value;
  return made;
}

Variant Variant::NoObject() {
  Variant made;
  made.value.vt = VT_UNKNOWN;
  made.value.punkVal = nullptr;
  return made;
}

std::string Show(const VARIANT& value) {
  const std::string type = std::to_string(value.vt);
  if (value.vt == VT_BSTR)
    return type + " " + std::string(value.bstrVal, value.bstrVal + SysStringLen(value.bstrVal));
  if (value.vt == VT_BOOL)
    return type + " " + std::to_string(value.boolVal);
  if (value.vt == VT_I4)
    return type + " " + std::to_string(value.lVal);
  if (value.vt == VT_UI4)
    return type + " " + std::to_string(value.ulVal);
  return type;
}
