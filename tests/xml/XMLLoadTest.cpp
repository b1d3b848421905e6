#include <gtest/gtest.h>

#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "xml/LogExpectations.h"
#include "xml/XMLUtilities.h"

namespace {

constexpr char kName[] = "C:\\Apps\\a.xml";

std::string Parsing(const std::string& rest, const std::string& name = kName) {
  return "XML Parsing Error in '" + name + "'\r\n\tline " + rest;
}

class LoadTest : public testing::Test {
 protected:
  HRESULT Load(const char* name = kName, LONG fromFile = 1) { return LoadXMLDocument(name, &document, fromFile); }

  // The parser refuses the document with this error.
  void Refuse(LONG line, const wchar_t* reason) {
    error.line = line;
    error.reason = reason;
    document.isLoaded = VARIANT_FALSE;
    document.parseError = &error;
  }

  // The document loads, and turns out not to be valid.
  void Invalidate(LONG line, const wchar_t* reason) {
    error.line = line;
    error.reason = reason;
    document.documentType = &documentType;
    document.validationError = &error;
  }

  FakeParseError error;
  FakeDocumentType documentType;
  FakeDocument document;
  LogCapture log;
};

TEST_F(LoadTest, MissingArgumentsAreTraced) {
  EXPECT_HRESULT(E_INVALIDARG, LoadXMLDocument(nullptr, &document, 1));
  EXPECT_HRESULT(E_INVALIDARG, LoadXMLDocument("", &document, 1));
  EXPECT_HRESULT(E_INVALIDARG, LoadXMLDocument(kName, nullptr, 1));
  EXPECT_HRESULT(E_INVALIDARG, LoadXMLDocument("", &document, 0));
  EXPECT_EQ(Codes(4, E_INVALIDARG), log.ErrorTraces());
  EXPECT_EQ(Lines(), log.Messages());
  EXPECT_EQ(Lines(), document.calls);
}

TEST_F(LoadTest, MissingArgumentsLeaveNoLineWithoutDebugLogging) {
  const LogCapture release(false);
  EXPECT_HRESULT(E_INVALIDARG, LoadXMLDocument(nullptr, &document, 1));
  EXPECT_EQ("", release.Text());
}

TEST_F(LoadTest, WithoutMemoryForTheNameItIsTheMessage) {
  {
    PATCH_IMPORT(noMemory, SysAllocStringLen, FailWith(static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_HRESULT(E_OUTOFMEMORY, Load("http://server/%s%n.xml"));
  }
  ExpectOnlyMessages(log, {"ERROR 0x8007000e http://server/%s%n.xml"});
  EXPECT_EQ(Lines(), document.calls);
}

TEST_F(LoadTest, AFileIsLoadedWithValidationAndWithoutWhiteSpace) {
  EXPECT_HRESULT(S_OK, Load());
  EXPECT_EQ((Lines{"resolveExternals -1", "async 0", "preserveWhiteSpace 0", "validateOnParse -1", "load C:\\Apps\\a.xml"}),
            document.calls);
  EXPECT_EQ("", log.Text());
}

TEST_F(LoadTest, ATextIsLoadedWithWhiteSpaceAndWithoutValidation) {
  document.documentType = &documentType;
  EXPECT_HRESULT(S_OK, Load("<a> </a>", 0));
  EXPECT_EQ((Lines{"resolveExternals -1", "async 0", "preserveWhiteSpace -1", "validateOnParse 0", "loadXML <a> </a>"}),
            document.calls);
  EXPECT_EQ("", log.Text());
}

TEST_F(LoadTest, AnyValueButZeroMeansAFile) {
  EXPECT_HRESULT(S_OK, Load(kName, -7));
  EXPECT_EQ("load C:\\Apps\\a.xml", document.calls.back());
}

TEST_F(LoadTest, TheParsersCodeOfSuccessIsPassedOn) {
  document.Answer("load", S_FALSE);
  EXPECT_HRESULT(S_FALSE, Load());
  EXPECT_EQ("", log.Text());
}

class RefusedSettingTest : public LoadTest, public testing::WithParamInterface<const char*> {};

TEST_P(RefusedSettingTest, ASettingThatIsRefusedIsAFailedLoad) {
  document.Answer(GetParam(), E_ACCESSDENIED);
  for (const LONG fromFile : {0, 1}) {
    const LogCapture own;
    EXPECT_HRESULT(E_ACCESSDENIED, Load(kName, fromFile));
    ExpectOnlyMessages(own, {"ERROR 0x80070005 C:\\Apps\\a.xml", "ERROR 0x80070005 " + Parsing("0: .")});
    EXPECT_NE(std::string("load"), document.calls.back().substr(0, 4));
  }
}

INSTANTIATE_TEST_SUITE_P(Settings, RefusedSettingTest,
                         testing::Values("put_resolveExternals", "put_async", "put_preserveWhiteSpace",
                                         "put_validateOnParse"),
                         [](const auto& row) { return std::string(row.param + 4); });

TEST_F(LoadTest, AFailedLoadIsLoggedWithItsNameAndAsAParsingError) {
  Refuse(3, L"Access is denied.\r\n");
  document.Answer("load", E_ACCESSDENIED);
  EXPECT_HRESULT(E_ACCESSDENIED, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80070005 C:\\Apps\\a.xml", "ERROR 0x80070005 " + Parsing("3: Access is denied.\r\n.")});
}

TEST_F(LoadTest, AFailedLoadOfATextIsLoggedWithTheText) {
  Refuse(1, L"Bad");
  document.Answer("loadXML", E_OUTOFMEMORY);
  EXPECT_HRESULT(E_OUTOFMEMORY, Load("<%s%n>", 0));
  ExpectOnlyMessages(log, {"ERROR 0x8007000e <%s%n>", "ERROR 0x8007000e " + Parsing("1: Bad.", "<%s%n>")});
}

TEST_F(LoadTest, ADocumentThatDoesNotParseIsRefusedWithLineAndReason) {
  Refuse(17, L"End tag 'a' does not match");
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("17: End tag 'a' does not match.")});
}

TEST_F(LoadTest, ALoadThatSucceedsWithoutADocumentIsRefused) {
  Refuse(17, L"Nothing there");
  document.Answer("load", S_OK);
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("17: Nothing there.")});
}

