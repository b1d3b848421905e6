// Documents loaded with the platform's own parser.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wrl/client.h>

#include <algorithm>
#include <regex>

#include "support/Files.h"
#include "support/HResult.h"
#include "support/WebServer.h"
#include "support/XmlDocuments.h"
#include "xml/LogExpectations.h"
#include "xml/XMLUtilities.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr char kDocumentType[] =
    "<?xml version=\"1.0\"?><!DOCTYPE r [\n"
    "<!ELEMENT r (a, b?, (c | d)*)>\n<!ATTLIST r version CDATA #REQUIRED>\n"
    "<!ELEMENT a (#PCDATA)>\n<!ELEMENT b EMPTY>\n<!ATTLIST b browser CDATA \"false\">\n"
    "<!ELEMENT c (#PCDATA)>\n<!ELEMENT d (#PCDATA)>\n]>\n";

class LoadedFileTest : public testing::Test {
 protected:
  HRESULT Load(const std::string& content) {
    WriteWholeFile(path, content);
    return LoadXMLDocument(path.c_str(), document.Get(), 1);
  }

  // One line, of the form that names the document; what the parser finds to say is its own matter.
  void ExpectRefusal(const std::string& name) {
    EXPECT_EQ(Codes(), log.ErrorTraces());
    const Lines messages = log.Messages();
    ASSERT_EQ(1u, messages.size());
    const std::string head = "ERROR 0x80004005 XML Parsing Error in '" + name + "'\r\n\tline ";
    EXPECT_EQ(head, messages[0].substr(0, head.size()));
    EXPECT_TRUE(std::regex_match(messages[0].substr(head.size()), std::regex("\\d+: [^]*\\."))) << messages[0];
  }

  // The markup of the document element, white space as it was loaded.
  std::wstring Element() {
    ComPtr<IXMLDOMElement> element;
    document->get_documentElement(&element);
    return XmlOf(element.Get());
  }

  TemporaryFolder folder;
  const std::string path = folder.File("a b.xml");
  ComPtr<IXMLDOMDocument2> document = NewXmlDocument();
  LogCapture log;
};

struct Row {
  const char* name;
  const char* content;  // behind the document type
};

void PrintTo(const Row& row, std::ostream* stream) {
  *stream << row.name;
}

std::string RowName(const testing::TestParamInfo<Row>& row) {
  return row.param.name;
}

class ValidFileTest : public LoadedFileTest, public testing::WithParamInterface<Row> {};

TEST_P(ValidFileTest, Loads) {
  EXPECT_HRESULT(S_OK, Load(std::string(kDocumentType) + GetParam().content));
  EXPECT_EQ("", log.Text());
  EXPECT_EQ(L"<r ", Element().substr(0, 3));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, ValidFileTest,
    testing::Values(Row{"TheLeastContent", "<r version='1'><a/></r>"},
                    Row{"AllContent", "<r version='1'><a>x</a><b browser='true'/><d/><c>y</c></r>"},
                    Row{"WhiteSpaceBetweenElements", "\r\n<r version='1'>\r\n  <a>x</a>\r\n  <b/>\r\n</r>\r\n"},
                    Row{"Comments", "<!-- c --><r version='1'><!-- c --><a>x</a><?pi y?></r><!-- c -->"},
                    Row{"AnEmptyRequiredAttribute", "<r version=''><a/></r>"},
                    Row{"CharacterData", "<r version='1'><a><![CDATA[<no>]]></a></r>"}),
    RowName);

class InvalidFileTest : public LoadedFileTest, public testing::WithParamInterface<Row> {};

