#include "transfer/DocumentHead.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "FileFault.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "transfer/DocumentType.h"
#include "transfer/FileWriter.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

constexpr DWORD kManifest = kTransferXMLDocument | kTransferManifest;
constexpr DWORD kPermit = kTransferXMLDocument | kTransferPermitFile;
constexpr char kDeclaration[] = "<?xml version=\"1.0\"?>";

// Bytes in memory. A head is read byte by byte.
class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::string allBytes) : bytes(std::move(allBytes)) {}

  bool Read(void* buffer, DWORD size, DWORD& count) override {
    EXPECT_EQ(1u, size);
    count = 0;
    if (++reads == failedRead || reads == otherFailedRead) {
      SetLastError(ERROR_NETNAME_DELETED);
      return false;
    }
    if (position == bytes.size())
      return true;
    *static_cast<char*>(buffer) = bytes[position++];
    count = 1;
    return true;
  }

  std::string Rest() const { return bytes.substr(position); }

  int failedRead = 0;
  int otherFailedRead = 0;
  int reads = 0;

 private:
  std::string bytes;
  std::size_t position = 0;
};

// A destination in a folder of its own, and the log.
class DocumentHeadTest : public testing::Test {
 protected:
  DocumentHeadTest() : path(folder.File("copy.xml")) { FreeSystemLines(); }
  ~DocumentHeadTest() override { FreeSystemLines(); }

  HRESULT Prepare(MemorySource& source, DWORD flags, const char* notFoundText = nullptr) {
    FileWriter destination(path.c_str());
    EXPECT_TRUE(destination.Create(FILE_ATTRIBUTE_NORMAL));
    const HRESULT hr = PrepareDocumentHead(source, destination, flags, notFoundText);
    destination.Close();
    return hr;
  }

  HRESULT Prepare(const std::string& document, DWORD flags, const char* notFoundText = nullptr) {
    MemorySource source(document);
    const HRESULT hr = Prepare(source, flags, notFoundText);
    rest = source.Rest();
    return hr;
  }

  std::string Written() const { return ReadWholeFile(path); }

  TemporaryFolder folder;
  std::string path;
  std::string rest;
  LogCapture log;
};

TEST_F(DocumentHeadTest, AManifestsOwnTypeGivesWayToTheModules) {
  EXPECT_HRESULT(
      S_OK, Prepare("<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"http://h/m.dtd\">\r\n<V/>", kManifest));
  EXPECT_EQ(kDeclaration + ReadWholeFile(ProjectFile("tests/transfer/data/manifest.dtd.txt")), Written());
  EXPECT_EQ("\r\n<V/>", rest);
  EXPECT_EQ("", log.Text());
}

TEST_F(DocumentHeadTest, APermissionFilesOwnTypeGivesWayToTheModules) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml version=\"1.0\"?><!DOCTYPE VantorPermissions SYSTEM \"x\"><V/>", kPermit));
  EXPECT_EQ(kDeclaration + ReadWholeFile(ProjectFile("tests/transfer/data/permit.dtd.txt")), Written());
  EXPECT_EQ("<V/>", rest);
  EXPECT_EQ("", log.Text());
}

TEST_F(DocumentHeadTest, ADocumentThatIsBothIsAManifest) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml?><!DOCTYPE x>", kManifest | kPermit));
  EXPECT_EQ(std::string("<?xml?>") + kManifestDTD, Written());
}

TEST_F(DocumentHeadTest, ADocumentThatIsNeitherLosesItsType) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml?><!DOCTYPE x><x/>", kTransferXMLDocument));
  EXPECT_EQ("<?xml?>", Written());
  EXPECT_EQ("<x/>", rest);
}

TEST_F(DocumentHeadTest, NothingBehindTheTypeIsRead) {
  MemorySource source("<?xml?><!DOCTYPE x><x/>");
  EXPECT_HRESULT(S_OK, Prepare(source, kManifest));
  EXPECT_EQ(19, source.reads);
}

TEST_F(DocumentHeadTest, ADeclarationMayBeInCapitalsAndOfAnyKind) {
  EXPECT_HRESULT(S_OK, Prepare("<?XML-stylesheet?><!DOCTYPE x>", kTransferXMLDocument));
  EXPECT_EQ("<?XML-stylesheet?>", Written());
  EXPECT_EQ("", log.Text());
}

