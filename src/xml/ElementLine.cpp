#include "xml/ElementLine.h"

#include <msxml2.h>
#include <wrl/client.h>

#include <cwchar>

using Microsoft::WRL::ComPtr;

namespace {

constexpr CLSID kReaderClass = {0x079AA557, 0x4A18, 0x424A, {0x8E, 0xEE, 0xE3, 0x9F, 0x0A, 0x8D, 0x41, 0xB9}};
constexpr IID kReaderInterface = {0xA4F96ED0, 0xF829, 0x476E, {0x81, 0xC0, 0xCD, 0xC7, 0xBD, 0x2A, 0x08, 0x02}};
constexpr IID kHandlerInterface = {0x1545CDFA, 0x9E4E, 0x4497, {0xA8, 0xA4, 0x2B, 0xF7, 0xD0, 0x11, 0x2C, 0x44}};

// Lives on the stack for as long as one document is read, and holds nothing.
class LineFinder : public ISAXContentHandler {
 public:
  LineFinder(const wchar_t* elementName, int elementIndex) : sought(elementName), left(elementIndex) {}

  int Line() const { return line; }

  STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override {
    if (!object)
      return E_POINTER;
    const bool isKnown = interfaceId == __uuidof(IUnknown) || interfaceId == kHandlerInterface;
    *object = isKnown ? this : nullptr;
    return isKnown ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 1; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }

  STDMETHODIMP putDocumentLocator(ISAXLocator* documentLocator) override {
    locator = documentLocator;
    return S_OK;
  }

  STDMETHODIMP startElement(const wchar_t* /*uri*/, int /*uriLength*/, const wchar_t* /*localName*/, int /*localNameLength*/,
                            const wchar_t* name, int nameLength, ISAXAttributes* /*attributes*/) override {
    const bool isSought = static_cast<std::size_t>(nameLength) == std::wcslen(sought) &&
                          std::wmemcmp(name, sought, static_cast<std::size_t>(nameLength)) == 0;
    if (!isSought || left-- > 0)
      return S_OK;
    if (!locator || FAILED(locator->getLineNumber(&line)))
      line = 0;
    return E_ABORT;  // ends the reading
  }

  STDMETHODIMP startDocument() override { return S_OK; }
  STDMETHODIMP endDocument() override { return S_OK; }
  STDMETHODIMP startPrefixMapping(const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP endPrefixMapping(const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP endElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP characters(const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP ignorableWhitespace(const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP processingInstruction(const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP skippedEntity(const wchar_t*, int) override { return S_OK; }

 private:
  const wchar_t* sought;
  int left;
  ISAXLocator* locator = nullptr;  // the reader's own, valid while it reads
  int line = 0;
};

}  // namespace

int FindElementLine(const wchar_t* fileName, const wchar_t* elementName, int index) {
  ComPtr<ISAXXMLReader> reader;
  if (FAILED(CoCreateInstance(
          kReaderClass, nullptr, CLSCTX_INPROC_SERVER, kReaderInterface, reinterpret_cast<void**>(reader.GetAddressOf()))))
    return 0;
  LineFinder finder(elementName, index);
  if (FAILED(reader->putContentHandler(&finder)))
    return 0;
  static_cast<void>(reader->parseURL(fileName));  // fails where the element was found; what matters is the line
  return finder.Line();
}
