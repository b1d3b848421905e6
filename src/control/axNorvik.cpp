#include "control/axNorvik.h"

#include <new>

#include "control/Navigation.h"
#include "control/PropertyBag.h"
#include "log/LogFile.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"axNorvik"};
constexpr wchar_t kLogFileName[] = L"ActiveX.log";
constexpr DWORD kControlContext = 0;
constexpr DWORD kSupportedSafety = INTERFACESAFE_FOR_UNTRUSTED_CALLER;

constexpr wchar_t kExtentX[] = L"_cx";
constexpr wchar_t kExtentY[] = L"_cy";
constexpr wchar_t kManifestURL[] = L"ManifestURL";
constexpr wchar_t kLogDebug[] = L"LogDebug";

}  // namespace

HRESULT CAXNorvik::Create(REFIID interfaceId, void** object) {
  *object = nullptr;
  const ComPtr<CAXNorvik> control(new (std::nothrow) CAXNorvik);
  if (!control)
    return E_OUTOFMEMORY;
  const HRESULT hr = control->Initialize();
  return FAILED(hr) ? hr : control->QueryInterface(interfaceId, object);
}

HRESULT CAXNorvik::Initialize() {
  SetLogFileName(kLogFileName);
  manifestURL = BString(SysAllocString(L""));
  if (!manifestURL)
    return E_OUTOFMEMORY;
  HRESULT hr = S_OK;
  executer.reset(new (std::nothrow) CExecuter(kControlContext, &hr));
  if (!executer) {
    LogError(HERE, E_OUTOFMEMORY, "ActiveX control failed to create command executer.");
  } else if (FAILED(hr)) {
    LogError(HERE, hr, "An error occured while the ActiveX control was creating executer.  Destroying executer.");
    executer.reset();
  }
  return S_OK;
}

void* CAXNorvik::FindInterface(REFIID interfaceId) {
  if (interfaceId == __uuidof(IUnknown) || interfaceId == IID_IAXNorvik || interfaceId == __uuidof(IDispatch))
    return static_cast<IAXNorvik*>(this);
  if (interfaceId == __uuidof(IObjectWithSite))
    return static_cast<IObjectWithSite*>(this);
  if (interfaceId == IID_IObjectSafety)
    return static_cast<IObjectSafety*>(this);
  if (interfaceId == __uuidof(IPersistPropertyBag))
    return static_cast<IPersistPropertyBag*>(this);
  return nullptr;
}

STDMETHODIMP CAXNorvik::QueryInterface(REFIID interfaceId, void** object) {
  if (!object)
    return E_POINTER;
  *object = FindInterface(interfaceId);
  if (!*object)
    return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP_(ULONG) CAXNorvik::AddRef() {
  return static_cast<ULONG>(InterlockedIncrement(&references));
}

STDMETHODIMP_(ULONG) CAXNorvik::Release() {
  const LONG left = InterlockedDecrement(&references);
  if (left == 0) {
    references = 1;  // whoever takes and gives back a reference while the object goes away does not destroy it again
    delete this;
  }
  return static_cast<ULONG>(left);
}

// IDispatch

HRESULT CAXNorvik::LoadTypeInfo() {
  if (typeInfo)
    return S_OK;
  wchar_t path[MAX_PATH];
  if (!GetModuleWidePath(path))
    return TYPE_E_CANTLOADLIBRARY;
  ComPtr<ITypeLib> library;
  const HRESULT hr = LoadTypeLibEx(path, REGKIND_NONE, &library);
  return FAILED(hr) ? hr : library->GetTypeInfoOfGuid(IID_IAXNorvik, &typeInfo);
}

STDMETHODIMP CAXNorvik::GetTypeInfoCount(UINT* count) {
  if (!count)
    return E_POINTER;
  *count = 1;
  return S_OK;
}

STDMETHODIMP CAXNorvik::GetTypeInfo(UINT index, LCID /*locale*/, ITypeInfo** info) {
  if (!info)
    return E_POINTER;
  *info = nullptr;
  if (index != 0)
    return DISP_E_BADINDEX;
  const HRESULT hr = LoadTypeInfo();
  return FAILED(hr) ? hr : typeInfo.CopyTo(info);
}

STDMETHODIMP CAXNorvik::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID /*locale*/, DISPID* ids) {
  if (reserved != IID_NULL)
    return DISP_E_UNKNOWNINTERFACE;
  const HRESULT hr = LoadTypeInfo();
  return FAILED(hr) ? hr : typeInfo->GetIDsOfNames(names, count, ids);
}

