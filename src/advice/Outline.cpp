#include "advice/Outline.h"

#include "common/Windows.h"

#include <shlwapi.h>

#include "advice/Document.h"
#include "advice/Prolog.h"
#include "advice/Words.h"
#include "xml/SAXReader.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr IID kErrorHandlerInterface = {0xA60511C4, 0xCCF5, 0x479E, {0x98, 0xA3, 0xDC, 0x8D, 0xC5, 0x45, 0xB7, 0xD0}};

// Deeper elements than any that the document types know are counted and left out.
constexpr std::size_t kDeepest = 8;

std::string Text(const wchar_t* text, int length) {
  return text && length > 0 ? Utf8(text, static_cast<std::size_t>(length)) : std::string();
}

// Builds the outline. What it throws would have to pass the platform's reader: a failure of memory is kept until that is
// done.
class Builder final : public SAXHandler {
 public:
  explicit Builder(Outline& builtOutline) : outline(builtOutline) {}

  bool IsOutOfMemory() const { return isOutOfMemory; }

  STDMETHODIMP startElement(const wchar_t* /*uri*/, int /*uriLength*/, const wchar_t* /*localName*/, int /*localNameLength*/,
                            const wchar_t* name, int nameLength, ISAXAttributes* attributes) override {
    return Keep([&] {
      ++depth;
      if (depth > kDeepest)
        return;
      Element* element = &outline.root;
      if (!open.empty()) {
        open.back()->children.emplace_back();
        element = &open.back()->children.back();
      }
      element->name = Text(name, nameLength);
      element->line = CurrentLine();
      ReadAttributes(attributes, *element);
      open.push_back(element);
    });
  }

  STDMETHODIMP endElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*, int) override {
    if (depth <= kDeepest && !open.empty())
      open.pop_back();
    --depth;
    return S_OK;
  }

  STDMETHODIMP characters(const wchar_t* text, int length) override {
    return Keep([&] {
      if (depth <= kDeepest && !open.empty())
        open.back()->text += Text(text, length);
    });
  }

 private:
  template <class Work>
  HRESULT Keep(Work work) {
    try {
      work();
      return S_OK;
    } catch (const std::bad_alloc&) {
      isOutOfMemory = true;
      return E_ABORT;
    }
  }

  static void ReadAttributes(ISAXAttributes* attributes, Element& element) {
    int count = 0;
    if (!attributes || FAILED(attributes->getLength(&count)))
      return;
    for (int i = 0; i < count; ++i) {
      const wchar_t* name = nullptr;
      const wchar_t* value = nullptr;
      int nameLength = 0;
      int valueLength = 0;
      if (SUCCEEDED(attributes->getQName(i, &name, &nameLength)) && SUCCEEDED(attributes->getValue(i, &value, &valueLength)))
        element.attributes.emplace_back(Text(name, nameLength), Text(value, valueLength));
    }
  }

  Outline& outline;
  std::vector<Element*> open;  // an element's children grow only while it is the last one
  std::size_t depth = 0;
  bool isOutOfMemory = false;
};

// Keeps the first error.
class Errors final : public ISAXErrorHandler {
 public:
  explicit Errors(Outline& builtOutline) : outline(builtOutline) {}

  STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override {
    if (!object)
      return E_POINTER;
    const bool isKnown = interfaceId == __uuidof(IUnknown) || interfaceId == kErrorHandlerInterface;
    *object = isKnown ? this : nullptr;
    return isKnown ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 1; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }

  STDMETHODIMP error(ISAXLocator* locator, const wchar_t* message, HRESULT hr) override {
    return fatalError(locator, message, hr);
  }
  STDMETHODIMP fatalError(ISAXLocator* locator, const wchar_t* message, HRESULT /*hr*/) override {
    if (isKept)
      return S_OK;
    isKept = true;
    if (locator) {
      locator->getLineNumber(&outline.errorLine);
      locator->getColumnNumber(&outline.errorColumn);
    }
    try {
      outline.errorReason = Utf8(message ? message : L"");
      while (!outline.errorReason.empty() && static_cast<unsigned char>(outline.errorReason.back()) <= ' ')
        outline.errorReason.pop_back();
    } catch (const std::bad_alloc&) {
      outline.errorReason.clear();
    }
    return S_OK;
  }
  STDMETHODIMP ignorableWarning(ISAXLocator*, const wchar_t*, HRESULT) override { return S_OK; }

 private:
  Outline& outline;
  bool isKept = false;
};

}  // namespace

const Element* Element::Child(const char* childName) const {
  for (const Element& child : children) {
    if (child.name == childName)
      return &child;
  }
  return nullptr;
}

std::string Element::TrimmedText() const {
  constexpr char kSpace[] = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kSpace);
  return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

Outline OutlineOf(const std::string& document) {
  Outline outline;
  if (HasWideCharacters(document)) {
    outline.errorLine = outline.errorColumn = 1;
    outline.errorReason = "it is in UTF-16 or UTF-32, which the module does not read";
    return outline;
  }
  const std::string bytes = WithoutDocumentType(document);
  Builder builder(outline);
  Errors errors(outline);
  ComPtr<ISAXXMLReader> reader;
  ComPtr<IStream> stream;
  stream.Attach(SHCreateMemStream(reinterpret_cast<const BYTE*>(bytes.data()), static_cast<UINT>(bytes.size())));
  HRESULT hr = CreateSAXReader(builder, reader);
  if (SUCCEEDED(hr))
    hr = reader->putErrorHandler(&errors);
  if (FAILED(hr))
    throw Unanswered("The XML parser of this system cannot be had: " + ReasonText(hr));
  if (!stream)
    throw std::bad_alloc();
  VARIANT input;
  input.vt = VT_UNKNOWN;
  input.punkVal = stream.Get();
  hr = reader->parse(input);
  if (builder.IsOutOfMemory())
    throw std::bad_alloc();
  outline.isWellFormed = SUCCEEDED(hr) && !outline.root.name.empty();
  return outline;
}
