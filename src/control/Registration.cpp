#include "control/Registration.h"

#include <wrl/client.h>

#include "common/Apartment.h"
#include "common/ModulePath.h"
#include "common/Text.h"
#include "control/Module.h"
#include "control/Registrar.h"
#include "control/RegistryTable.h"
#include "control/norvik_h.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr UINT kScriptResource = 100;
constexpr std::size_t kQuotedPathSize = std::size_t{2} * MAX_PATH;
constexpr wchar_t kScriptType[] = L"REGISTRY";
constexpr WORD kLibraryMajor = 1;
constexpr WORD kLibraryMinor = 0;
constexpr SYSKIND kSystem = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

// Scripts put their texts in single quotes; one inside a path is written twice.
bool DoubleQuotes(const wchar_t* path, wchar_t (&quoted)[kQuotedPathSize]) {
  std::size_t length = 0;
  for (; *path; ++path) {
    if (length + 3 > kQuotedPathSize)
      return false;
    if (*path == L'\'')
      quoted[length++] = L'\'';
    quoted[length++] = *path;
  }
  quoted[length] = L'\0';
  return true;
}

using ScriptAction = HRESULT (STDMETHODCALLTYPE IRegistrar::*)(const wchar_t* file, UINT id, const wchar_t* type);

HRESULT RunScript(const wchar_t* modulePath, ScriptAction action) {
  wchar_t quotedPath[kQuotedPathSize];
  if (!DoubleQuotes(modulePath, quotedPath))
    return E_FAIL;
  ComPtr<IRegistrar> registrar;
  HRESULT hr = CoCreateInstance(kRegistrarClass, nullptr, CLSCTX_INPROC_SERVER, kRegistrarInterface,
                                reinterpret_cast<void**>(registrar.GetAddressOf()));
  if (SUCCEEDED(hr))
    hr = registrar->AddReplacement(L"MODULE", quotedPath);
  if (SUCCEEDED(hr))
    hr = (registrar.Get()->*action)(modulePath, kScriptResource, kScriptType);
  return hr;
}

HRESULT RegisterLibrary(wchar_t* path) {
  ComPtr<ITypeLib> library;
  const HRESULT hr = LoadTypeLib(path, &library);
  return FAILED(hr) ? hr : RegisterTypeLib(library.Get(), path, nullptr);
}

bool IsLibraryRegistered() {
  BString path;
  return SUCCEEDED(QueryPathOfRegTypeLib(LIBID_NORVIKLib, kLibraryMajor, kLibraryMinor, LOCALE_NEUTRAL, path.Receive()));
}

HRESULT UnregisterLibrary() {
  const HRESULT hr = UnRegisterTypeLib(LIBID_NORVIKLib, kLibraryMajor, kLibraryMinor, LOCALE_NEUTRAL, kSystem);
  return FAILED(hr) && !IsLibraryRegistered() ? S_OK : hr;
}

HRESULT RegisterFromTable() {
  const HRESULT hr = WriteRegistryTable();
  if (FAILED(hr))
    return hr;
  if (const BString path = WideText(GetModulePath()))
    static_cast<void>(RegisterLibrary(path.Get()));  // the rows alone decide on the result
  return S_OK;
}

}  // namespace

HRESULT RegisterServer() {
  const Apartment apartment;  // the registrar is a COM object, and an installer may not have initialised COM
  wchar_t path[MAX_PATH];
  if (GetModuleWidePath(path)) {
    HRESULT hr = RunScript(path, &IRegistrar::ResourceRegister);
    if (SUCCEEDED(hr))
      hr = RegisterLibrary(path);
    if (SUCCEEDED(hr))
      return hr;
  }
  return RegisterFromTable();
}

HRESULT UnregisterServer() {
  const Apartment apartment;
  wchar_t path[MAX_PATH];
  if (GetModuleWidePath(path)) {
    HRESULT hr = RunScript(path, &IRegistrar::ResourceUnregister);
    if (SUCCEEDED(hr))
      hr = UnregisterLibrary();
    if (SUCCEEDED(hr))
      return hr;
  }
  const HRESULT hr = DeleteRegistryTable();
  static_cast<void>(UnregisterLibrary());  // the rows alone decide on the result
  return hr;
}