STDMETHODIMP CAXNorvik::Invoke(DISPID member, REFIID reserved, LCID /*locale*/, WORD flags, DISPPARAMS* parameters,
                               VARIANT* result, EXCEPINFO* exception, UINT* argumentError) {
  if (reserved != IID_NULL)
    return DISP_E_UNKNOWNINTERFACE;
  const HRESULT hr = LoadTypeInfo();
  if (FAILED(hr))
    return hr;
  return typeInfo->Invoke(static_cast<IAXNorvik*>(this), member, flags, parameters, result, exception, argumentError);
}

// IAXNorvik

STDMETHODIMP CAXNorvik::Execute(BSTR bstrManifestURL) {
  BString url;
  const HRESULT hr = ExecuteNavigate(bstrManifestURL, url.Receive());
  if (FAILED(hr))
    return Traced(HERE, hr);
  if (url.IsEmpty())
    return hr;
  const HRESULT navigated = NavigateBrowser(this, url.Get());
  return FAILED(navigated) ? Traced(HERE, navigated) : navigated;
}

STDMETHODIMP CAXNorvik::ExecuteNavigate(BSTR bstrManifestURL, BSTR* pbstrNavigateURL) {
  if (!bstrManifestURL || !*bstrManifestURL)
    return Reported(HERE, E_INVALIDARG, "ActiveX 'Execute' or 'ExecuteNavigate' method missing manifest URL argument.");
  if (!executer)
    return Reported(HERE, E_UNEXPECTED, "ActiveX control missing executer.");
  const HRESULT hr = executer->Run(bstrManifestURL, pbstrNavigateURL);
  if (hr == S_FALSE)
    LogError(HERE, hr, "At least one command failed during the 'Execute' or 'ExecuteNavigate' method.");
  else if (FAILED(hr))
    LogError(HERE, hr, "The 'Execute' or 'ExecuteNavigate' method failed.");
  return hr;
}

STDMETHODIMP CAXNorvik::SetEnableLogDebug(VARIANT_BOOL bEnabled) {
  SetDebugLogging(bEnabled);
  return S_OK;
}

