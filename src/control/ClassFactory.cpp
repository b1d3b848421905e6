#include "control/ClassFactory.h"

#include <wrl/client.h>

#include <new>

#include "control/Module.h"
#include "control/axNorvik.h"

using Microsoft::WRL::ComPtr;

namespace {

class ClassFactory : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override {
    if (!object)
      return E_POINTER;
    *object = nullptr;
    if (interfaceId != __uuidof(IUnknown) && interfaceId != __uuidof(IClassFactory))
      return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }

  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references)); }

  STDMETHODIMP_(ULONG) Release() override {
    const LONG left = InterlockedDecrement(&references);
    if (left == 0)
      delete this;
    return static_cast<ULONG>(left);
  }

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID interfaceId, void** object) override {
    if (!object)
      return E_POINTER;
    *object = nullptr;
    if (outer)
      return CLASS_E_NOAGGREGATION;
    return CAXNorvik::Create(interfaceId, object);
  }

  STDMETHODIMP LockServer(BOOL lock) override {
    if (lock)
      LockModule();
    else
      UnlockModule();
    return S_OK;
  }

 private:
  virtual ~ClassFactory() = default;

  ModuleReference module;
  LONG references = 0;
};

}  // namespace

HRESULT GetClassObject(REFCLSID classId, REFIID interfaceId, void** object) {
  if (!object)
    return E_POINTER;
  *object = nullptr;
  if (classId != CLSID_AXNorvik)
    return CLASS_E_CLASSNOTAVAILABLE;
  const ComPtr<ClassFactory> factory(new (std::nothrow) ClassFactory);
  if (!factory)
    return E_OUTOFMEMORY;
  return factory->QueryInterface(interfaceId, object);
}
