#include "host/HostDoubles.h"

#include "host/ControlFixture.h"

HRESULT FakeBrowser::QueryInterface(REFIID iid, void** object) {
  *object = nullptr;
  if (iid == IID_IWebBrowserApp && queryCode != S_OK)
    return queryCode;
  return FakeDispatch::QueryInterface(iid, object);
}

HRESULT FakeBrowser::Navigate(BSTR url, VARIANT* flags, VARIANT* targetFrame, VARIANT* postData, VARIANT* headers) {
  urls.push_back(Narrow(url));
  std::string types;
  for (const VARIANT* argument : {flags, targetFrame, postData, headers})
    types += (types.empty() ? "" : " ") + (argument ? std::to_string(argument->vt) : std::string("null"));
  argumentTypes.push_back(types);
  return CodeOf("Navigate");
}

HRESULT FakeSite::QueryInterface(REFIID iid, void** object) {
  *object = nullptr;
  if (iid == IID_IOleClientSite && clientSiteCode != S_OK)
    return clientSiteCode;
  if (iid == IID_IServiceProvider && providerCode != S_OK)
    return providerCode;
  if (iid == IID_IUnknown || iid == IID_IOleClientSite)
    *object = static_cast<IOleClientSite*>(this);
  else if (iid == IID_IServiceProvider)
    *object = static_cast<IServiceProvider*>(this);
  else
    return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

HRESULT FakeSite::QueryService(REFGUID service, REFIID iid, void** object) {
  *object = nullptr;
  if (serviceCode != S_OK)
    return serviceCode;
  if (isServiceNull)
    return S_OK;
  // SID_SWebBrowserApp is the identifier of IWebBrowserApp.
  return service == IID_IWebBrowserApp && iid == IID_IUnknown ? browser->QueryInterface(iid, object) : E_NOINTERFACE;
}

HRESULT FakeBag::QueryInterface(REFIID iid, void** object) {
  *object = nullptr;
  if (iid != IID_IUnknown && iid != IID_IPropertyBag)
    return E_NOINTERFACE;
  *object = this;
  AddRef();
  return S_OK;
}

HRESULT FakeBag::Read(LPCOLESTR name, VARIANT* value, IErrorLog* errorLog) {
  asked.push_back(std::string(name, name + wcslen(name)));
  offered.push_back(Show(*value));
  errors = errorLog;
  const auto found = properties.find(name);
  return found == properties.end() ? E_INVALIDARG : VariantCopy(value, found->second.Get());
}

HRESULT FakeBag::Write(LPCOLESTR name, VARIANT* value) {
  if (name == unwritable)
    return STG_E_ACCESSDENIED;
  written.push_back(std::string(name, name + wcslen(name)) + " " + Show(*value));
  return S_OK;
}
