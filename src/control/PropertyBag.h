#pragma once

#include "common/Windows.h"

#include <ocidl.h>

#include "common/Text.h"

// One property at a time, as it stands in a host's property bag (the <PARAM> tags of a page). Texts are converted to the
// type of the property. A property that the bag does not hold leaves the value as it is (S_FALSE); one that cannot be
// converted gives E_FAIL.
[[nodiscard]] HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, DWORD& value);
[[nodiscard]] HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, VARIANT_BOOL& value);
[[nodiscard]] HRESULT ReadProperty(IPropertyBag* bag, IErrorLog* errors, const wchar_t* name, BString& value);

// Writes one property; the bag's own result.
[[nodiscard]] HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, DWORD value);
[[nodiscard]] HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, VARIANT_BOOL value);
[[nodiscard]] HRESULT WriteProperty(IPropertyBag* bag, const wchar_t* name, const BString& value);
