#include "torture/Host.h"

#include "host/ControlFixture.h"
#include "host/HostDoubles.h"

using Microsoft::WRL::ComPtr;

namespace {

template <class Interface>
ComPtr<Interface> Ask(IUnknown* object, REFIID iid) {
  ComPtr<Interface> asked;
  EXPECT_HRESULT(S_OK, object->QueryInterface(iid, reinterpret_cast<void**>(asked.GetAddressOf())));
  return asked;
}

void Navigate(IAXNorvik* control, const std::string& manifestUrl, CallCounter& counter, Effects& effects) {
  BSTR url = nullptr;
  effects.results.push_back(control->ExecuteNavigate(Automation(manifestUrl).Get(), &url));
  if (url)
    effects.host.push_back("answered " + Narrow(url));
  counter.GiveBack("string", url);  // it is the host's
  SysFreeString(url);
}

HRESULT LoadPage(IAXNorvik* control, const std::string& manifestUrl) {
  FakeBag bag;
  bag.properties[L"ManifestURL"] = Variant::Text(manifestUrl);
  bag.properties[L"LogDebug"] = Variant::Text("-1");
  return Ask<IPersistPropertyBag>(control, IID_IPersistPropertyBag)->Load(&bag, nullptr);
}

}  // namespace

void UseModule(const LoadedModule& module, Use use, const std::string& manifestUrl, CallCounter& counter, Effects& effects) {
  ComPtr<IClassFactory> factory;
  ComPtr<IAXNorvik> control;
  HRESULT hr = module.GetClassObject(CLSID_AXNorvik, IID_IClassFactory, reinterpret_cast<void**>(factory.GetAddressOf()));
  if (SUCCEEDED(hr))
    hr = factory->CreateInstance(nullptr, IID_IAXNorvik, reinterpret_cast<void**>(control.GetAddressOf()));
  effects.results.push_back(hr);
  if (FAILED(hr) || use == Use::CreateOnly)
    return;
  if (use == Use::ExecuteNavigate)
    return Navigate(control.Get(), manifestUrl, counter, effects);

  FakeBrowser browser;
  FakeSite site(&browser);
  const ComPtr<IObjectWithSite> sited = Ask<IObjectWithSite>(control.Get(), IID_IObjectWithSite);
  if (use == Use::Page) {
    effects.results.push_back(LoadPage(control.Get(), manifestUrl));
    effects.results.push_back(sited->SetSite(site.Unknown()));
  } else {
    EXPECT_HRESULT(S_OK, sited->SetSite(site.Unknown()));
    effects.results.push_back(control->Execute(Automation(manifestUrl).Get()));
  }
  EXPECT_HRESULT(S_OK, sited->SetSite(nullptr));
  for (const std::string& url : browser.urls)
    effects.host.push_back("navigated " + url);
}
