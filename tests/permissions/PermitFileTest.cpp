#include "support/PermitFile.h"

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <algorithm>

#include "permissions/DestinationDocument.h"
#include "permissions/Permissions.h"
#include "support/HResult.h"
#include "support/InternetCache.h"
#include "support/LogCapture.h"
#include "support/WebServer.h"
#include "transfer/DocumentType.h"

namespace {

using Lines = std::vector<std::string>;

const char kDeclaration[] = "<?xml version=\"1.0\"?>";
const char kDocumentType[] = "<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">";

// What a file needs beside the part that a test is about.
class PermitFileTest : public testing::Test {
 protected:
  PermitFileTest() { permit.URL("http://host/apps/").Extension("exe").Folder("Temp"); }

  HRESULT ReadPermissions(const wchar_t* name = L"permit.xml") {
    HRESULT hr = E_UNEXPECTED;
    permissions = std::make_unique<CPermissions>(7, name, &hr);
    return hr;
  }

  bool IsHostPermitted() const { return permissions->IsManifestURLPermitted(L"http://host/apps/setup.xml") == S_OK; }

  PermitFile permit;
  std::unique_ptr<CPermissions> permissions;
};

TEST_F(PermitFileTest, IsReadFromTheModulesFolder) {
  permit.Write();
  LogCapture log(true);
  EXPECT_HRESULT(S_OK, ReadPermissions());
  EXPECT_TRUE(IsHostPermitted());
  const std::string text = log.Text();
  EXPECT_EQ("\tPermit File: " + permit.Path() + "\r\n\tPermitted Destinations:\r\n\t\t" + TemporaryPath() + "\r\n",
            text.substr(text.find("\r\n\t") + 2));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("INFO", log.Entries()[0].level);
  EXPECT_EQ("Permissions", log.Entries()[0].file);
}

TEST_F(PermitFileTest, ReadingIsSilentWithoutDebugLogging) {
  permit.Write();
  LogCapture log(false);
  EXPECT_HRESULT(S_OK, ReadPermissions());
  EXPECT_EQ("", log.Text());
}

TEST_F(PermitFileTest, NobodyHasToAskForTheCode) {
  permit.Write();
  permissions = std::make_unique<CPermissions>(0, L"permit.xml", nullptr);
  EXPECT_TRUE(IsHostPermitted());
}

TEST_F(PermitFileTest, IsReadOnce) {
  permit.Write();
  ASSERT_HRESULT(S_OK, ReadPermissions());
  permit.Write("");
  EXPECT_TRUE(IsHostPermitted());
  EXPECT_HRESULT(E_FAIL, ReadPermissions());
  EXPECT_FALSE(IsHostPermitted());
}

TEST_F(PermitFileTest, TheCopyInTheInternetCacheHasTheModulesDocumentType) {
  permit.Write();
  ASSERT_HRESULT(S_OK, ReadPermissions());
  const std::string copy = CachedFile(permit.Path());
  ASSERT_NE("", copy);
  EXPECT_EQ(std::string(kDeclaration) + kPermitDTD + "\r\n" + permit.Body(), ReadWholeFile(copy));
  EXPECT_EQ(0u, AttributesOf(copy) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
  permissions.reset();
  EXPECT_EQ(copy, CachedFile(permit.Path()));
}

TEST_F(PermitFileTest, AnAbsoluteNameIsTakenAsItIs) {
  permit.Write();
  TemporaryFolder elsewhere;
  const std::string path = elsewhere.File("rules.xml");
  ASSERT_TRUE(MoveFileA(permit.Path().c_str(), path.c_str()));
  LogCapture log(true);
  EXPECT_HRESULT(S_OK, ReadPermissions(Wide(path).c_str()));
  EXPECT_EQ("Permit File: " + path + "\r\n\tPermitted Destinations:\r\n\t\t" + TemporaryPath(), log.Entries().at(0).message);
  DeleteUrlCacheEntryA(path.c_str());
}

TEST_F(PermitFileTest, AWebURLIsFetched) {
  WebServer server;
  server.Answer("/permit.xml", Response().Body(permit.Content()));
  EXPECT_HRESULT(S_OK, ReadPermissions(Wide(server.Url("/permit.xml")).c_str()));
  EXPECT_TRUE(IsHostPermitted());
  EXPECT_EQ(Lines{"GET /permit.xml"}, server.Asked());
  DeleteUrlCacheEntryA(server.Url("/permit.xml").c_str());
}

TEST_F(PermitFileTest, AMissingNameIsAnInvalidArgument) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, ReadPermissions(nullptr));
  EXPECT_HRESULT(E_INVALIDARG, ReadPermissions(L""));
  EXPECT_EQ(Lines(2, "ERROR 0x80070057 Missing permit file parameter."), log.Messages());
  EXPECT_EQ(2u, log.Entries().size());
  EXPECT_FALSE(IsHostPermitted());
}

