// Documents as a whole: created, loaded with validation, saved.

#include "common/Windows.h"

#include <shlwapi.h>
#include <wrl/client.h>

#include <cstring>

#include "common/Handles.h"
#include "log/LogFile.h"
#include "xml/DestinationContent.h"
#include "xml/ElementLine.h"
#include "xml/XMLUtilities.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr SourceFile kSourceFile = {"XMLUtilities", 1000};

// The document class of MSXML 2, by its own identifier and no other.
constexpr CLSID kDocumentClass = {0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
constexpr IID kDocumentInterface = {0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

constexpr std::size_t kReasonBytes = 1024;

// What is wrong with a document. A reason of the parser's that is too long for the buffer is left out.
struct ParseError {
  LONG line = 0;
  char reason[kReasonBytes] = "";
};

ParseError ReadParseError(IXMLDOMParseError* error) {
  ParseError read;
  if (!error)
    return read;
  BString reason;
  if (SUCCEEDED(error->get_reason(reason.Receive())) && SysStringLen(reason.Get()) * 2 + 1 < kReasonBytes &&
      !reason.IsEmpty()) {
    if (WideCharToMultiByte(CP_ACP, 0, reason.Get(), -1, read.reason, kReasonBytes, nullptr, nullptr) <= 0)
      read.reason[0] = '\0';
  }
  if (FAILED(error->get_line(&read.line)))
    read.line = 0;
  return read;
}

ParseError Describe(const ForbiddenDestination& forbidden, const wchar_t* fileName) {
  ParseError error;
  error.line = FindElementLine(fileName, L"Destination", forbidden.index);
  if (!forbidden.content) {
    std::strcpy(error.reason, "The document type does not allow 'Destination' without a folder");
    return error;
  }
  const OwnedText content = NarrowText(forbidden.content.Get());
  wnsprintfA(error.reason, kReasonBytes, "The document type does not allow '%s' at this place in 'Destination'",
             content ? content.get() : "");
  return error;
}

HRESULT Refused(const char* name, HRESULT loadResult, const ParseError& error) {
  const HRESULT hr = FAILED(loadResult) ? loadResult : E_FAIL;
  return Reported(HERE, hr, "XML Parsing Error in '%s'\r\n\tline %d: %s.", name, static_cast<int>(error.line), error.reason);
}

// Validates a loaded document once more where a parser has not done so while it was loading, or not whole. Where it has, the
// answer is the same. A document without a document type has nothing to be validated against. Anything but S_OK is a
// refusal, with the reason in `error`.
HRESULT Validate(IXMLDOMDocument2* document, const wchar_t* fileName, ParseError& error) {
  ComPtr<IXMLDOMDocumentType> documentType;
  HRESULT hr = document->get_doctype(&documentType);
  if (FAILED(hr))
    return hr;
  if (!documentType)
    return S_OK;
  ComPtr<IXMLDOMParseError> parserError;
  hr = document->validate(&parserError);
  if (hr != S_OK) {
    error = ReadParseError(parserError.Get());
    return hr;
  }
  ForbiddenDestination forbidden;
  hr = CheckDestinations(document, forbidden);
  if (hr == S_FALSE)
    error = Describe(forbidden, fileName);
  return hr;
}

// A parser that does not take a setting would not validate: that is a failed load.
HRESULT Prepare(IXMLDOMDocument2* document, LONG fromFile) {
  HRESULT hr = document->put_resolveExternals(VARIANT_TRUE);
  if (SUCCEEDED(hr))
    hr = document->put_async(VARIANT_FALSE);
  if (SUCCEEDED(hr))
    hr = document->put_preserveWhiteSpace(fromFile ? VARIANT_FALSE : VARIANT_TRUE);
  if (SUCCEEDED(hr))
    hr = document->put_validateOnParse(fromFile ? VARIANT_TRUE : VARIANT_FALSE);
  return hr;
}

HRESULT LoadFrom(IXMLDOMDocument2* document, const BString& name, LONG fromFile, VARIANT_BOOL* isLoaded) {
  const HRESULT hr = Prepare(document, fromFile);
  if (FAILED(hr))
    return hr;
  if (!fromFile)
    return document->loadXML(name.Get(), isLoaded);
  VARIANT source = {};
  source.vt = VT_BSTR;
  source.bstrVal = name.Get();
  return document->load(source, isLoaded);
}

// The number of places where one element's end is directly followed by the next one's beginning.
std::size_t CountJoints(const char* text) {
  std::size_t count = 0;
  for (const char* joint = std::strstr(text, "><"); joint; joint = std::strstr(joint + 1, "><"))
    ++count;
  return count;
}

OwnedText BreakLines(const char* text) {
  OwnedText broken = AllocateText(std::strlen(text) + 2 * CountJoints(text) + 1);
  if (!broken)
    return nullptr;
  char* end = broken.get();
  for (; *text; ++text) {
    *end++ = *text;
    if (text[0] == '>' && text[1] == '<') {
      *end++ = '\r';
      *end++ = '\n';
    }
  }
  *end = '\0';
  return broken;
}

OwnedText Utf8Text(const BString& text) {
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.Get(), -1, nullptr, 0, nullptr, nullptr);
  if (bytes <= 0)
    return nullptr;
  OwnedText utf8 = AllocateText(static_cast<std::size_t>(bytes));
  if (!utf8 || WideCharToMultiByte(CP_UTF8, 0, text.Get(), -1, utf8.get(), bytes, nullptr, nullptr) <= 0)
    return nullptr;
  return utf8;
}

void SavePretty(IXMLDOMDocument2* document, const char* fileName) {
  BString xml;
  const HRESULT hr = document->get_xml(xml.Receive());
  if (FAILED(hr) || !xml) {
    LogErrorTrace(HERE, FAILED(hr) ? hr : E_POINTER);
    return;
  }
  const OwnedText utf8 = Utf8Text(xml);
  const OwnedText text = utf8 ? BreakLines(utf8.get()) : nullptr;
  if (!text) {
    LogErrorTrace(HERE, E_OUTOFMEMORY);
    return;
  }
  const FileHandle file(CreateFileA(fileName, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD written = 0;
  if (file)
    WriteFile(file.Get(), text.get(), static_cast<DWORD>(std::strlen(text.get())), &written, nullptr);  // as documented
}

void SaveAsItIs(IXMLDOMDocument2* document, const char* fileName) {
  const BString name = WideText(fileName);
  if (!name) {
    LogErrorTrace(HERE, E_OUTOFMEMORY);
    return;
  }
  VARIANT destination = {};
  destination.vt = VT_BSTR;
  destination.bstrVal = name.Get();
  const HRESULT hr = document->save(destination);
  if (FAILED(hr))
    LogErrorW(HERE, hr, L"%s", name.Get());
}

}  // namespace

HRESULT CreateXMLDocument(IXMLDOMDocument2** document) {
  if (!document)
    return Traced(HERE, E_INVALIDARG);
  *document = nullptr;
  const HRESULT hr = CoCreateInstance(
      kDocumentClass, nullptr, CLSCTX_INPROC_SERVER, kDocumentInterface, reinterpret_cast<void**>(document));
  if (FAILED(hr))
    return Reported(HERE, hr, "Loading the Microsoft XML Parser Library failed.");
  return hr;
}

HRESULT LoadXMLDocument(const char* name, IXMLDOMDocument2* document, LONG fromFile) {
  if (!name || !*name || !document)
    return Traced(HERE, E_INVALIDARG);
  const BString wideName = WideText(name);
  if (!wideName)
    return Reported(HERE, E_OUTOFMEMORY, "%s", name);

  VARIANT_BOOL isLoaded = VARIANT_FALSE;
  HRESULT hr = LoadFrom(document, wideName, fromFile, &isLoaded);
  if (FAILED(hr))
    LogErrorW(HERE, hr, L"%s", wideName.Get());
  if (FAILED(hr) || !isLoaded) {
    ComPtr<IXMLDOMParseError> error;
    document->get_parseError(&error);  // without one the message has no line and no reason
    return Refused(name, hr, ReadParseError(error.Get()));
  }

  if (fromFile) {
    ParseError error;
    const HRESULT validity = Validate(document, wideName.Get(), error);
    if (validity != S_OK)
      return Refused(name, validity, error);
  }
  return hr;
}

HRESULT SaveXMLDocument(IXMLDOMDocument2* document, const char* fileName, LONG pretty) {
  if (!document || !fileName || !*fileName)
    return Traced(HERE, E_INVALIDARG);
  if (pretty)
    SavePretty(document, fileName);
  else
    SaveAsItIs(document, fileName);
  return S_OK;
}