TEST_F(DocumentHeadTest, WhatStandsBeforeTheTypeGoesWithIt) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml?>\n\t text <!DOCTYPE x><x/>", kTransferXMLDocument));
  EXPECT_EQ("<?xml?>", Written());
  EXPECT_EQ("<x/>", rest);
}

TEST_F(DocumentHeadTest, ATypeEndsAtItsFirstBracket) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml?><!DOCTYPE x [<!ELEMENT x EMPTY>]><x/>", kManifest));
  EXPECT_EQ(std::string("<?xml?>") + kManifestDTD, Written());
  EXPECT_EQ("]><x/>", rest);
}

TEST_F(DocumentHeadTest, AFirstItemThatIsNoDeclarationIsLoggedAndLeftOut) {
  EXPECT_HRESULT(S_OK, Prepare("<a><!DOCTYPE x><x/>", kManifest));
  EXPECT_EQ(kManifestDTD, Written());
  EXPECT_EQ("<x/>", rest);
  EXPECT_EQ(Texts{"ERROR 0x80004005 Not an XML document ('     <a>')."}, log.Messages());
  EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
}

TEST_F(DocumentHeadTest, AByteOrderMarkHidesTheDeclaration) {
  EXPECT_HRESULT(S_OK, Prepare("\xEF\xBB\xBF<?xml?><!DOCTYPE x><x/>", kManifest));
  EXPECT_EQ(kManifestDTD, Written());
  EXPECT_EQ(Texts{"ERROR 0x80004005 Not an XML document ('\xEF\xBB\xBF<?xml?>')."}, log.Messages());
}

struct RefusedRow {
  const char* name;
  std::string document;
  Texts messages;
  const char* written;
};

class RefusedDocumentTest : public DocumentHeadTest, public testing::WithParamInterface<RefusedRow> {};

TEST_P(RefusedDocumentTest, IsInvalid) {
  EXPECT_HRESULT(E_FAIL, Prepare(GetParam().document, kManifest));
  EXPECT_EQ(GetParam().messages, log.Messages());
  EXPECT_EQ(GetParam().written, Written());
}

const std::string kNotXML = "ERROR 0x80004005 Not an XML document (";
const std::string kInvalid = "ERROR 0x80004005 Invalid XML document (";

INSTANTIATE_TEST_SUITE_P(
    , RefusedDocumentTest,
    testing::Values(
        RefusedRow{"NoType", "<?xml?><VantorManifest/>", {kInvalid + "'<VantorManifest/>')."}, "<?xml?>"},
        RefusedRow{"ShortItem", "<?xml?><V/>", {kInvalid + "'    <V/>')."}, "<?xml?>"},
        RefusedRow{"LowerCaseType", "<?xml?><!doctype x>", {kInvalid + "'<!doctype x>')."}, "<?xml?>"},
        RefusedRow{"CommentBeforeTheType", "<?xml?><!-- c --><!DOCTYPE x>", {kInvalid + "'<!-- c -->')."}, "<?xml?>"},
        RefusedRow{"InstructionBeforeTheType", "<?xml?><?a b?><!DOCTYPE x>", {kInvalid + "' <?a b?>')."}, "<?xml?>"},
        RefusedRow{"BracketInTheDeclaration", "<?xml a=\">\"?><!DOCTYPE x>", {kInvalid + "'     \"?>')."}, "<?xml a=\">"},
        RefusedRow{
            "TypeInAnOpenInstruction", "<?xml-a ><!DOCTYPE x>?><!DOCTYPE x []>", {kInvalid + "'<?xml-a >')."}, "<?xml-a >"},
        RefusedRow{"TypeInAnOpenDeclaration",
                   "<?XML version=\"1.0\"><!DOCTYPE x>?>",
                   {kInvalid + "'<?XML version=\"1.0\">')."},
                   "<?XML version=\"1.0\">"},
        RefusedRow{"TypeInTheShortestOpenInstruction", "<?xml><!DOCTYPE x>?>", {kInvalid + "'  <?xml>')."}, "<?xml>"},
        RefusedRow{"TypeBehindAZeroByte", std::string("<?xml?>a\0<!DOCTYPE x>", 21), {kInvalid + "'       a')."}, "<?xml?>"},
        RefusedRow{"TypeFirst", "<!DOCTYPE x><x/>", {kNotXML + "'<!DOCTYPE x>').", kInvalid + "'    <x/>')."}, ""},
        RefusedRow{"Formats", "<?xml?><%s%n%d>", {kInvalid + "'<%s%n%d>')."}, "<?xml?>"},
        RefusedRow{"Empty", "", {kNotXML + "'        ').", kInvalid + "'        ')."}, ""},
        RefusedRow{"DeclarationAlone", "<?xml?>", {kInvalid + "'        ')."}, "<?xml?>"},
        RefusedRow{"CutDeclaration", "<?xml", {kInvalid + "'        ')."}, "<?xml"},
        RefusedRow{"NoMarkup", "some text", {kNotXML + "'some text').", kInvalid + "'        ')."}, ""}),
    [](const testing::TestParamInfo<RefusedRow>& row) { return std::string(row.param.name); });