// Nothing of the document type that a file names is fetched: the module has its own.
TEST_F(PermitFileTest, TheDocumentTypeThatItNamesIsNotFetched) {
  WebServer server;
  server.Answer("/permit.dtd", Response().Body("<!ELEMENT VantorPermissions ANY>"));
  permit.Write(std::string(kDeclaration) + "<!DOCTYPE VantorPermissions PUBLIC \"-//V//P\" \"" + server.Url("/permit.dtd") +
               "\">" + permit.Body());
  EXPECT_HRESULT(S_OK, ReadPermissions());
  EXPECT_TRUE(IsHostPermitted());
  EXPECT_EQ(Lines(), server.Asked());
}

TEST_F(PermitFileTest, TheEntitiesThatItDeclaresAreNotFetched) {
  WebServer server;
  server.Answer("/entity", Response().Body("http://elsewhere/"));
  permit.Write(std::string(kDeclaration) + "<!DOCTYPE VantorPermissions [<!ENTITY remote SYSTEM \"" + server.Url("/entity") +
               "\"> ]>" + permit.Body());
  EXPECT_HRESULT(E_FAIL, ReadPermissions());
  EXPECT_FALSE(IsHostPermitted());
  EXPECT_EQ(Lines(), server.Asked());
}

TEST_F(PermitFileTest, OnlyPathsAreAList) {
  PermitFile paths;
  paths.URL("http://host/").Extension("exe").Folder("Path", "C:\\Apps").Folder("Path", "D:\\Apps");
  permissions = paths.Read();
  const CDestinationFolder permitted("d:\\apps\\sub", nullptr);
  const CDestinationFolder refused("C:\\Other", nullptr);
  EXPECT_HRESULT(S_OK, permissions->IsDestinationPermitted(&permitted));
  EXPECT_HRESULT(E_ACCESSDENIED, permissions->IsDestinationPermitted(&refused));
}

TEST_F(PermitFileTest, AnEmptyDestinationPermitsNoFolder) {
  PermitFile none;
  none.URL("http://host/").Extension("exe");
  permissions = none.Read();
  const CDestinationFolder candidate("C:\\Apps", nullptr);
  EXPECT_HRESULT(E_UNEXPECTED, permissions->IsDestinationPermitted(&candidate));
  EXPECT_HRESULT(S_OK, permissions->IsExtensionPermitted("exe"));
}

TEST_F(PermitFileTest, DestinationsStandInAnyOrderAndNumber) {
  PermitFile many;
  many.URL("http://host/").Extension("exe");
  for (int round = 0; round < 2; ++round) {
    for (const char* element :
         {"ApplicationData", "VantorData", "CommonApplicationData", "CommonVantorData", "InternetCache",
          "LocalApplicationData", "LocalVantorData", "Path", "Temp", "Documents", "Personal", "VantorUser"})
      many.Folder(element, std::string(element) == "Path" ? "C:\\Apps" : "");
  }
  LogCapture log(true);
  permissions = many.Read();
  const std::string personal = SpecialFolderPath(CSIDL_PERSONAL);
  const std::string local = SpecialFolderPath(CSIDL_LOCAL_APPDATA);
  const std::string roaming = SpecialFolderPath(CSIDL_APPDATA);
  const std::string common = SpecialFolderPath(CSIDL_COMMON_APPDATA);
  std::string list = "\tPermitted Destinations:\r\n";
  for (const std::string& folder : {personal, SpecialFolderPath(CSIDL_COMMON_DOCUMENTS), personal + "\\Vantor",
                                    SpecialFolderPath(CSIDL_INTERNET_CACHE), TemporaryPath(), local, local + "\\Vantor",
                                    roaming, roaming + "\\Vantor", common, common + "\\Vantor", std::string("C:\\Apps")})
    list += "\t\t" + folder + "\r\n\t\t" + folder + "\r\n";
  const std::string text = log.Text();
  EXPECT_EQ(list, text.substr(std::min(text.find("\tPermitted"), text.size())));
}