TEST_P(InvalidFileTest, IsRefused) {
  EXPECT_HRESULT(E_FAIL, Load(std::string(kDocumentType) + GetParam().content));
  ExpectRefusal(path);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, InvalidFileTest,
    testing::Values(
        Row{"AMissingRequiredAttribute", "<r><a/></r>"}, Row{"AMissingElement", "<r version='1'/>"},
        Row{"ElementsInTheWrongOrder", "<r version='1'><b/><a/></r>"},
        Row{"AnElementTooMany", "<r version='1'><a/><a/></r>"}, Row{"AnUnknownElement", "<r version='1'><a/><x/></r>"},
        Row{"AnUnknownAttribute", "<r version='1' x='1'><a/></r>"}, Row{"AnotherDocumentElement", "<a>x</a>"},
        Row{"TextBetweenElements", "<r version='1'>text<a/></r>"},
        Row{"ContentOfAnEmptyElement", "<r version='1'><a/><b>x</b></r>"},
        Row{"AnElementInsideText", "<r version='1'><a>x<c/></a></r>"}, Row{"AnotherCase", "<r version='1'><A/></r>"}),
    RowName);

class BrokenFileTest : public LoadedFileTest, public testing::WithParamInterface<Row> {};

TEST_P(BrokenFileTest, IsRefused) {
  EXPECT_HRESULT(E_FAIL, Load(GetParam().content));
  ExpectRefusal(path);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, BrokenFileTest,
    testing::Values(
        Row{"NothingAtAll", ""}, Row{"WhiteSpaceOnly", " \r\n "}, Row{"TextOnly", "404 Not Found"},
        Row{"NoEndTag", "<r><a></r>"}, Row{"NoEnd", "<?xml version='1.0'?><r><a>x"}, Row{"TwoDocumentElements", "<r/><r/>"},
        Row{"AnUnknownEntity", "<r>&nbsp;</r>"}, Row{"ABareAmpersand", "<r>http://s/?a=1&b=2</r>"},
        Row{"AnUnquotedAttribute", "<r a=1/>"}, Row{"AnAttributeTwice", "<r a='1' a='2'/>"},
        Row{"BytesThatAreNoUtf8", "<r>\xeb</r>"}, Row{"AnUnknownEncoding", "<?xml version='1.0' encoding='nonsense'?><r/>"},
        Row{"AControlCharacter", "<r>\x01</r>"}, Row{"ADocumentTypeWithoutEnd", "<!DOCTYPE r [<!ELEMENT r EMPTY>"},
        Row{"ADocumentTypeWithLeftovers", "<!DOCTYPE r [<!ELEMENT r EMPTY>]> ]><r/>"}),
    RowName);

// A content model that a validating parser may pass over: two branches begin alike.
constexpr char kManifestType[] =
    "<?xml version=\"1.0\"?><!DOCTYPE VantorManifest [\n<!ELEMENT VantorManifest (Destination*)>\n"
    "<!ELEMENT Destination ((FileName?, Temp) | (FileName?, Path))>\n"
    "<!ELEMENT FileName EMPTY>\n<!ELEMENT Temp EMPTY>\n<!ELEMENT Path EMPTY>\n]>\n";

TEST_F(LoadedFileTest, ADestinationWithForbiddenContentIsRefusedWithItsLineAndTheElementsName) {
  EXPECT_HRESULT(
      E_FAIL, Load(std::string(kManifestType) + "<VantorManifest>\n<Destination><Temp/></Destination>\n"
                                                "<Destination><Temp/><FileName/></Destination></VantorManifest>"));
  EXPECT_EQ(Lines{"ERROR 0x80004005 XML Parsing Error in '" + path +
                  "'\r\n\tline 10: The document type does not allow 'FileName' at this place in 'Destination'."},
            log.Messages());
}

TEST_F(LoadedFileTest, ADestinationWithoutAFolderIsRefusedWithItsLine) {
  EXPECT_HRESULT(E_FAIL, Load(std::string(kManifestType) +
                              "<VantorManifest>\n<Destination><FileName/></Destination></VantorManifest>"));
  EXPECT_EQ(Lines{"ERROR 0x80004005 XML Parsing Error in '" + path +
                  "'\r\n\tline 9: The document type does not allow 'Destination' without a folder."},
            log.Messages());
}

