#include "xml/SAXReader.h"

namespace {

// The tool chain's libraries lack these.
constexpr CLSID kReaderClass = {0x079AA557, 0x4A18, 0x424A, {0x8E, 0xEE, 0xE3, 0x9F, 0x0A, 0x8D, 0x41, 0xB9}};
constexpr IID kReaderInterface = {0xA4F96ED0, 0xF829, 0x476E, {0x81, 0xC0, 0xCD, 0xC7, 0xBD, 0x2A, 0x08, 0x02}};
constexpr IID kHandlerInterface = {0x1545CDFA, 0x9E4E, 0x4497, {0xA8, 0xA4, 0x2B, 0xF7, 0xD0, 0x11, 0x2C, 0x44}};

}  // namespace

HRESULT SAXHandler::QueryInterface(REFIID interfaceId, void** object) {
  if (!object)
    return E_POINTER;
  const bool isKnown = interfaceId == __uuidof(IUnknown) || interfaceId == kHandlerInterface;
  *object = isKnown ? this : nullptr;
  return isKnown ? S_OK : E_NOINTERFACE;
}

HRESULT SAXHandler::putDocumentLocator(ISAXLocator* documentLocator) {
  locator = documentLocator;
  return S_OK;
}

int SAXHandler::CurrentLine() const {
  int line = 0;
  return locator && SUCCEEDED(locator->getLineNumber(&line)) ? line : 0;
}

HRESULT CreateSAXReader(ISAXContentHandler& handler, Microsoft::WRL::ComPtr<ISAXXMLReader>& reader) {
  const HRESULT hr = CoCreateInstance(
      kReaderClass, nullptr, CLSCTX_INPROC_SERVER, kReaderInterface, reinterpret_cast<void**>(reader.GetAddressOf()));
  return SUCCEEDED(hr) ? reader->putContentHandler(&handler) : hr;
}