// A parser that reports success and does not say whether there is a document.
class SilentDocument : public FakeDocument {
 public:
  HRESULT WINAPI load(VARIANT, VARIANT_BOOL*) override { return S_OK; }
};

TEST_F(LoadTest, ALoadThatDoesNotTellWhetherItLoadedIsRefused) {
  SilentDocument silent;
  EXPECT_HRESULT(E_FAIL, LoadXMLDocument(kName, &silent, 1));
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("0: .")});
}

TEST_F(LoadTest, AReasonOf511CharactersIsShown) {
  const std::wstring reason(511, L'r');
  Refuse(5, reason.c_str());
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("5: " + std::string(511, 'r') + ".")});
}

TEST_F(LoadTest, AReasonOf512CharactersIsLeftOut) {
  const std::wstring reason(512, L'r');
  Refuse(5, reason.c_str());
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("5: .")});
}

TEST_F(LoadTest, AReasonOfAMillionCharactersIsLeftOut) {
  const std::wstring reason(1000000, L'r');
  Refuse(5, reason.c_str());
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("5: .")});
}

TEST_F(LoadTest, AReasonIsNoFormat) {
  Refuse(-1, L"%s%n%d 100%");
  EXPECT_HRESULT(E_FAIL, Load("C:\\%s%n.xml"));
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("-1: %s%n%d 100%.", "C:\\%s%n.xml")});
}

