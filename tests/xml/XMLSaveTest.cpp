#include <gtest/gtest.h>

#include "support/FakeXml.h"
#include "support/Files.h"
#include "support/GuardedHeap.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/XmlDocuments.h"
#include "xml/LogExpectations.h"
#include "xml/XMLUtilities.h"

namespace {

class SaveTest : public testing::Test {
 protected:
  HRESULT Save(LONG pretty) { return SaveXMLDocument(&document, path.c_str(), pretty); }

  // The file that a document of this markup gives when it is saved with line ends.
  std::string Pretty(const wchar_t* xml) {
    document.xml = xml;
    EXPECT_HRESULT(S_OK, Save(1));
    return ReadWholeFile(path);
  }

  TemporaryFolder folder;
  const std::string path = folder.File("saved.xml");
  FakeDocument document;
  LogCapture log;
};

TEST_F(SaveTest, MissingArgumentsAreTraced) {
  for (const LONG pretty : {0, 1}) {
    const LogCapture own;
    EXPECT_HRESULT(E_INVALIDARG, SaveXMLDocument(nullptr, path.c_str(), pretty));
    EXPECT_HRESULT(E_INVALIDARG, SaveXMLDocument(&document, nullptr, pretty));
    EXPECT_HRESULT(E_INVALIDARG, SaveXMLDocument(&document, "", pretty));
    EXPECT_EQ(Codes(3, E_INVALIDARG), own.ErrorTraces());
    EXPECT_EQ(Lines(), own.Messages());
  }
  EXPECT_EQ(Lines(), document.calls);
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(SaveTest, TheDocumentSavesItself) {
  EXPECT_HRESULT(S_OK, Save(0));
  EXPECT_EQ(Lines{"save " + path}, document.calls);
  EXPECT_EQ("", log.Text());
}

TEST_F(SaveTest, ASavedDocumentLoadsAgain) {
  const auto original = ParseXml("<r a='1'><b>x &amp; y</b><c/></r>");
  for (const LONG pretty : {0, 1}) {
    DeleteFileA(path.c_str());  // what is loaded is what was saved in this way
    EXPECT_HRESULT(S_OK, SaveXMLDocument(original.Get(), path.c_str(), pretty));
    const auto loaded = NewXmlDocument();
    EXPECT_HRESULT(S_OK, LoadXMLDocument(path.c_str(), loaded.Get(), 1));
    EXPECT_EQ(XmlOf(original.Get()), XmlOf(loaded.Get()));
  }
  EXPECT_EQ("", log.Text());
}

TEST_F(SaveTest, AFailedSaveIsLoggedAndNoFailure) {
  document.Answer("save", E_ACCESSDENIED);
  EXPECT_HRESULT(S_OK, SaveXMLDocument(&document, "C:\\%s%n.xml", 0));
  ExpectOnlyMessages(log, {"ERROR 0x80070005 C:\\%s%n.xml"});
}

TEST_F(SaveTest, WithoutMemoryForTheNameNothingIsSaved) {
  {
    PATCH_IMPORT(noMemory, SysAllocStringLen, FailWith(static_cast<BSTR>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    EXPECT_HRESULT(S_OK, Save(0));
  }
  EXPECT_EQ(Lines(), document.calls);
  ExpectOnlyTrace(log, E_OUTOFMEMORY);
}

TEST_F(SaveTest, LinesEndBetweenElementsThatFollowEachOther) {
  EXPECT_EQ("<a>\r\n<b/>\r\n<c>x</c>\r\n</a>", Pretty(L"<a><b/><c>x</c></a>"));
  EXPECT_EQ("<a>x</a>\r\n", Pretty(L"<a>x</a>\r\n"));
  EXPECT_EQ("<a> <b/>\n</a>", Pretty(L"<a> <b/>\n</a>"));
  EXPECT_EQ("<a>>\r\n<<b/>", Pretty(L"<a>><<b/>"));
  EXPECT_EQ("", log.Text());
}

TEST_F(SaveTest, EveryPairGetsALineEnd) {
  std::wstring xml;
  std::string expected;
  for (int i = 0; i < 20000; ++i) {
    xml += L"<a/>";
    expected += i ? "\r\n<a/>" : "<a/>";
  }
  EXPECT_EQ(expected, Pretty(xml.c_str()));
}

TEST_F(SaveTest, NothingIsWrittenBehindTheText) {
  std::wstring many;
  for (int i = 0; i < 1000; ++i)
    many += L"<a/>";
  for (const wchar_t* const xml : {L"", L"<a/>", L"<a/><b/>", L"<a><b/></a>", L"Zo\u00eb \u4e2d \U0001F600", many.c_str()}) {
    document.xml = xml;
    GuardedHeap heap;
    EXPECT_HRESULT(S_OK, Save(1));
    EXPECT_LE(2, heap.Checked());
  }
}

TEST_F(SaveTest, TextWithoutMarkupIsWrittenAsItIs) {
  EXPECT_EQ("", Pretty(L""));
  EXPECT_EQ(">", Pretty(L">"));
  EXPECT_EQ("<>", Pretty(L"<>"));
  EXPECT_EQ("%s%n", Pretty(L"%s%n"));
}

TEST_F(SaveTest, TheFileIsUtf8WithoutAByteOrderMark) {
  EXPECT_EQ("<a>Zo\xc3\xab \xe4\xb8\xad \xf0\x9f\x98\x80</a>\r\n<b/>", Pretty(L"<a>Zo\u00eb \u4e2d \U0001F600</a><b/>"));
}

TEST_F(SaveTest, ALongerFileIsReplaced) {
  WriteWholeFile(path, std::string(1000, 'x'));
  EXPECT_EQ("<a/>", Pretty(L"<a/>"));
}

TEST_F(SaveTest, TheFileIsOpenedAlone) {
  document.xml = L"<a/>";
  int calls = 0;
  PATCH_IMPORT(creates, CreateFileA,
               [&](auto original, const char* name, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD attributes, HANDLE pattern) {
    ++calls;
    EXPECT_STREQ(path.c_str(), name);
    EXPECT_EQ(GENERIC_WRITE, access);
    EXPECT_EQ(0u, sharing);
    EXPECT_EQ(nullptr, security);
    EXPECT_EQ(DWORD{CREATE_ALWAYS}, disposition);
    EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL}, attributes);
    EXPECT_EQ(nullptr, pattern);
    return original(name, access, sharing, security, disposition, attributes, pattern);
  });
  EXPECT_HRESULT(S_OK, Save(-1));
  EXPECT_EQ(1, calls);
  EXPECT_TRUE(DeleteFileA(path.c_str()));  // it is closed again
}

TEST_F(SaveTest, AFileThatCannotBeMadeIsIgnored) {
  document.xml = L"<a/>";
  const std::string nowhere = folder.File("no\\such\\folder.xml");
  EXPECT_HRESULT(S_OK, SaveXMLDocument(&document, nowhere.c_str(), 1));
  EXPECT_EQ("", log.Text());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(SaveTest, AFileThatCannotBeWrittenIsIgnored) {
  document.xml = L"<a/>";
  {
    PATCH_IMPORT(diskFull, WriteFile, FailWith(FALSE, ERROR_DISK_FULL));
    EXPECT_HRESULT(S_OK, Save(1));
  }
  EXPECT_EQ("", log.Text());
  EXPECT_EQ("", ReadWholeFile(path));
}

TEST_F(SaveTest, MarkupThatCannotBeReadIsTraced) {
  document.Answer("get_xml", E_ACCESSDENIED);
  EXPECT_HRESULT(S_OK, Save(1));
  ExpectOnlyTrace(log, E_ACCESSDENIED);
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(SaveTest, MissingMarkupIsTraced) {
  EXPECT_HRESULT(S_OK, Save(1));
  ExpectOnlyTrace(log, E_POINTER);
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(SaveTest, WithoutMemoryForTheTextNoFileIsMade) {
  document.xml = L"<a/>";
  for (const int call : {1, 2}) {
    const LogCapture own;
    {
      PATCH_IMPORT(noMemory, HeapAlloc, FailCall(call, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
      EXPECT_HRESULT(S_OK, Save(1));
    }
    ExpectOnlyTrace(own, E_OUTOFMEMORY);
    EXPECT_EQ("", NamesIn(folder.Path()));
  }
}

TEST_F(SaveTest, ATextThatCannotBeConvertedMakesNoFile) {
  document.xml = L"<a/>";
  for (const int call : {1, 2}) {
    const LogCapture own;
    {
      PATCH_IMPORT(noConversion, WideCharToMultiByte, FailCall(call, 0, ERROR_NO_UNICODE_TRANSLATION));
      EXPECT_HRESULT(S_OK, Save(1));
    }
    ExpectOnlyTrace(own, E_OUTOFMEMORY);
    EXPECT_EQ("", NamesIn(folder.Path()));
  }
}

}  // namespace