TEST_F(LoadedFileTest, AFileWithoutADocumentTypeLoads) {
  EXPECT_HRESULT(S_OK, Load("<r><anything x='1'/></r>"));
  EXPECT_EQ("", log.Text());
}

TEST_F(LoadedFileTest, WhiteSpaceBetweenElementsIsDropped) {
  EXPECT_HRESULT(S_OK, Load("<r>\r\n  <a> x </a>\r\n\t<b/>\r\n</r>"));
  ComPtr<IXMLDOMElement> element;
  ASSERT_HRESULT(S_OK, document->get_documentElement(&element));
  ComPtr<IXMLDOMNodeList> children;
  ASSERT_HRESULT(S_OK, element->get_childNodes(&children));
  LONG count = 0;
  EXPECT_HRESULT(S_OK, children->get_length(&count));
  EXPECT_EQ(2, count);
}

TEST_F(LoadedFileTest, AFileThatIsNotThereIsRefused) {
  const std::string missing = folder.File("missing.xml");
  EXPECT_HRESULT(E_FAIL, LoadXMLDocument(missing.c_str(), document.Get(), 1));
  ExpectRefusal(missing);
}

TEST_F(LoadedFileTest, AFileCanBeNamedByItsURL) {
  WriteWholeFile(path, std::string(kDocumentType) + "<r version='1'><a/></r>");
  std::string url = "file:///" + path;
  std::replace(url.begin(), url.end(), '\\', '/');
  EXPECT_HRESULT(S_OK, LoadXMLDocument(url.c_str(), document.Get(), 1));
  EXPECT_EQ("", log.Text());
}

TEST_F(LoadedFileTest, ADocumentIsLoadedFromTheWeb) {
  WebServer server;
  server.Answer("/a.xml", Response().Body(std::string(kDocumentType) + "<r version='1'><a/></r>"));
  server.Answer("/invalid.xml", Response().Body(std::string(kDocumentType) + "<r/>"));
  EXPECT_HRESULT(S_OK, LoadXMLDocument(server.Url("/a.xml").c_str(), document.Get(), 1));
  EXPECT_EQ("", log.Text());
  EXPECT_HRESULT(E_FAIL, LoadXMLDocument(server.Url("/invalid.xml").c_str(), document.Get(), 1));
  ExpectRefusal(server.Url("/invalid.xml"));
}

TEST_F(LoadedFileTest, TheNextDocumentReplacesTheOneBefore) {
  EXPECT_HRESULT(S_OK, Load("<one/>"));
  EXPECT_HRESULT(S_OK, Load(std::string(kDocumentType) + "<r version='1'><a>two</a></r>"));
  EXPECT_TRUE(NodeExists(document.Get(), L"r/a"));
  EXPECT_FALSE(NodeExists(document.Get(), L"one"));
  EXPECT_HRESULT(S_OK, Load("<three/>"));
  EXPECT_EQ(L"<three/>", Element());
  EXPECT_HRESULT(S_OK, Load("<three/>"));
  EXPECT_EQ(L"<three/>", Element());
}

TEST_F(LoadedFileTest, AValidFileLoadsAfterARefusal) {
  EXPECT_HRESULT(E_FAIL, Load("<broken>"));
  EXPECT_HRESULT(E_FAIL, Load(std::string(kDocumentType) + "<r/>"));
  EXPECT_HRESULT(S_OK, Load("<fine/>"));
  EXPECT_EQ(L"<fine/>", Element());
  EXPECT_EQ(2u, log.Messages().size());
}

TEST_F(LoadedFileTest, AFileOfAHundredThousandElementsIsValidated) {
  std::string content = std::string(kDocumentType) + "<r version='1'><a/><b/>";
  for (int i = 0; i < 100000; ++i)
    content += i % 2 ? "<c>x</c>" : "<d>y</d>";
  const DWORD start = GetTickCount();
  EXPECT_HRESULT(S_OK, Load(content + "</r>"));
  EXPECT_HRESULT(E_FAIL, Load(content + "<b/></r>"));
  EXPECT_LT(GetTickCount() - start, 60000u);
  ComPtr<IXMLDOMNodeList> found;
  EXPECT_HRESULT(S_OK, Load(content + "</r>"));
  EXPECT_HRESULT(S_OK, SelectDocumentNodes(document.Get(), L"c", &found));
  LONG count = 0;
  EXPECT_HRESULT(S_OK, found->get_length(&count));
  EXPECT_EQ(50000, count);
}

