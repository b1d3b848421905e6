#pragma once

#include "common/Windows.h"

#include <string>

// An automation value that a test owns.
class Variant {
 public:
  Variant() { VariantInit(&value); }
  Variant(const Variant& other) : Variant() { VariantCopy(&value, &other.value); }
  Variant& operator=(const Variant& other) {
    VariantCopy(&value, &other.value);
    return *this;
  }
  ~Variant() { VariantClear(&value); }

  static Variant Text(const std::string& text);
  static Variant Bool(VARIANT_BOOL flag);
  static Variant Long(LONG number);
  static Variant Unsigned(ULONG number);

  // References: to a string or to a value that the caller keeps.
  static Variant TextAt(BSTR* place);
  static Variant VariantAt(Variant& place);

  // An object, which no text, number or flag can be made of.
  static Variant NoObject();

  VARIANT* Get() const { return &value; }
  VARIANT* Receive() {
    VariantClear(&value);
    return &value;
  }

 private:
  mutable VARIANT value;
};

// A value as "type text", such as "8 http://host/" or "11 -1"; the type alone when it has no text.
std::string Show(const VARIANT& value);
inline std::string Show(const Variant& value) {
  return Show(*value.Get());
}
