#include <gtest/gtest.h>

#include "permissions/PermitFileReading.h"

namespace {

std::string Elements(const std::string& source, const std::string& destination) {
  return "<VantorPermissions version=\"1.0\"><Source>" + source + "</Source><Destination>" + destination +
         "</Destination></VantorPermissions>";
}

const char kSource[] = "<URL>http://host/apps/</URL><Extension>exe</Extension>";

struct BodyRow {
  const char* name;
  std::string body;  // all that follows the document type
};

void PrintTo(const BodyRow& row, std::ostream* stream) {
  *stream << row.body;
}

std::string RowName(const testing::TestParamInfo<BodyRow>& row) {
  return row.param.name;
}

class InvalidBodyTest : public PermitFileReading, public testing::WithParamInterface<BodyRow> {};

TEST_P(InvalidBodyTest, IsRefusedAsAWhole) {
  LogCapture log;
  EXPECT_HRESULT(E_FAIL, Read(std::string(kDeclaration) + kDocumentType + GetParam().body));
  const Lines messages = log.Messages();
  ASSERT_EQ(4u, messages.size()) << log.Text();
  EXPECT_EQ("INFO Permit File: " + permit.Path(), messages[0]);
  const std::string parsing = "ERROR 0x80004005 XML Parsing Error in '" + copy + "'\r\n\tline ";
  EXPECT_EQ(parsing, messages[1].substr(0, parsing.size()));
  EXPECT_EQ(NotLoaded("0x80004005"), messages[2]);
  EXPECT_EQ(NotRead("0x80004005"), messages[3]);
  ExpectNoPermissions();
}

const BodyRow kInvalidBodies[] = {
    {"NoVersion",
     "<VantorPermissions><Source><URL>http://host/</URL><Extension>exe</Extension></Source><Destination/>"
     "</VantorPermissions>"},
    {"VersionInUpperCase",
     "<VantorPermissions VERSION=\"1.0\"><Source><URL>http://host/</URL><Extension>exe</Extension>"
     "</Source><Destination/></VantorPermissions>"},
    {"ExtensionBeforeURL", Elements("<Extension>exe</Extension><URL>http://host/apps/</URL>", "<Temp/>")},
    {"URLBehindExtension", Elements(std::string(kSource) + "<URL>http://other/</URL>", "<Temp/>")},
    {"Cookie", Elements(kSource, "<Cookie/>")},
    {"NoURL", Elements("<Extension>exe</Extension>", "<Temp/>")},
    {"NoExtension", Elements("<URL>http://host/apps/</URL>", "<Temp/>")},
    {"EmptySource", Elements("", "<Temp/>")},
    {"NoSource", "<VantorPermissions version=\"1.0\"><Destination><Temp/></Destination></VantorPermissions>"},
    {"NoDestination",
     "<VantorPermissions version=\"1.0\"><Source><URL>http://host/</URL><Extension>exe</Extension></Source>"
     "</VantorPermissions>"},
    {"DestinationBeforeSource",
     "<VantorPermissions version=\"1.0\"><Destination/><Source><URL>http://host/</URL>"
     "<Extension>exe</Extension></Source></VantorPermissions>"},
    {"TwoSources",
     "<VantorPermissions version=\"1.0\"><Source><URL>a:</URL><Extension>exe</Extension></Source>"
     "<Source><URL>a:</URL><Extension>exe</Extension></Source><Destination/></VantorPermissions>"},
    {"TwoDestinations",
     "<VantorPermissions version=\"1.0\"><Source><URL>a:</URL><Extension>exe</Extension></Source>"
     "<Destination/><Destination/></VantorPermissions>"},
    {"EmptyRoot", "<VantorPermissions version=\"1.0\"/>"},
    {"OtherRoot", "<VantorManifest version=\"1.0\"/>"},
    {"RootInLowerCase",
     "<vantorpermissions version=\"1.0\"><Source><URL>a:</URL><Extension>exe</Extension></Source>"
     "<Destination/></vantorpermissions>"},
    {"UnknownSourceElement", Elements(std::string(kSource) + "<Host>host</Host>", "<Temp/>")},
    {"UnknownDestinationElement", Elements(kSource, "<Temp/><Windows/>")},
    {"DestinationElementInLowerCase", Elements(kSource, "<temp/>")},
    {"UnknownAttribute", Elements("<URL exact=\"yes\">http://host/</URL><Extension>exe</Extension>", "<Temp/>")},
    {"TextInTheSource", Elements(std::string("all of these: ") + kSource, "<Temp/>")},
    {"TextInTheDestination", Elements(kSource, "C:\\Apps")},
    {"TextInTheInternetCache", Elements(kSource, "<InternetCache>yes</InternetCache>")},
    {"ElementInAURL", Elements("<URL>http://<Extension>exe</Extension></URL><Extension>exe</Extension>", "<Temp/>")},
    {"ElementInAPath", Elements(kSource, "<Path><Temp/></Path>")},
    {"WrongEndTag", "<VantorPermissions version=\"1.0\"></VantorManifest>"},
    {"CutInAnElement", Elements(kSource, "<Temp/>").substr(0, 80)},
    {"CutBeforeTheEnd", Elements(kSource, "<Temp/>").substr(0, Elements(kSource, "<Temp/>").size() - 1)},
    {"SecondRoot", Elements(kSource, "<Temp/>") + "<VantorPermissions version=\"1.0\"/>"},
    {"TextBehindTheRoot", Elements(kSource, "<Temp/>") + "text"},
    {"Nothing", ""},
    {"SecondDocumentType", "<!DOCTYPE VantorPermissions [<!ELEMENT VantorPermissions ANY>]>" + Elements(kSource, "<Temp/>")},
    {"RestOfAnInternalSubset", " ]>" + Elements(kSource, "<Temp/>")},
    {"UnknownEntity", Elements("<URL>http://&host;/</URL><Extension>exe</Extension>", "<Temp/>")},
    {"LoneAmpersand", Elements("<URL>http://host/?a&b</URL><Extension>exe</Extension>", "<Temp/>")},
    {"ControlCharacter", Elements("<URL>http://host/\x01/</URL><Extension>exe</Extension>", "<Temp/>")},
    {"ReferenceToAControlCharacter", Elements("<URL>http://host/&#0;/</URL><Extension>exe</Extension>", "<Temp/>")},
    {"NoUtf8", Elements("<URL>http://host/\xe9t\xe9/</URL><Extension>exe</Extension>", "<Temp/>")},
};

INSTANTIATE_TEST_SUITE_P(Rows, InvalidBodyTest, testing::ValuesIn(kInvalidBodies), RowName);

class ValidBodyTest : public PermitFileReading, public testing::WithParamInterface<BodyRow> {};

TEST_P(ValidBodyTest, IsRead) {
  LogCapture log(false);
  EXPECT_HRESULT(S_OK, Read(std::string(kDeclaration) + kDocumentType + GetParam().body));
  EXPECT_TRUE(IsHostPermitted());
  EXPECT_EQ("", log.Text());
}

const BodyRow kValidBodies[] = {
    {"Smallest", Elements(kSource, "")},
    {"VersionOfAnyText",
     "<VantorPermissions version='&lt;two&gt;'><Source><URL>http://host/apps/</URL><Extension>exe</Extension>"
     "</Source><Destination/></VantorPermissions>"},
    {"BlanksBetweenElements", " \r\n" + Elements(" \t" + std::string(kSource) + "\r\n ", " <Temp/>\n\n") + "\r\n\r\n"},
    {"CommentsAnywhere",
     "<!-- > -->" + Elements("<!-- <URL> -->" + std::string(kSource) + "<!---->", "<!-- nothing -->") + "<!-- -->"},
    {"Instructions", "<?one?>" + Elements("<?two a=\"b\"?>" + std::string(kSource), "") + "<?three?>"},
    {"InternetCacheBehindOthers",
     Elements(kSource, "<Path>C:\\</Path><InternetCache/><Temp/><InternetCache></InternetCache>")},
};

INSTANTIATE_TEST_SUITE_P(Rows, ValidBodyTest, testing::ValuesIn(kValidBodies), RowName);

struct HeadRow {
  const char* name;
  std::string head;  // all that stands before the root element
  std::string item;  // what the log shows of it
};

void PrintTo(const HeadRow& row, std::ostream* stream) {
  *stream << row.head;
}

std::string HeadName(const testing::TestParamInfo<HeadRow>& row) {
  return row.param.name;
}

class InvalidHeadTest : public PermitFileReading, public testing::WithParamInterface<HeadRow> {};

TEST_P(InvalidHeadTest, IsNotCopied) {
  const HeadRow& row = GetParam();
  LogCapture log(false);
  EXPECT_HRESULT(E_FAIL, Read(row.head + kBody));
  const Lines messages = log.Messages();
  const Lines expected = {
      "ERROR 0x80004005 Invalid XML document ('" + row.item + "').", NotCopied("0x80004005"), NotRead("0x80004005")};
  ASSERT_LE(expected.size(), messages.size());
  EXPECT_EQ(expected, Lines(messages.end() - 3, messages.end()));
  ExpectNoCopy();
  ExpectNoPermissions();
}

constexpr char kRoot[] = "<VantorPermissions version=\"1.0\">";

std::string Comment(std::size_t bytes) {
  return "<!--" + std::string(bytes - 4, 'x');
}

const HeadRow kInvalidHeads[] = {
    {"NoDocumentType", kDeclaration, kRoot},
    {"NoDocumentTypeOnANewLine", std::string(kDeclaration) + "\r\n", std::string("\r\n") + kRoot},
    {"CommentBeforeTheDocumentType", std::string(kDeclaration) + "<!-- x -->" + kDocumentType, "<!-- x -->"},
    {"InstructionBeforeTheDocumentType", std::string(kDeclaration) + "<?x?>" + kDocumentType, "   <?x?>"},
    {"DocumentTypeInLowerCase", std::string(kDeclaration) + "<!doctype VantorPermissions>", "<!doctype VantorPermissions>"},
    {"DocumentTypeFirst", kDocumentType, kRoot},
    {"BlankLineButNoDocumentType", std::string("\r\n") + kDeclaration, kRoot},
    {"OverlongDeclaration", Comment(600) + "-->" + kDocumentType, Comment(511)},
    {"OverlongDocumentType", std::string(kDeclaration) + "<!DOCTYPE VantorPermissions " + std::string(600, ' ') + ">",
     "<!DOCTYPE VantorPermissions " + std::string(511 - 28, ' ')},
};

INSTANTIATE_TEST_SUITE_P(Rows, InvalidHeadTest, testing::ValuesIn(kInvalidHeads), HeadName);

class HeadTest : public PermitFileReading {};

TEST_F(HeadTest, AnEmptyFileIsNoDocument) {
  LogCapture log(false);
  EXPECT_HRESULT(E_FAIL, Read(""));
  EXPECT_EQ((Lines{"ERROR 0x80004005 Not an XML document ('        ').",
                   "ERROR 0x80004005 Invalid XML document ('        ').", NotCopied("0x80004005"), NotRead("0x80004005")}),
            log.Messages());
}

TEST_F(HeadTest, ADeclarationAloneIsNoDocument) {
  LogCapture log(false);
  EXPECT_HRESULT(E_FAIL, Read(kDeclaration));
  EXPECT_EQ((Lines{"ERROR 0x80004005 Invalid XML document ('        ').", NotCopied("0x80004005"), NotRead("0x80004005")}),
            log.Messages());
}

// Every second byte is zero: there is no "<!DOCTYPE" in it.
TEST_F(HeadTest, AWideFileIsNoDocument) {
  std::string wide = "\xff\xfe";
  for (const char character : std::string(kDeclaration) + kDocumentType + kBody)
    wide += std::string(1, character) + '\0';
  LogCapture log(false);
  EXPECT_HRESULT(E_FAIL, Read(wide));
  EXPECT_EQ((Lines{"ERROR 0x80004005 Not an XML document ('     \xff\xfe<').",
                   "ERROR 0x80004005 Invalid XML document ('        ').", NotCopied("0x80004005"), NotRead("0x80004005")}),
            log.Messages());
  ExpectNoPermissions();
}

// The document type with the blanks before it is one byte short of too long.
TEST_F(HeadTest, ALongHeadIsRead) {
  const std::string documentType = "<!DOCTYPE VantorPermissions>";
  EXPECT_HRESULT(S_OK, Read(kDeclaration + std::string(511 - documentType.size(), ' ') + documentType + kBody));
  EXPECT_TRUE(IsHostPermitted());
  EXPECT_HRESULT(E_FAIL, Read(kDeclaration + std::string(512 - documentType.size(), ' ') + documentType + kBody));
}

TEST_F(HeadTest, TheDeclarationsEncodingCounts) {
  const std::string body = Elements("<URL>http://caf\xe9/</URL><Extension>exe</Extension>", "");
  EXPECT_HRESULT(S_OK, Read(std::string("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>") + kDocumentType + body));
  EXPECT_HRESULT(S_OK, permissions->IsManifestURLPermitted(L"http://caf\x00e9/setup.xml"));
}

// What stands before the first closing bracket is left out with it, and said.
class UndeclaredTest : public PermitFileReading, public testing::WithParamInterface<HeadRow> {};

TEST_P(UndeclaredTest, IsReadAllTheSame) {
  const HeadRow& row = GetParam();
  LogCapture log(false);
  EXPECT_HRESULT(S_OK, Read(row.head + kDocumentType + kBody));
  EXPECT_EQ(Lines{"ERROR 0x80004005 Not an XML document ('" + row.item + "')."}, log.Messages());
  EXPECT_TRUE(IsHostPermitted());
}

const HeadRow kUndeclared[] = {
    {"ByteOrderMark", std::string("\xef\xbb\xbf") + kDeclaration, std::string("\xef\xbb\xbf") + kDeclaration},
    {"BlankLine", std::string("\r\n") + kDeclaration, std::string("\r\n") + kDeclaration},
    {"Blank", std::string(" ") + kDeclaration, std::string(" ") + kDeclaration},
    {"Comment", "<!-- permissions -->", "<!-- permissions -->"},
    {"ShortComment", "<!---->", " <!---->"},
    {"Text", "permissions>", "permissions>"},
};

INSTANTIATE_TEST_SUITE_P(Rows, UndeclaredTest, testing::ValuesIn(kUndeclared), HeadName);

}  // namespace
