#include "advice/PlatformCheck.h"

#include "common/Windows.h"

#include <wrl/client.h>

#include "advice/KeptLog.h"
#include "advice/Words.h"
#include "common/RegistrarClass.h"
#include "xml/XMLUtilities.h"

using Microsoft::WRL::ComPtr;

DoctorCheck CheckParser() {
  const KeptLog quiet;
  ComPtr<IXMLDOMDocument2> document;
  const HRESULT hr = CreateXMLDocument(&document);
  if (FAILED(hr)) {
    return {"xml-parser", DoctorStatus::Failed,
            "The system's XML parser cannot be had (" + CodeAndText(hr) + "). Every run is refused without it."};
  }
  return {"xml-parser", DoctorStatus::Ok, "The system's XML parser is there."};
}

DoctorCheck CheckRegistrar() {
  ComPtr<IUnknown> registrar;
  const HRESULT hr = CoCreateInstance(
      kRegistrarClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, reinterpret_cast<void**>(registrar.GetAddressOf()));
  if (FAILED(hr)) {
    return {"registrar", DoctorStatus::Warning,
            "The registrar of the system's atl.dll cannot be had (" + CodeAndText(hr) +
                "). What is registered stays, but regsvr32 cannot register the module so that it works."};
  }
  return {"registrar", DoctorStatus::Ok, "The registrar of the system's atl.dll is there."};
}
