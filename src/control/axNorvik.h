#pragma once

#include "common/Windows.h"

#include <objsafe.h>
#include <ocidl.h>
#include <wrl/client.h>

#include <memory>

#include "common/Text.h"
#include "control/Module.h"
#include "control/norvik_h.h"
#include "engine/Execute.h"

// The control that a page embeds and scripts. It owns the engine and reports every run through its result code; it has no
// window and shows nothing of its own. A manifest named by the page's "ManifestURL" parameter runs when the parameters are
// loaded; the URL that such a run yields is kept until the control is given its site.
class CAXNorvik : public IAXNorvik, public IObjectWithSite, public IObjectSafety, public IPersistPropertyBag {
 public:
  // Makes a control. It is made even when the engine cannot be: then every run fails with E_UNEXPECTED.
  // S_OK, E_NOINTERFACE or E_OUTOFMEMORY.
  [[nodiscard]] static HRESULT Create(REFIID interfaceId, void** object);

  // IUnknown
  STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override;
  STDMETHODIMP_(ULONG) Release() override;

  // IDispatch, served from the module's own type library, registered or not
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override;
  STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* argumentError) override;

  // IAXNorvik
  //
  // Runs the manifest, and navigates the hosting browser to the URL that the run yields, if any.
  // The run's result (S_FALSE: a command failed) or, once there was something to navigate to, the navigation's.
  STDMETHODIMP Execute(BSTR bstrManifestURL) override;

  // Runs the manifest and hands the URL that it yields to the caller, who owns the string; `*pbstrNavigateURL` is
  // overwritten only when there is one. S_OK; S_FALSE when a command failed; E_INVALIDARG without a manifest URL;
  // E_UNEXPECTED without an engine; else why the manifest could not be run.
  STDMETHODIMP ExecuteNavigate(BSTR bstrManifestURL, BSTR* pbstrNavigateURL) override;
  STDMETHODIMP SetEnableLogDebug(VARIANT_BOOL bEnabled) override;
  STDMETHODIMP get_ManifestURL(BSTR* pVal) override;
  STDMETHODIMP put_ManifestURL(BSTR pVal) override;
  STDMETHODIMP get_LogDebug(VARIANT_BOOL* pVal) override;
  STDMETHODIMP put_LogDebug(VARIANT_BOOL pVal) override;

  // IObjectWithSite
  STDMETHODIMP SetSite(IUnknown* newSite) override;
  STDMETHODIMP GetSite(REFIID interfaceId, void** object) override;

  // IObjectSafety: safe for untrusted callers, if asked to be
  STDMETHODIMP GetInterfaceSafetyOptions(REFIID interfaceId, DWORD* supported, DWORD* enabled) override;
  STDMETHODIMP SetInterfaceSafetyOptions(REFIID interfaceId, DWORD mask, DWORD enabled) override;

  // IPersistPropertyBag
  STDMETHODIMP GetClassID(CLSID* classId) override;
  STDMETHODIMP InitNew() override;
  STDMETHODIMP Load(IPropertyBag* bag, IErrorLog* errors) override;
  STDMETHODIMP Save(IPropertyBag* bag, BOOL clearDirty, BOOL saveAllProperties) override;

 private:
  CAXNorvik() = default;
  virtual ~CAXNorvik() = default;

  HRESULT Initialize();
  HRESULT LoadProperties(IPropertyBag* bag, IErrorLog* errors);
  HRESULT RunPageManifest();
  HRESULT LoadTypeInfo();
  // The interface without a reference; null when the control does not have it.
  void* FindInterface(REFIID interfaceId);

  ModuleReference module;
  LONG references = 0;
  DWORD safetyOptions = 0;
  DWORD extentX = 0;
  DWORD extentY = 0;
  Microsoft::WRL::ComPtr<ITypeInfo> typeInfo;
  Microsoft::WRL::ComPtr<IUnknown> site;
  BString manifestURL;         // empty text, never a null string
  BString pendingNavigateURL;  // of a run that started before there was a site
  std::unique_ptr<CExecuter> executer;
};
