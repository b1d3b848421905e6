#pragma once

#include "common/Windows.h"

#include <utility>

#include "common/Text.h"

// An owned automation value, cleared with its owner.
class Variant {
 public:
  Variant() = default;
  // A zero value of that type, which a callee may take for the type that is wanted.
  explicit Variant(VARTYPE type) { value.vt = type; }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { VariantClear(&value); }

  VARIANT& Get() { return value; }

  // Hands out the string of a value that is one, and leaves the value empty.
  BString TakeString() {
    value.vt = VT_EMPTY;
    return BString(std::exchange(value.bstrVal, nullptr));
  }

 private:
  VARIANT value = {};
};
