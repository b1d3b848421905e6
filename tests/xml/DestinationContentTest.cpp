#include "xml/DestinationContent.h"

#include <gtest/gtest.h>

#include <string>

#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/XmlDocuments.h"

namespace {

struct ContentRow {
  const char* name;
  const char* content;
  HRESULT result;
  const char* forbidden = nullptr;  // the child that may not stand where it stands
};

HRESULT Check(IXMLDOMDocument2* document) {
  ForbiddenDestination forbidden;
  return CheckDestinations(document, forbidden);
}

std::string Shown(const char* text) {
  return text ? text : "(none)";
}

std::string Shown(const BString& text) {
  return Shown(NarrowText(text.Get()).get());
}

class ManifestDestinationTest : public testing::TestWithParam<ContentRow> {};

TEST_P(ManifestDestinationTest, IsOneFolderWithItsOptionsOrTheCache) {
  const std::string destination = std::string("<Destination>") + GetParam().content + "</Destination>";
  const std::string valid = "<Copy><Destination><Temp/></Destination></Copy>";
  const std::string document = "<VantorManifest>" + valid + "<Copy>" + destination + "</Copy>" + valid + "</VantorManifest>";
  ForbiddenDestination forbidden;
  EXPECT_HRESULT(GetParam().result, CheckDestinations(ParseXml(document).Get(), forbidden));
  if (GetParam().result == S_FALSE) {
    EXPECT_EQ(1, forbidden.index);
    EXPECT_EQ(Shown(GetParam().forbidden), Shown(forbidden.content));
  }
}

INSTANTIATE_TEST_SUITE_P(
    , ManifestDestinationTest,
    testing::Values(
        ContentRow{"Cache", "<InternetCache/>", S_OK}, ContentRow{"Folder", "<Path>C:\\x</Path>", S_OK},
        ContentRow{"FileNameAndFolder", "<FileName/><Temp/>", S_OK},
        ContentRow{"FolderAndAttributes", "<VantorUser/><Attributes/>", S_OK},
        ContentRow{"FolderAndPolicy", "<Personal/><IfFileExists/>", S_OK},
        ContentRow{"Everything", "<FileName/><Documents/><Attributes/><IfFileExists/>", S_OK},
        ContentRow{"LocalVantorData", "<LocalVantorData/>", S_OK},
        ContentRow{"LocalApplicationData", "<LocalApplicationData/>", S_OK},
        ContentRow{"CommonVantorData", "<CommonVantorData/>", S_OK},
        ContentRow{"CommonApplicationData", "<CommonApplicationData/>", S_OK},
        ContentRow{"VantorData", "<VantorData/>", S_OK}, ContentRow{"ApplicationData", "<ApplicationData/>", S_OK},
        ContentRow{"CommentsAndInstructions", "<!-- x --><?y z?>\r\n\t <Temp/> <!-- x -->", S_OK},
        ContentRow{"Nothing", "", S_FALSE}, ContentRow{"WhiteSpace", " \r\n", S_FALSE},
        ContentRow{"CommentAlone", "<!-- x -->", S_FALSE}, ContentRow{"FileNameAlone", "<FileName/>", S_FALSE},
        ContentRow{"AttributesAlone", "<Attributes/>", S_FALSE, "Attributes"},
        ContentRow{"PolicyAlone", "<IfFileExists/>", S_FALSE, "IfFileExists"},
        ContentRow{"TwoFolders", "<Path/><Temp/>", S_FALSE, "Temp"},
        ContentRow{"TheSameFolderTwice", "<Path/><Path/>", S_FALSE, "Path"},
        ContentRow{"TwoFileNames", "<FileName/><FileName/><Temp/>", S_FALSE, "FileName"},
        ContentRow{"TwoCaches", "<InternetCache/><InternetCache/>", S_FALSE, "InternetCache"},
        ContentRow{"TwoPolicies", "<Temp/><IfFileExists/><IfFileExists/>", S_FALSE, "IfFileExists"},
        ContentRow{"CacheAndFolder", "<InternetCache/><Temp/>", S_FALSE, "Temp"},
        ContentRow{"FolderAndCache", "<Temp/><InternetCache/>", S_FALSE, "InternetCache"},
        ContentRow{"FileNameAndCache", "<FileName/><InternetCache/>", S_FALSE, "InternetCache"},
        ContentRow{"CacheAndAttributes", "<InternetCache/><Attributes/>", S_FALSE, "Attributes"},
        ContentRow{"FileNameBehindTheFolder", "<Temp/><FileName/>", S_FALSE, "FileName"},
        ContentRow{"AttributesBeforeTheFolder", "<Attributes/><Temp/>", S_FALSE, "Attributes"},
        ContentRow{"PolicyBeforeTheAttributes", "<Temp/><IfFileExists/><Attributes/>", S_FALSE, "Attributes"},
        ContentRow{"FileNameAndAttributes", "<FileName/><Attributes/>", S_FALSE, "Attributes"},
        ContentRow{"AnotherElement", "<Cookie/>", S_FALSE, "Cookie"},
        ContentRow{"AnotherElementBehind", "<Temp/><Cookie/>", S_FALSE, "Cookie"},
        ContentRow{"AnotherElementBefore", "<Source/><Temp/>", S_FALSE, "Source"},
        ContentRow{"OtherCase", "<temp/>", S_FALSE, "temp"}, ContentRow{"Text", "text", S_FALSE, "#text"},
        ContentRow{"TextBehindTheFolder", "<Temp/>text", S_FALSE, "#text"},
        ContentRow{"CharacterData", "<Temp/><![CDATA[ ]]>", S_FALSE, "#cdata-section"}),
    [](const auto& row) { return row.param.name; });

class PermitDestinationTest : public testing::TestWithParam<ContentRow> {};

TEST_P(PermitDestinationTest, IsAnyNumberOfFolders) {
  const std::string document =
      std::string("<VantorPermissions><Destination>") + GetParam().content + "</Destination></VantorPermissions>";
  ForbiddenDestination forbidden;
  EXPECT_HRESULT(GetParam().result, CheckDestinations(ParseXml(document).Get(), forbidden));
  if (GetParam().result == S_FALSE) {
    EXPECT_EQ(Shown(GetParam().forbidden), Shown(forbidden.content));
  }
}

INSTANTIATE_TEST_SUITE_P(
    , PermitDestinationTest,
    testing::Values(
        ContentRow{"Nothing", "", S_OK}, ContentRow{"Path", "<Path>C:\\x</Path>", S_OK},
        ContentRow{"Cache", "<InternetCache/>", S_OK},
        ContentRow{"AnyOrder", "<Temp/><Path/><InternetCache/><Path/><VantorUser/><InternetCache/><!-- x -->", S_OK},
        ContentRow{"Text", "text", S_FALSE, "#text"}, ContentRow{"TextBehind", "<Path/>text", S_FALSE, "#text"},
        ContentRow{"URL", "<URL>http://h/</URL>", S_FALSE, "URL"},
        ContentRow{"FileName", "<FileName/>", S_FALSE, "FileName"},
        ContentRow{"AnotherElementBefore", "<Cookie/><Path/>", S_FALSE, "Cookie"},
        ContentRow{"AnotherElementBehind", "<Path/><Cookie/>", S_FALSE, "Cookie"}),
    [](const auto& row) { return row.param.name; });

TEST(DestinationContentTest, OtherDocumentsAreNotChecked) {
  EXPECT_HRESULT(S_OK, Check(ParseXml("<a><Destination>text</Destination></a>").Get()));
  EXPECT_HRESULT(S_OK, Check(NewXmlDocument().Get()));
}

TEST(DestinationContentTest, EveryDestinationIsChecked) {
  const std::string good = "<Destination><Temp/></Destination>";
  const std::string bad = "<Destination/>";
  EXPECT_HRESULT(S_FALSE, Check(ParseXml("<VantorManifest>" + bad + good + good + "</VantorManifest>").Get()));
  EXPECT_HRESULT(S_FALSE, Check(ParseXml("<VantorManifest>" + good + good + bad + "</VantorManifest>").Get()));
  EXPECT_HRESULT(S_OK, Check(ParseXml("<VantorManifest>" + good + good + "</VantorManifest>").Get()));
}

TEST(DestinationContentTest, TheFirstForbiddenOneIsTold) {
  const std::string document =
      "<VantorManifest><Destination><Temp/></Destination><Destination><Temp/><Path/></Destination><Destination><Cookie/>"
      "</Destination></VantorManifest>";
  ForbiddenDestination forbidden;
  EXPECT_HRESULT(S_FALSE, CheckDestinations(ParseXml(document).Get(), forbidden));
  EXPECT_EQ(1, forbidden.index);
  EXPECT_EQ("Path", Shown(forbidden.content));
}

// A manifest whose parser fails at one place.
class DestinationFailureTest : public testing::Test {
 protected:
  DestinationFailureTest() {
    root.name = L"VantorManifest";
    list.items = {&destination};
    document.documentElement = &root;
    document.elements[L"Destination"] = &list;
  }

