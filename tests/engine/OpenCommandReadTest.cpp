// How an `Open` element is read.

#include <gtest/gtest.h>

#include "engine/EngineFixture.h"
#include "engine/OpenCommand.h"
#include "support/FakeXml.h"
#include "support/HResult.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

constexpr char kWebPage[] = "http://server/d/a.htm";

TEST(OpenCommandReadTest, NeedsAnElement) {
  HRESULT hr = S_OK;
  const LogCapture log;
  const COpenCommand command(nullptr, &hr);
  EXPECT_HRESULT(E_INVALIDARG, hr);
  EXPECT_EQ((Texts{"ERROR 0x80070057 Missing 'CopyNode' XML node parameter.",
                   "ERROR 0x80070057 Missing 'OpenNode' XML node parameter."}),
            log.Messages());
  EXPECT_EQ("CopyCommand", log.Entries().at(0).file);
  EXPECT_EQ("OpenCommand", log.Entries().at(1).file);
  EXPECT_FALSE(command.IsForBrowser());
}

TEST(OpenCommandReadTest, ThePlaceForTheResultMayBeMissing) {
  const COpenCommand command(ParseElement(OpenElement("browser='true'", kWebPage, "<Temp/>")).Get(), nullptr);
  EXPECT_TRUE(command.IsForBrowser());
  EXPECT_FALSE(COpenCommand(nullptr, nullptr).IsForBrowser());
}

