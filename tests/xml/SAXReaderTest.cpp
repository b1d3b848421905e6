#include "xml/SAXReader.h"

#include <gtest/gtest.h>

#include "support/FakeReader.h"
#include "support/HResult.h"

namespace {

class Handler final : public SAXHandler {
 public:
  using SAXHandler::CurrentLine;
};

// Whatever the reader says, it is to go on.
TEST(SAXHandlerTest, TakesWhateverItHears) {
  Handler handler;
  EXPECT_HRESULT(S_OK, handler.startDocument());
  EXPECT_HRESULT(S_OK, handler.startPrefixMapping(L"p", 1, L"u", 1));
  EXPECT_HRESULT(S_OK, handler.startElement(L"", 0, L"a", 1, L"a", 1, nullptr));
  EXPECT_HRESULT(S_OK, handler.characters(L"x", 1));
  EXPECT_HRESULT(S_OK, handler.ignorableWhitespace(L" ", 1));
  EXPECT_HRESULT(S_OK, handler.processingInstruction(L"p", 1, L"x", 1));
  EXPECT_HRESULT(S_OK, handler.skippedEntity(L"e", 1));
  EXPECT_HRESULT(S_OK, handler.endElement(L"", 0, L"a", 1, L"a", 1));
  EXPECT_HRESULT(S_OK, handler.endPrefixMapping(L"p", 1));
  EXPECT_HRESULT(S_OK, handler.endDocument());
}

TEST(SAXHandlerTest, HasItsInterfaceAndNoOther) {
  constexpr IID kContentHandler = {0x1545CDFA, 0x9E4E, 0x4497, {0xA8, 0xA4, 0x2B, 0xF7, 0xD0, 0x11, 0x2C, 0x44}};
  Handler handler;
  void* found = nullptr;
  for (const IID& known : {IID_IUnknown, kContentHandler}) {
    EXPECT_HRESULT(S_OK, handler.QueryInterface(known, &found));
    EXPECT_EQ(static_cast<ISAXContentHandler*>(&handler), found);
  }
  EXPECT_HRESULT(E_NOINTERFACE, handler.QueryInterface(IID_IDispatch, &found));
  EXPECT_EQ(nullptr, found);
  EXPECT_HRESULT(E_POINTER, handler.QueryInterface(IID_IUnknown, nullptr));
  EXPECT_EQ(1u, handler.AddRef());
  EXPECT_EQ(1u, handler.Release());
}

TEST(SAXHandlerTest, KnowsTheLineThatTheReaderTells) {
  Handler handler;
  EXPECT_EQ(0, handler.CurrentLine());
  FakeLocator locator(3, 7);
  EXPECT_HRESULT(S_OK, handler.putDocumentLocator(&locator));
  EXPECT_EQ(3, handler.CurrentLine());
  FakeLocator silent(3, 7, E_FAIL);
  EXPECT_HRESULT(S_OK, handler.putDocumentLocator(&silent));
  EXPECT_EQ(0, handler.CurrentLine());
}

}  // namespace