TEST_F(DocumentHeadTest, ATypeThatTheDataEndsInIsATypeToo) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml?><!DOCTYPE x", kManifest));
  EXPECT_EQ(std::string("<?xml?>") + kManifestDTD, Written());
}

TEST_F(DocumentHeadTest, AZeroByteInTheDeclarationIsWrittenWithIt) {
  EXPECT_HRESULT(S_OK, Prepare(std::string("<?xml \0?><!DOCTYPE x>", 21), kTransferXMLDocument));
  EXPECT_EQ(std::string("<?xml \0?>", 9), Written());
}

// `bytes` bytes that begin with `start` and end with `end`.
std::string Item(const std::string& start, std::size_t bytes, const std::string& end = ">") {
  return start + std::string(bytes - start.size() - end.size(), 'x') + end;
}

TEST_F(DocumentHeadTest, AnItemOf511BytesPasses) {
  const std::string declaration = Item("<?xml ", 511, "?>");
  EXPECT_HRESULT(S_OK, Prepare(declaration + Item("<!DOCTYPE ", 511) + "<x/>", kManifest));
  EXPECT_EQ(declaration + kManifestDTD, Written());
  EXPECT_EQ("<x/>", rest);
  EXPECT_EQ("", log.Text());
}

TEST_F(DocumentHeadTest, ADeclarationOf512BytesIsRefused) {
  MemorySource source(Item("<?xml ", 512) + "<!DOCTYPE x><x/>");
  EXPECT_HRESULT(E_FAIL, Prepare(source, kManifest));
  EXPECT_EQ(512, source.reads);
  EXPECT_EQ("", Written());
  EXPECT_EQ(Texts{kInvalid + "'" + Item("<?xml ", 512).substr(0, 511) + "')."}, log.Messages());
}

TEST_F(DocumentHeadTest, ATypeOf512BytesIsRefused) {
  MemorySource source("<?xml?>" + Item("<!DOCTYPE ", 512) + "<x/>");
  EXPECT_HRESULT(E_FAIL, Prepare(source, kManifest));
  EXPECT_EQ(7 + 512, source.reads);
  EXPECT_EQ("<?xml?>", Written());
  EXPECT_EQ(Texts{kInvalid + "'" + Item("<!DOCTYPE ", 512).substr(0, 511) + "')."}, log.Messages());
}

TEST_F(DocumentHeadTest, AHeadWithoutAnEndIsReadNoFurtherThanItsBuffer) {
  MemorySource source("<?xml?>" + std::string(1000000, 'x'));
  EXPECT_HRESULT(E_FAIL, Prepare(source, kManifest));
  EXPECT_EQ(7 + 512, source.reads);
}

TEST_F(DocumentHeadTest, AFailedReadOfTheDeclarationLeavesItOut) {
  MemorySource source("<!DOCTYPE x><x/>");
  source.failedRead = 1;
  EXPECT_HRESULT(S_OK, Prepare(source, kManifest));
  EXPECT_EQ(kManifestDTD, Written());
  EXPECT_EQ(Texts{"ERROR 0x80070040 Reading failed."}, log.Messages());
  EXPECT_EQ(Codes{HRESULT_FROM_WIN32(ERROR_NETNAME_DELETED)}, log.ErrorTraces());
}