TEST(OpenCommandReadTest, ItsCopyPortionIsReadAsThatOfACopyElement) {
  HRESULT hr = E_UNEXPECTED;
  const LogCapture log;
  const COpenCommand command(
      ParseElement(OpenElement("browser='false'", kWebPage,
                               "<FileName>x.htm</FileName><Temp/><Attributes><Hidden/></Attributes>"
                               "<IfFileExists><Skip/></IfFileExists>"))
          .Get(),
      &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_STREQ(kWebPage, command.GetSource()->GetURL());
  EXPECT_STREQ("x.htm", command.GetFileName());
  EXPECT_EQ(FolderKind::Temp, command.GetDestinationKind());
  EXPECT_EQ(130u, command.GetFileAttributes());
  EXPECT_EQ(IfFileExists::Skip, command.GetPolicy());
  EXPECT_EQ("", log.Text());
}

struct BrowserRow {
  const char* name;
  const char* text;
  bool isForBrowser;
};

class OpenCommandBrowserTest : public testing::TestWithParam<BrowserRow> {};

TEST_P(OpenCommandBrowserTest, IsTrueForOneWordOnly) {
  HRESULT hr = E_UNEXPECTED;
  const std::string attribute = std::string("browser='") + GetParam().text + "'";
  const COpenCommand command(ParseElement(OpenElement(attribute, kWebPage, "<Temp/>")).Get(), &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(GetParam().isForBrowser, command.IsForBrowser());
}

INSTANTIATE_TEST_SUITE_P(
    , OpenCommandBrowserTest,
    testing::Values(BrowserRow{"True", "true", true}, BrowserRow{"Capitals", "TRUE", true},
                    BrowserRow{"MixedCase", "TrUe", true}, BrowserRow{"False", "false", false},
                    BrowserRow{"Yes", "yes", false}, BrowserRow{"One", "1", false}, BrowserRow{"Empty", "", false},
                    BrowserRow{"BlankBefore", " true", false}, BrowserRow{"BlankBehind", "true ", false},
                    BrowserRow{"Longer", "trueish", false}, BrowserRow{"Shorter", "tru", false}),
    [](const auto& row) { return row.param.name; });

TEST(OpenCommandReadTest, AMissingAttributeIsAFailureThatIsTraced) {
  HRESULT hr = S_OK;
  const LogCapture log;
  const COpenCommand command(ParseElement(OpenElement("", kWebPage, "<Temp/>")).Get(), &hr);
  EXPECT_HRESULT(E_FAIL, hr);
  EXPECT_FALSE(command.IsForBrowser());
  EXPECT_EQ(Codes{E_FAIL}, log.ErrorTraces());
  EXPECT_TRUE(log.Messages().empty());
  EXPECT_EQ("OpenCommand", log.Entries().at(0).file);
}

TEST(OpenCommandReadTest, AnAttributeHasTheDefaultOfItsDocumentType) {
  for (const char* value : {"false", "true"}) {
    HRESULT hr = E_UNEXPECTED;
    const std::string type = std::string("<!DOCTYPE Open [<!ATTLIST Open browser CDATA \"") + value + "\">]>";
    const COpenCommand command(ParseElement(type + OpenElement("", kWebPage, "<Temp/>")).Get(), &hr);
    EXPECT_HRESULT(S_OK, hr);
    EXPECT_EQ(std::string(value) == "true", command.IsForBrowser());
  }
}

TEST(OpenCommandReadTest, AFailedCopyPortionIsReportedAndTheAttributeIsNotRead) {
  FakeNode attribute(L"true");
  FakeAttributes attributes;
  attributes.named[L"browser"] = &attribute;
  FakeNode open;
  open.attributes = &attributes;
  HRESULT hr = S_OK;
  const LogCapture log;
  const COpenCommand command(&open, &hr);
  EXPECT_HRESULT(E_POINTER, hr);
  EXPECT_FALSE(command.IsForBrowser());
  EXPECT_EQ(Texts{"ERROR 0x80004003 Creation of 'Copy' portion of 'Open' command failed."}, log.Messages());
}

// An `Open` element that is good but for what a test does to its attribute.
class OpenCommandAttributeTest : public testing::Test {
 protected:
  OpenCommandAttributeTest() {
    attributes.named[L"browser"] = &attribute;
    open.attributes = &attributes;
    open.children = {{L"Source", &source}, {L"Destination/Temp", &temp}};
  }

  // Expects the reading to fail with `code`, which is traced `traces` times.
  void ExpectFailure(HRESULT code, std::size_t traces) {
    HRESULT hr = S_OK;
    const LogCapture log;
    const COpenCommand command(&open, &hr);
    EXPECT_HRESULT(code, hr);
    EXPECT_FALSE(command.IsForBrowser());
    EXPECT_EQ(Codes(traces, code), log.ErrorTraces());
    EXPECT_TRUE(log.Messages().empty());
    EXPECT_STREQ("a.htm", command.GetFileName());
  }

  FakeNode attribute{L"true"};
  FakeAttributes attributes;
  FakeNode source{L"http://server/d/a.htm"};
  FakeNode temp{L""};
  FakeNode open;
};

TEST_F(OpenCommandAttributeTest, IsReadFromTheMap) {
  HRESULT hr = E_UNEXPECTED;
  const COpenCommand command(&open, &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_TRUE(command.IsForBrowser());
}

TEST_F(OpenCommandAttributeTest, CannotBeReadWithoutTheMap) {
  open.Answer("get_attributes", kAnyFailure);
  ExpectFailure(kAnyFailure, 2);
}

TEST_F(OpenCommandAttributeTest, CannotBeReadFromANullMap) {
  open.attributes = nullptr;
  ExpectFailure(E_FAIL, 1);
}

TEST_F(OpenCommandAttributeTest, CannotBeReadWhenTheMapFails) {
  attributes.Answer("getNamedItem", kAnyFailure);
  ExpectFailure(kAnyFailure, 2);
}

TEST_F(OpenCommandAttributeTest, CannotBeReadWhenTheMapHasNone) {
  attributes.named.clear();
  ExpectFailure(E_FAIL, 1);
}

TEST_F(OpenCommandAttributeTest, CannotBeReadWithoutItsText) {
  attribute.Answer("get_text", kAnyFailure);
  ExpectFailure(kAnyFailure, 2);
}

TEST_F(OpenCommandAttributeTest, CannotBeReadFromANullText) {
  attribute.text = nullptr;
  ExpectFailure(E_FAIL, 1);
}

}  // namespace
