#pragma once

#include "support/FakeXmlBase.h"

// What a stand-in of the platform's SAX reader is made of: counted by nobody, and every method of it that is not overridden
// answers E_NOTIMPL.
class FakeReaderMethods : public ISAXXMLReader {
 public:
  virtual ~FakeReaderMethods() = default;
  HRESULT WINAPI QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG WINAPI AddRef() override { return 1; }
  ULONG WINAPI Release() override { return 1; }

  FAKE_METHOD_REFUSED(getFeature, const wchar_t*, VARIANT_BOOL*)
  FAKE_METHOD_REFUSED(putFeature, const wchar_t*, VARIANT_BOOL)
  FAKE_METHOD_REFUSED(getProperty, const wchar_t*, VARIANT*)
  FAKE_METHOD_REFUSED(putProperty, const wchar_t*, VARIANT)
  FAKE_METHOD_REFUSED(getEntityResolver, ISAXEntityResolver**)
  FAKE_METHOD_REFUSED(putEntityResolver, ISAXEntityResolver*)
  FAKE_METHOD_REFUSED(getContentHandler, ISAXContentHandler**)
  FAKE_METHOD_REFUSED(putContentHandler, ISAXContentHandler*)
  FAKE_METHOD_REFUSED(getDTDHandler, ISAXDTDHandler**)
  FAKE_METHOD_REFUSED(putDTDHandler, ISAXDTDHandler*)
  FAKE_METHOD_REFUSED(getErrorHandler, ISAXErrorHandler**)
  FAKE_METHOD_REFUSED(putErrorHandler, ISAXErrorHandler*)
  FAKE_METHOD_REFUSED(getBaseURL, const wchar_t**)
  FAKE_METHOD_REFUSED(putBaseURL, const wchar_t*)
  FAKE_METHOD_REFUSED(getSecureBaseURL, const wchar_t**)
  FAKE_METHOD_REFUSED(putSecureBaseURL, const wchar_t*)
  FAKE_METHOD_REFUSED(parse, VARIANT)
  FAKE_METHOD_REFUSED(parseURL, const wchar_t*)
};

// What tells a reader's place: the one that its test gives.
class FakeLocator final : public ISAXLocator {
 public:
  FakeLocator(int givenLine, int givenColumn, HRESULT answer = S_OK) : line(givenLine), column(givenColumn), hr(answer) {}
  virtual ~FakeLocator() = default;
  HRESULT WINAPI QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG WINAPI AddRef() override { return 1; }
  ULONG WINAPI Release() override { return 1; }
  HRESULT WINAPI getColumnNumber(int* number) override {
    *number = column;
    return hr;
  }
  HRESULT WINAPI getLineNumber(int* number) override {
    *number = line;
    return hr;
  }
  FAKE_METHOD_REFUSED(getPublicId, const wchar_t**)
  FAKE_METHOD_REFUSED(getSystemId, const wchar_t**)

 private:
  int line;
  int column;
  HRESULT hr;
};