TEST_F(DocumentHeadTest, ADeclarationThatWasLostInItsMiddleIsNotOpen) {
  MemorySource source("<?xml?<!DOCTYPE x><x/>");
  source.failedRead = 7;
  EXPECT_HRESULT(S_OK, Prepare(source, kManifest));
  EXPECT_EQ(kManifestDTD, Written());
  EXPECT_EQ(Texts{"ERROR 0x80070040 Reading failed."}, log.Messages());
}

TEST_F(DocumentHeadTest, AFailedReadOfTheTypeIsTheResult) {
  MemorySource source("<?xml?><!DOCTYPE x><x/>");
  source.failedRead = 8;
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_NETNAME_DELETED), Prepare(source, kManifest));
  EXPECT_EQ("<?xml?>", Written());
  EXPECT_EQ(Texts{"ERROR 0x80070040 Reading failed."}, log.Messages());
  EXPECT_EQ(Codes{HRESULT_FROM_WIN32(ERROR_NETNAME_DELETED)}, log.ErrorTraces());
}

TEST_F(DocumentHeadTest, ASourceThatIsLostIsReportedTwice) {
  MemorySource source("<?xml?><!DOCTYPE x><x/>");
  source.failedRead = 3;
  source.otherFailedRead = 4;
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_NETNAME_DELETED), Prepare(source, kManifest));
  EXPECT_EQ("", Written());
  EXPECT_EQ((Texts{"ERROR 0x80070040 Reading failed.", "ERROR 0x80070040 Reading failed."}), log.Messages());
  EXPECT_EQ(4, source.reads);
}

TEST_F(DocumentHeadTest, AFailedWriteOfTheDeclarationIsLoggedAndNoMore) {
  FileFault fault(path, FileFault::Kind::Write, 1, ERROR_DISK_FULL);
  EXPECT_HRESULT(S_OK, Prepare("<?xml?><!DOCTYPE x><x/>", kManifest));
  EXPECT_EQ(kManifestDTD, Written());
  EXPECT_EQ(Texts{"ERROR 0x80070070 Writing failed."}, log.Messages());
}

TEST_F(DocumentHeadTest, AManifestTypeThatCannotBeWrittenIsReportedInTwoSpellings) {
  FileFault fault(path, FileFault::Kind::Write, 2, ERROR_DISK_FULL);
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_DISK_FULL), Prepare("<?xml?><!DOCTYPE x><x/>", kManifest));
  EXPECT_EQ("<?xml?>", Written());
  EXPECT_EQ((Texts{"ERROR 0x80070070 Writing Manfiest DTD in XML failed.",
                   "ERROR 0x80070070 Writing Manifest DTD in XML failed."}),
            log.Messages());
}

TEST_F(DocumentHeadTest, APermissionTypeThatCannotBeWrittenIsReportedTwice) {
  FileFault fault(path, FileFault::Kind::Write, 2, ERROR_DISK_FULL);
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_DISK_FULL), Prepare("<?xml?><!DOCTYPE x><x/>", kPermit));
  EXPECT_EQ(
      (Texts{"ERROR 0x80070070 Writing Permit DTD in XML failed.", "ERROR 0x80070070 Writing Permit DTD in XML failed."}),
      log.Messages());
}

TEST_F(DocumentHeadTest, ATypeThatIsWrittenInPartIsAFailure) {
  FileFault fault(path, FileFault::Kind::ShortWrite, 2, 0);
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_WRITE_FAULT), Prepare("<?xml?><!DOCTYPE x><x/>", kManifest));
  EXPECT_EQ(2u, log.Messages().size());
}

TEST_F(DocumentHeadTest, InSystemModeAManifestRefersToTheModulesFile) {
  BuildSystemLines("C:\\Apps");
  EXPECT_HRESULT(S_OK, Prepare("<?xml?>\n<!DOCTYPE x><x/>", kManifest | kTransferSystemLine));
  EXPECT_EQ("<?xml?>\r\n<!DOCTYPE VantorManifest SYSTEM \"file://C:\\Apps\\manifest.dtd\">", Written());
  EXPECT_EQ("", log.Text());
}

