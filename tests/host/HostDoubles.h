#pragma once

#include "common/Windows.h"

#include <exdisp.h>
#include <gtest/gtest.h>
#include <ocidl.h>
#include <oleidl.h>
#include <servprov.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/Variants.h"
#include "support/FakeXmlBase.h"

// What a host shows to a control that it embeds: the objects on the way from the site to the browser, and a property bag. A
// test owns them; references that are not given back fail it. Each of them can be made to fail with a code of the test's
// own.

// The browser: records where it is sent.
class FakeBrowser : public FakeDispatch<IWebBrowserApp, &IID_IWebBrowserApp> {
 public:
  HRESULT WINAPI QueryInterface(REFIID iid, void** object) override;
  HRESULT WINAPI Navigate(BSTR url, VARIANT* flags, VARIANT* targetFrame, VARIANT* postData, VARIANT* headers) override;

  std::vector<std::string> urls;           // in the order of the calls
  std::vector<std::string> argumentTypes;  // of the four optional arguments of each call, such as "0 0 0 0"
  HRESULT queryCode = S_OK;                // what a request for IWebBrowserApp answers

  FAKE_METHOD_REFUSED(GoBack)
  FAKE_METHOD_REFUSED(GoForward)
  FAKE_METHOD_REFUSED(GoHome)
  FAKE_METHOD_REFUSED(GoSearch)
  FAKE_METHOD_REFUSED(Refresh)
  FAKE_METHOD_REFUSED(Refresh2, VARIANT*)
  FAKE_METHOD_REFUSED(Stop)
  FAKE_METHOD_REFUSED(get_Application, IDispatch**)
  FAKE_METHOD_REFUSED(get_Parent, IDispatch**)
  FAKE_METHOD_REFUSED(get_Container, IDispatch**)
  FAKE_METHOD_REFUSED(get_Document, IDispatch**)
  FAKE_METHOD_REFUSED(get_TopLevelContainer, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(get_Type, BSTR*)
  FAKE_METHOD_REFUSED(get_Left, LONG*)
  FAKE_METHOD_REFUSED(put_Left, LONG)
  FAKE_METHOD_REFUSED(get_Top, LONG*)
  FAKE_METHOD_REFUSED(put_Top, LONG)
  FAKE_METHOD_REFUSED(get_Width, LONG*)
  FAKE_METHOD_REFUSED(put_Width, LONG)
  FAKE_METHOD_REFUSED(get_Height, LONG*)
  FAKE_METHOD_REFUSED(put_Height, LONG)
  FAKE_METHOD_REFUSED(get_LocationName, BSTR*)
  FAKE_METHOD_REFUSED(get_LocationURL, BSTR*)
  FAKE_METHOD_REFUSED(get_Busy, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(Quit)
  FAKE_METHOD_REFUSED(ClientToWindow, int*, int*)
  FAKE_METHOD_REFUSED(PutProperty, BSTR, VARIANT)
  FAKE_METHOD_REFUSED(GetProperty, BSTR, VARIANT*)
  FAKE_METHOD_REFUSED(get_Name, BSTR*)
  FAKE_METHOD_REFUSED(get_HWND, SHANDLE_PTR*)
  FAKE_METHOD_REFUSED(get_FullName, BSTR*)
  FAKE_METHOD_REFUSED(get_Path, BSTR*)
  FAKE_METHOD_REFUSED(get_Visible, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(put_Visible, VARIANT_BOOL)
  FAKE_METHOD_REFUSED(get_StatusBar, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(put_StatusBar, VARIANT_BOOL)
  FAKE_METHOD_REFUSED(get_StatusText, BSTR*)
  FAKE_METHOD_REFUSED(put_StatusText, BSTR)
  FAKE_METHOD_REFUSED(get_ToolBar, int*)
  FAKE_METHOD_REFUSED(put_ToolBar, int)
  FAKE_METHOD_REFUSED(get_MenuBar, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(put_MenuBar, VARIANT_BOOL)
  FAKE_METHOD_REFUSED(get_FullScreen, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(put_FullScreen, VARIANT_BOOL)
};

// The site of an embedded control, whose services are the browser.
class FakeSite : public IOleClientSite, public IServiceProvider {
 public:
  explicit FakeSite(FakeBrowser* hostingBrowser) : browser(hostingBrowser) {}
  virtual ~FakeSite() { EXPECT_EQ(0, references) << "references to the site that were not given back"; }
  FakeSite(const FakeSite&) = delete;
  FakeSite& operator=(const FakeSite&) = delete;

  IUnknown* Unknown() { return static_cast<IOleClientSite*>(this); }
  int References() const { return references; }

  HRESULT clientSiteCode = S_OK;  // what requests for the interfaces, and for the service, answer
  HRESULT providerCode = S_OK;
  HRESULT serviceCode = S_OK;
  bool isServiceNull = false;  // the service is there and is nothing

  HRESULT WINAPI QueryInterface(REFIID iid, void** object) override;
  ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references); }
  ULONG WINAPI Release() override { return static_cast<ULONG>(--references); }
  HRESULT WINAPI QueryService(REFGUID service, REFIID iid, void** object) override;

  FAKE_METHOD_REFUSED(SaveObject)
  FAKE_METHOD_REFUSED(GetMoniker, DWORD, DWORD, IMoniker**)
  FAKE_METHOD_REFUSED(GetContainer, IOleContainer**)
  FAKE_METHOD_REFUSED(ShowObject)
  FAKE_METHOD_REFUSED(OnShowWindow, BOOL)
  FAKE_METHOD_REFUSED(RequestNewObjectLayout)

 private:
  FakeBrowser* browser;
  int references = 0;
};

// A property bag. A property that it does not hold is E_INVALIDARG, as browsers answer it.
class FakeBag : public IPropertyBag {
 public:
  FakeBag() = default;
  virtual ~FakeBag() { EXPECT_EQ(0, references) << "references to the bag that were not given back"; }
  FakeBag(const FakeBag&) = delete;
  FakeBag& operator=(const FakeBag&) = delete;

  std::map<std::wstring_view, Variant> properties;
  std::vector<std::string> asked;    // the names that were read
  std::vector<std::string> offered;  // what came with each of them, as "type text"
  std::vector<std::string> written;  // as "name type text"
  std::wstring_view unwritable;      // the name that cannot be written
  IErrorLog* errors = nullptr;       // that came with the last read

  HRESULT WINAPI QueryInterface(REFIID iid, void** object) override;
  ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references); }
  ULONG WINAPI Release() override { return static_cast<ULONG>(--references); }
  HRESULT WINAPI Read(LPCOLESTR name, VARIANT* value, IErrorLog* errorLog) override;
  HRESULT WINAPI Write(LPCOLESTR name, VARIANT* value) override;

 private:
  int references = 0;
};
