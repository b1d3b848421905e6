#include "xml/ElementLine.h"

#include <cwchar>

#include "xml/SAXReader.h"

namespace {

class LineFinder final : public SAXHandler {
 public:
  LineFinder(const wchar_t* elementName, int elementIndex) : sought(elementName), left(elementIndex) {}

  int Line() const { return line; }

  STDMETHODIMP startElement(const wchar_t* /*uri*/, int /*uriLength*/, const wchar_t* /*localName*/, int /*localNameLength*/,
                            const wchar_t* name, int nameLength, ISAXAttributes* /*attributes*/) override {
    const bool isSought = static_cast<std::size_t>(nameLength) == std::wcslen(sought) &&
                          std::wmemcmp(name, sought, static_cast<std::size_t>(nameLength)) == 0;
    if (!isSought || left-- > 0)
      return S_OK;
    line = CurrentLine();
    return E_ABORT;  // ends the reading
  }

 private:
  const wchar_t* sought;
  int left;
  int line = 0;
};

}  // namespace

int FindElementLine(const wchar_t* fileName, const wchar_t* elementName, int index) {
  LineFinder finder(elementName, index);
  Microsoft::WRL::ComPtr<ISAXXMLReader> reader;
  if (FAILED(CreateSAXReader(finder, reader)))
    return 0;
  static_cast<void>(reader->parseURL(fileName));  // fails where the element was found; what matters is the line
  return finder.Line();
}