  FakeNode root;
  FakeNode destination;
  FakeNodeList list;
  FakeDocument document;
};

TEST_F(DestinationFailureTest, OfTheRootIsReturned) {
  document.Answer("get_documentElement", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(DestinationFailureTest, OfTheRootsNameIsReturned) {
  root.Answer("get_nodeName", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
  FakeNode nameless;
  document.documentElement = &nameless;
  EXPECT_HRESULT(E_FAIL, Check(&document));
}

TEST_F(DestinationFailureTest, OfTheSearchIsReturned) {
  document.Answer("getElementsByTagName", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(DestinationFailureTest, OfASearchWithoutAListIsReturned) {
  document.elements.clear();
  EXPECT_HRESULT(E_FAIL, Check(&document));
}

TEST_F(DestinationFailureTest, OfTheListIsReturned) {
  list.Answer("get_length", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(DestinationFailureTest, OfAnItemIsReturned) {
  list.Answer("get_item", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(DestinationFailureTest, OfAMissingItemIsReturned) {
  list.items = {nullptr};
  EXPECT_HRESULT(E_FAIL, Check(&document));
}

TEST_F(DestinationFailureTest, OfADestinationsContentIsReturned) {
  destination.Answer("get_firstChild", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

// Two parts that are as they may be, of which the parser fails to tell something.
class PartFailureTest : public DestinationFailureTest {
 protected:
  PartFailureTest() {
    fileName.name = L"FileName";
    folder.name = L"Temp";
    fileName.nextSibling = &folder;
    destination.firstChild = &fileName;
  }

  FakeNode folder;
  FakeNode fileName;
};

TEST_F(PartFailureTest, WithoutAFailureThePartsAreRight) {
  EXPECT_HRESULT(S_OK, Check(&document));
}

TEST_F(PartFailureTest, OfAPartsKindIsReturned) {
  folder.Answer("get_nodeType", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(PartFailureTest, OfAPartsNameIsReturned) {
  fileName.Answer("get_nodeName", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(PartFailureTest, OfAMissingNameIsReturned) {
  folder.name = nullptr;
  EXPECT_HRESULT(E_FAIL, Check(&document));
}

TEST_F(PartFailureTest, OfAPartsTextIsReturned) {
  folder.type = NODE_TEXT;
  folder.Answer("get_text", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(PartFailureTest, OfTheNameOfARefusedPartIsReturned) {
  folder.type = NODE_TEXT;
  folder.text = L"text";
  EXPECT_HRESULT(S_FALSE, Check(&document));
  folder.Answer("get_nodeName", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(PartFailureTest, OfTheStepToTheNextPartIsReturned) {
  fileName.Answer("get_nextSibling", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
  fileName.nextSibling = nullptr;
  destination.firstChild = &folder;  // which alone is all that a destination needs
  folder.Answer("get_nextSibling", kAnyFailure);
  EXPECT_HRESULT(kAnyFailure, Check(&document));
}

TEST_F(PartFailureTest, ATextThatIsMissingIsNone) {
  fileName.type = NODE_TEXT;
  EXPECT_HRESULT(S_OK, Check(&document));
}

TEST_F(PartFailureTest, OneListIsWalkedToItsEndAndNoFurther) {
  list.claimedLength = 2;
  EXPECT_HRESULT(E_FAIL, Check(&document));
}

TEST_F(DestinationFailureTest, OfMemoryIsReturned) {
  PATCH_IMPORT(strings, SysAllocString, FailWith(BSTR{nullptr}, ERROR_OUTOFMEMORY));
  EXPECT_HRESULT(E_OUTOFMEMORY, Check(&document));
}

}  // namespace
