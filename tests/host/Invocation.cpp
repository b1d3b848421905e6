#include "host/Invocation.h"

namespace {

Invocation InvokeWith(IDispatch* object, DISPID member, WORD flags, DISPPARAMS& parameters) {
  Invocation call;
  EXCEPINFO exception = {};
  UINT badArgument = 0;
  call.code =
      object->Invoke(member, IID_NULL, LOCALE_NEUTRAL, flags, &parameters, call.result.Receive(), &exception, &badArgument);
  if (call.code == DISP_E_EXCEPTION)
    call.code = exception.scode;
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  return call;
}

}  // namespace

Invocation Invoke(IDispatch* object, DISPID member, WORD flags, const std::vector<Variant>& arguments) {
  std::vector<VARIANT> reversed;
  for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
    reversed.push_back(*argument->Get());
  DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  return InvokeWith(object, member, flags, parameters);
}

Invocation InvokePut(IDispatch* object, DISPID member, const Variant& value) {
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS parameters = {value.Get(), &put, 1, 1};
  return InvokeWith(object, member, DISPATCH_PROPERTYPUT, parameters);
}
