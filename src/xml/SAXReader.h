#pragma once

#include "common/Windows.h"

#include <msxml2.h>
#include <wrl/client.h>

// The platform's SAX reader, which knows the lines of a document where the parser's documents do not. It does not validate.

// A content handler that lives on the stack for as long as one document is read, and wants to hear of nothing.
class SAXHandler : public ISAXContentHandler {
 public:
  STDMETHODIMP QueryInterface(REFIID interfaceId, void** object) override;
  STDMETHODIMP_(ULONG) AddRef() override { return 1; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }

  STDMETHODIMP putDocumentLocator(ISAXLocator* documentLocator) override;
  STDMETHODIMP startDocument() override { return S_OK; }
  STDMETHODIMP endDocument() override { return S_OK; }
  STDMETHODIMP startPrefixMapping(const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP endPrefixMapping(const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP startElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*, int, ISAXAttributes*) override {
    return S_OK;
  }
  STDMETHODIMP endElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP characters(const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP ignorableWhitespace(const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP processingInstruction(const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
  STDMETHODIMP skippedEntity(const wchar_t*, int) override { return S_OK; }

 protected:
  ~SAXHandler() = default;

  // The line, counted from 1, at which the reader is; 0 when it cannot tell.
  int CurrentLine() const;

 private:
  ISAXLocator* locator = nullptr;  // the reader's own, valid while it reads
};

// A reader that reports to `handler`, which outlives it.
[[nodiscard]] HRESULT CreateSAXReader(ISAXContentHandler& handler, Microsoft::WRL::ComPtr<ISAXXMLReader>& reader);
