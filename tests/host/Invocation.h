#pragma once

#include "common/Windows.h"

#include <vector>

#include "host/Variants.h"

// A call of a member through IDispatch, as a script host makes it.
struct Invocation {
  // The code of the call or, when the member itself failed, the member's own.
  HRESULT code = S_OK;
  Variant result;
};

// `arguments` in the order of the declaration. `flags` as for IDispatch::Invoke.
Invocation Invoke(IDispatch* object, DISPID member, WORD flags, const std::vector<Variant>& arguments = {});

// The same for the value that is put into a property.
Invocation InvokePut(IDispatch* object, DISPID member, const Variant& value);

constexpr DISPID kExecute = 1;
constexpr DISPID kExecuteNavigate = 2;
constexpr DISPID kSetEnableLogDebug = 3;
constexpr DISPID kManifestURL = 4;
constexpr DISPID kLogDebug = 5;