TEST_F(DocumentHeadTest, InSystemModeAnyOtherDocumentKeepsItsOwnType) {
  BuildSystemLines("C:\\Apps");
  EXPECT_HRESULT(S_OK, Prepare("<?xml?>\n<!DOCTYPE x SYSTEM \"y\"><x/>", kPermit | kTransferSystemLine));
  EXPECT_EQ("<?xml?>\n<!DOCTYPE x SYSTEM \"y\">", Written());
  EXPECT_EQ("<x/>", rest);
}

TEST_F(DocumentHeadTest, InSystemModeAZeroByteInATypeIsWrittenWithIt) {
  const std::string type("<!DOCTYPE x \0 y>", 16);
  EXPECT_HRESULT(S_OK, Prepare("<?xml?>" + type + "<x/>", kPermit | kTransferSystemLine));
  EXPECT_EQ("<?xml?>" + type, Written());
}

TEST_F(DocumentHeadTest, InSystemModeAFailedWriteIsReportedOnce) {
  BuildSystemLines("C:\\Apps");
  for (const DWORD flags : {kManifest, kPermit}) {
    LogCapture own;
    FileFault fault(path, FileFault::Kind::Write, 2, ERROR_DISK_FULL);
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_DISK_FULL), Prepare("<?xml?><!DOCTYPE x>", flags | kTransferSystemLine));
    EXPECT_EQ(Texts{"ERROR 0x80070070 Writing DTD Path failed."}, own.Messages());
  }
}

TEST_F(DocumentHeadTest, InSystemModeAManifestNeedsTheLine) {
  EXPECT_HRESULT(E_UNEXPECTED, Prepare("<?xml?><!DOCTYPE x>", kManifest | kTransferSystemLine));
  EXPECT_EQ(Texts{"ERROR 0x8000ffff Writing DTD Path failed."}, log.Messages());
  EXPECT_EQ("<?xml?>", Written());
}

constexpr char kNotFoundLine[] = "ERROR 0x80070002 Source URL not found.";

TEST_F(DocumentHeadTest, TheNotFoundTextInTheSecondItemIsTheResult) {
  EXPECT_HRESULT(kNotFoundResult, Prepare("<?xml?><!DOCTYPE gone>", kManifest, "gone"));
  EXPECT_EQ(Texts{kNotFoundLine}, log.Messages());
  EXPECT_EQ("<?xml?>", Written());
}

TEST_F(DocumentHeadTest, TheNotFoundTextInTheFirstItemIsTheResultOfAnErrorPage) {
  EXPECT_HRESULT(kNotFoundResult, Prepare("<html gone><body>", kManifest, "gone"));
  EXPECT_EQ((Texts{kNotFoundLine, kInvalid + "'  <body>')."}), log.Messages());
  EXPECT_EQ("", Written());
}

TEST_F(DocumentHeadTest, TheNotFoundTextInBothItemsIsReportedForEach) {
  EXPECT_HRESULT(kNotFoundResult, Prepare("<gone><gone>", kManifest, "gone"));
  EXPECT_EQ((Texts{kNotFoundLine, kNotFoundLine}), log.Messages());
}

TEST_F(DocumentHeadTest, TheNotFoundTextInTheFirstItemIsLoggedOnlyWhenATypeFollows) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml gone?><!DOCTYPE x><x/>", kManifest, "gone"));
  EXPECT_EQ(Texts{kNotFoundLine}, log.Messages());
  EXPECT_EQ(kManifestDTD, Written());
}

TEST_F(DocumentHeadTest, TheNotFoundTextIsSoughtWithItsCaseAndOnlyWhenThereIsOne) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml gone?><!DOCTYPE gone>", kTransferXMLDocument, "Gone"));
  EXPECT_HRESULT(S_OK, Prepare("<?xml gone?><!DOCTYPE gone>", kTransferXMLDocument, ""));
  EXPECT_HRESULT(S_OK, Prepare("<?xml gone?><!DOCTYPE gone>", kTransferXMLDocument, nullptr));
  EXPECT_EQ("", log.Text());
}

TEST_F(DocumentHeadTest, TheNotFoundTextBehindTheHeadIsNotSeen) {
  EXPECT_HRESULT(S_OK, Prepare("<?xml?><!DOCTYPE x><gone/>", kManifest, "gone"));
  EXPECT_EQ("<gone/>", rest);
}

}  // namespace