TEST_F(PermitFileTest, ManyEntriesAreRead) {
  std::string urls;
  std::string folders;
  for (int i = 0; i < 100000; ++i)
    urls += "<URL>http://host/" + std::to_string(i) + "/</URL>\n";
  for (int i = 0; i < 10000; ++i)
    folders += "<Path>C:\\Apps\\" + std::to_string(i) + "\\</Path>\n";
  permit.Write(std::string(kDeclaration) + kDocumentType + "<VantorPermissions version=\"1.0\"><Source>" + urls +
               "<Extension>exe</Extension></Source><Destination>" + folders + "</Destination></VantorPermissions>");
  LogCapture log(false);
  EXPECT_HRESULT(S_OK, ReadPermissions());
  EXPECT_HRESULT(S_OK, permissions->IsManifestURLPermitted(L"http://host/99999/setup.xml"));
  const CDestinationFolder candidate("C:\\Apps\\9999", nullptr);
  EXPECT_HRESULT(S_OK, permissions->IsDestinationPermitted(&candidate));
  EXPECT_EQ("", log.Text());
}

// How a text that is written in a file arrives as a permitted URL.
struct TextRow {
  const char* name;
  const char* written;
  const char* read;
};

class PermitFileTextTest : public testing::TestWithParam<TextRow> {};

TEST_P(PermitFileTextTest, ArrivesAsAURL) {
  PermitFile permit;
  permit.Write(std::string(kDeclaration) + kDocumentType + "<VantorPermissions version=\"1.0\"><Source>" +
               GetParam().written + "<Extension>exe</Extension></Source><Destination/></VantorPermissions>");
  HRESULT hr = E_UNEXPECTED;
  const CPermissions permissions(0, L"permit.xml", &hr);
  ASSERT_HRESULT(S_OK, hr);
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, permissions.IsManifestURLPermitted(L"https://elsewhere/x"));
  EXPECT_EQ(
      Lines{std::string("ERROR 0x80070005 URL 'https://elsewhere/x' is not permitted.\r\n\tPermitted source URLs:\r\n\t\t") +
            GetParam().read},
      log.Messages());
}

const TextRow kTexts[] = {
    {"Plain", "<URL>http://host/a/</URL>", "http://host/a/"},
    {"Entities", "<URL>http://host/&lt;&#97;&amp;&#x62;&gt;/</URL>", "http://host/<a&b>/"},
    {"CharacterData", "<URL><![CDATA[http://host/a&b<c>/]]></URL>", "http://host/a&b<c>/"},
    {"CharacterDataInText", "<URL>http://<![CDATA[host/]]>a/</URL>", "http://host/a/"},
    {"Comment", "<URL>http://host/<!-- not this -->a/</URL>", "http://host/a/"},
    {"ProcessingInstruction", "<URL>http://host/<?not this?>a/</URL>", "http://host/a/"},
    {"CommentBeside", "<!-- <URL>http://other/</URL> --><URL>http://host/a/</URL>", "http://host/a/"},
    {"BlanksAround", "<URL> \r\n\thttp://host/a/\r\n </URL>", "http://host/a/"},
    {"Utf8", "<URL>http://host/caf\xc3\xa9/</URL>", "http://host/caf\xe9/"},
    {"OutsideOfTheCodePage", "<URL>http://host/\xe4\xb8\x80/</URL>", "http://host/?/"},
    {"Empty", "<URL/>", "file://"},
    {"EmptyWithTwoTags", "<URL></URL>", "file://"},
    {"FormatCharacters", "<URL>http://host/%s%n/</URL>", "http://host/%s%n/"},
    {"UpperCaseScheme", "<URL>HTTP://Host/A/</URL>", "http://Host/A/"},
};

INSTANTIATE_TEST_SUITE_P(Rows, PermitFileTextTest, testing::ValuesIn(kTexts), [](const auto& row) {
  return std::string(row.param.name);
});

}  // namespace