TEST_F(LoadedFileTest, ADocumentTypeThatIsNotThereIsARefusal) {
  EXPECT_HRESULT(E_FAIL, Load("<!DOCTYPE r SYSTEM 'missing.dtd'><r/>"));
  ExpectRefusal(path);
}

TEST_F(LoadedFileTest, AnEntityThatGrowsToBillionsIsRefused) {
  std::string content = "<!DOCTYPE r [<!ELEMENT r (#PCDATA)><!ENTITY e0 \"0123456789\">";
  for (int i = 1; i < 10; ++i) {
    content += "<!ENTITY e" + std::to_string(i) + " \"";
    for (int j = 0; j < 10; ++j)
      content += "&e" + std::to_string(i - 1) + ";";
    content += "\">";
  }
  EXPECT_HRESULT(E_FAIL, Load(content + "]><r>&e9;</r>"));
  ExpectRefusal(path);
}

TEST_F(LoadedFileTest, AHundredThousandLevelsAreRefused) {
  std::string content;
  for (const char* const tag : {"<a>", "</a>"}) {
    for (int i = 0; i < 100000; ++i)
      content += tag;
  }
  EXPECT_HRESULT(E_FAIL, Load(content));
  ExpectRefusal(path);
}

TEST_F(LoadedFileTest, TheEncodingIsTheDocumentsOwn) {
  using namespace std::string_literals;
  for (const std::string& content :
       {"<r>\xc3\xab</r>"s, "\xef\xbb\xbf<r>\xc3\xab</r>"s, "<?xml version='1.0' encoding='ISO-8859-1'?><r>\xeb</r>"s,
        "<?xml version='1.0' encoding='windows-1252'?><r>\xeb</r>"s, "<r>&#235;</r>"s,
        "\xff\xfe<\0r\0>\0\xeb\0<\0/\0r\0>\0"s}) {
    EXPECT_HRESULT(S_OK, Load(content)) << content;
    BString text;
    EXPECT_HRESULT(S_OK, GetNodeTextW(document.Get(), L"r", text)) << content;
    EXPECT_STREQ(L"\u00eb", text.Get()) << content;
  }
  EXPECT_EQ("", log.Text());
}

class LoadedTextTest : public LoadedFileTest {
 protected:
  HRESULT LoadText(const std::string& text) { return LoadXMLDocument(text.c_str(), document.Get(), 0); }
};

TEST_F(LoadedTextTest, ATextIsADocumentThatKeepsItsWhiteSpace) {
  EXPECT_HRESULT(S_OK, LoadText("<r>\n  <a/>\n</r>"));
  EXPECT_EQ(L"<r>\r\n  <a/>\r\n</r>", Element());
  EXPECT_EQ("", log.Text());
}

TEST_F(LoadedTextTest, ATextIsNotValidated) {
  EXPECT_HRESULT(S_OK, LoadText("<!DOCTYPE r [<!ELEMENT r EMPTY>]><r><unknown/></r>"));
  EXPECT_EQ("", log.Text());
}

TEST_F(LoadedTextTest, ATextThatDoesNotParseIsItsOwnName) {
  EXPECT_HRESULT(E_FAIL, LoadText("<r>%s%n</s>"));
  ExpectRefusal("<r>%s%n</s>");
}

TEST_F(LoadedTextTest, ANameOfAFileIsNoDocument) {
  WriteWholeFile(path, "<r/>");
  EXPECT_HRESULT(E_FAIL, LoadText(path));
  ExpectRefusal(path);
}

}  // namespace