TEST_F(LoadTest, AMissingOrEmptyReasonStaysEmpty) {
  for (const wchar_t* const reason : {static_cast<const wchar_t*>(nullptr), L""}) {
    const LogCapture own;
    Refuse(9, reason);
    EXPECT_HRESULT(E_FAIL, Load());
    ExpectOnlyMessages(own, {"ERROR 0x80004005 " + Parsing("9: .")});
  }
}

TEST_F(LoadTest, AReasonThatCannotBeReadStaysEmpty) {
  Refuse(9, L"reason");
  error.Answer("get_reason", E_FAIL);
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("9: .")});
}

TEST_F(LoadTest, AReasonThatCannotBeConvertedStaysEmpty) {
  Refuse(9, L"reason");
  {
    PATCH_IMPORT(halfDone, WideCharToMultiByte, [](auto, UINT, DWORD, const wchar_t*, int, char* buffer, int size, auto...) {
      EXPECT_EQ(1024, size);
      buffer[0] = 'x';
      return 0;
    });
    EXPECT_HRESULT(E_FAIL, Load());
  }
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("9: .")});
}

TEST_F(LoadTest, AReasonIsConvertedToTheAnsiCodePage) {
  Refuse(9, L"Zo\u00eb");
  {
    PATCH_IMPORT(conversion, WideCharToMultiByte, [](auto original, UINT codePage, auto... rest) {
      EXPECT_EQ(UINT{CP_ACP}, codePage);
      return original(1252, rest...);
    });
    EXPECT_HRESULT(E_FAIL, Load());
  }
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("9: Zo\xeb.")});
}

TEST_F(LoadTest, ALineThatCannotBeReadIsZero) {
  Refuse(9, L"reason");
  error.Answer("get_line", E_FAIL);
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("0: reason.")});
}

TEST_F(LoadTest, ARefusalWithoutAnErrorObjectHasNeitherLineNorReason) {
  document.isLoaded = VARIANT_FALSE;
  EXPECT_HRESULT(E_FAIL, Load());
  document.parseError = &error;
  document.Answer("get_parseError", E_FAIL);
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, Lines(2, "ERROR 0x80004005 " + Parsing("0: .")));
}

TEST_F(LoadTest, ADocumentOfADocumentTypeIsValidated) {
  document.documentType = &documentType;
  EXPECT_HRESULT(S_OK, Load());
  EXPECT_EQ("validate", document.calls.back());
  EXPECT_EQ("", log.Text());
}

TEST_F(LoadTest, ADocumentThatDoesNotParseIsNotValidated) {
  Refuse(1, L"reason");
  document.documentType = &documentType;
  EXPECT_HRESULT(E_FAIL, Load());
  EXPECT_EQ("load C:\\Apps\\a.xml", document.calls.back());
}

TEST_F(LoadTest, AnInvalidDocumentIsRefusedWithLineAndReason) {
  Invalidate(4, L"Element content is invalid");
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("4: Element content is invalid.")});
}

TEST_F(LoadTest, AnInvalidDocumentIsRefusedWithoutAnErrorObject) {
  document.documentType = &documentType;
  document.Answer("validate", S_FALSE);
  EXPECT_HRESULT(E_FAIL, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80004005 " + Parsing("0: .")});
}

TEST_F(LoadTest, AValidationThatFailsIsRefusedWithItsCode) {
  Invalidate(4, L"reason");
  document.Answer("validate", E_PENDING);
  EXPECT_HRESULT(E_PENDING, Load());
  ExpectOnlyMessages(log, {"ERROR 0x8000000a " + Parsing("0: .")});
}

TEST_F(LoadTest, ADocumentTypeThatCannotBeAskedForIsARefusal) {
  Invalidate(4, L"reason");
  document.Answer("get_doctype", E_ACCESSDENIED);
  EXPECT_HRESULT(E_ACCESSDENIED, Load());
  ExpectOnlyMessages(log, {"ERROR 0x80070005 " + Parsing("0: .")});
}

}  // namespace
