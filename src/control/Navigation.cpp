#include "control/Navigation.h"

#include "common/Windows.h"

#include <exdisp.h>
#include <ocidl.h>
#include <servprov.h>
#include <wrl/client.h>

#include "common/Variant.h"
#include "log/LogFile.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"axNorvik", 1000};

// SID_SWebBrowserApp: the service goes by the identifier of its interface.
const GUID& WebBrowserAppService() {
  return __uuidof(IWebBrowserApp);
}

// A step that hands out nothing and calls it success has failed as well.
template <class Interface>
HRESULT StepResult(HRESULT hr, const ComPtr<Interface>& received) {
  return SUCCEEDED(hr) && !received ? E_NOINTERFACE : hr;
}

HRESULT FindBrowser(IObjectWithSite* sitedControl, ComPtr<IWebBrowserApp>& browser) {
  ComPtr<IOleClientSite> clientSite;
  HRESULT hr = StepResult(
      sitedControl->GetSite(__uuidof(IOleClientSite), reinterpret_cast<void**>(clientSite.GetAddressOf())), clientSite);
  if (FAILED(hr))
    return hr;
  ComPtr<IServiceProvider> services;
  hr = StepResult(
      clientSite->QueryInterface(__uuidof(IServiceProvider), reinterpret_cast<void**>(services.GetAddressOf())), services);
  if (FAILED(hr))
    return hr;
  ComPtr<IUnknown> service;
  hr = StepResult(
      services->QueryService(WebBrowserAppService(), __uuidof(IUnknown), reinterpret_cast<void**>(service.GetAddressOf())),
      service);
  if (FAILED(hr))
    return hr;
  return StepResult(
      service->QueryInterface(__uuidof(IWebBrowserApp), reinterpret_cast<void**>(browser.GetAddressOf())), browser);
}

}  // namespace

HRESULT NavigateBrowser(IObjectWithSite* sitedControl, BSTR url) {
  ComPtr<IWebBrowserApp> browser;
  HRESULT hr = FindBrowser(sitedControl, browser);
  if (SUCCEEDED(hr)) {
    Variant flags;
    Variant targetFrame;
    Variant postData;
    Variant headers;
    hr = browser->Navigate(url, &flags.Get(), &targetFrame.Get(), &postData.Get(), &headers.Get());
  }
  if (FAILED(hr))
    LogErrorW(HERE, hr, L"ActiveX control failed to navigate browser to URL '%s'.", url);
  return hr;
}