STDMETHODIMP CAXNorvik::get_ManifestURL(BSTR* pVal) {
  if (!pVal)
    return E_POINTER;
  *pVal = SysAllocString(manifestURL.Get());
  return *pVal ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP CAXNorvik::put_ManifestURL(BSTR pVal) {
  BString copy(SysAllocString(pVal ? pVal : L""));
  if (!copy)
    return E_OUTOFMEMORY;
  manifestURL = std::move(copy);
  return S_OK;
}

STDMETHODIMP CAXNorvik::get_LogDebug(VARIANT_BOOL* pVal) {
  if (!pVal)
    return E_POINTER;
  *pVal = static_cast<VARIANT_BOOL>(GetDebugLogging());
  return S_OK;
}

STDMETHODIMP CAXNorvik::put_LogDebug(VARIANT_BOOL pVal) {
  return SetEnableLogDebug(pVal);
}

// IObjectWithSite

STDMETHODIMP CAXNorvik::SetSite(IUnknown* newSite) {
  site = newSite;
  // Taken out first: the browser may come back to the control while it navigates.
  const BString url = std::move(pendingNavigateURL);
  if (!url.IsEmpty()) {
    const HRESULT hr = NavigateBrowser(this, url.Get());
    if (FAILED(hr))
      LogErrorTrace(HERE, hr);
  }
  return S_OK;
}

STDMETHODIMP CAXNorvik::GetSite(REFIID interfaceId, void** object) {
  if (!object)
    return E_POINTER;
  *object = nullptr;
  return site ? site->QueryInterface(interfaceId, object) : E_FAIL;
}

// IObjectSafety

STDMETHODIMP CAXNorvik::GetInterfaceSafetyOptions(REFIID interfaceId, DWORD* supported, DWORD* enabled) {
  if (!supported || !enabled)
    return E_POINTER;
  const bool isKnown = FindInterface(interfaceId) != nullptr;
  *supported = isKnown ? kSupportedSafety : 0;
  *enabled = isKnown ? safetyOptions : 0;
  return isKnown ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP CAXNorvik::SetInterfaceSafetyOptions(REFIID interfaceId, DWORD mask, DWORD enabled) {
  if (!FindInterface(interfaceId))
    return E_NOINTERFACE;
  if (mask & ~kSupportedSafety)
    return E_FAIL;
  safetyOptions = (safetyOptions & ~mask) | (mask & enabled);
  return S_OK;
}

// IPersistPropertyBag

STDMETHODIMP CAXNorvik::GetClassID(CLSID* classId) {
  if (!classId)
    return E_FAIL;
  *classId = CLSID_AXNorvik;
  return S_OK;
}

STDMETHODIMP CAXNorvik::InitNew() {
  return S_OK;
}

STDMETHODIMP CAXNorvik::Load(IPropertyBag* bag, IErrorLog* errors) {
  if (!executer)
    return Reported(HERE, E_UNEXPECTED, "ActiveX control missing command executer.");
  const HRESULT hr = LoadProperties(bag, errors);
  if (FAILED(hr))
    return Reported(HERE, hr, "Failed to load ActiveX properties or HTML <PARAM> tags.");
  return manifestURL.IsEmpty() ? hr : RunPageManifest();
}

HRESULT CAXNorvik::LoadProperties(IPropertyBag* bag, IErrorLog* errors) {
  if (!bag)
    return E_INVALIDARG;
  HRESULT hr = ReadProperty(bag, errors, kExtentX, extentX);
  if (SUCCEEDED(hr))
    hr = ReadProperty(bag, errors, kExtentY, extentY);
  BString url;
  if (SUCCEEDED(hr))
    hr = ReadProperty(bag, errors, kManifestURL, url);
  if (hr == S_OK)
    hr = put_ManifestURL(url.Get());
  VARIANT_BOOL logDebug = VARIANT_FALSE;
  if (SUCCEEDED(hr))
    hr = ReadProperty(bag, errors, kLogDebug, logDebug);
  if (hr == S_OK)
    hr = put_LogDebug(logDebug);
  return FAILED(hr) ? hr : S_OK;
}

HRESULT CAXNorvik::RunPageManifest() {
  BString url;
  const HRESULT hr = executer->Run(manifestURL.Get(), url.Receive());
  if (url)  // a second load whose run yields none leaves that of the first
    pendingNavigateURL = std::move(url);
  if (hr == S_FALSE)
    LogError(HERE, hr, "At least one command failed executing <PARAM> manifest failed on ActiveX startup.");
  else if (FAILED(hr))
    LogError(HERE, hr, "Executing <PARAM> manifest failed on ActiveX startup.");
  return hr;
}

STDMETHODIMP CAXNorvik::Save(IPropertyBag* bag, BOOL /*clearDirty*/, BOOL /*saveAllProperties*/) {
  if (!bag)
    return E_INVALIDARG;
  VARIANT_BOOL logDebug = VARIANT_FALSE;
  HRESULT hr = get_LogDebug(&logDebug);
  if (SUCCEEDED(hr))
    hr = WriteProperty(bag, kExtentX, extentX);
  if (SUCCEEDED(hr))
    hr = WriteProperty(bag, kExtentY, extentY);
  if (SUCCEEDED(hr))
    hr = WriteProperty(bag, kManifestURL, manifestURL);
  if (SUCCEEDED(hr))
    hr = WriteProperty(bag, kLogDebug, logDebug);
  return hr;
}
