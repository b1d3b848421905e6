#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <string>
#include <vector>

#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/InternetCache.h"
#include "support/LogCapture.h"
#include "support/WebServer.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;

class DownloadTest : public testing::Test {
 protected:
  DownloadTest() : destination(folder.File("copy.bin")) {}

  HRESULT Fetch(const std::string& url, const char* notFoundText = nullptr, DWORD attributes = FILE_ATTRIBUTE_NORMAL,
                DWORD flags = 0) {
    return FetchURL(url.c_str(), destination.c_str(), attributes, &kAnyTime, flags, notFoundText);
  }

  HRESULT FetchPath(const Response& response) {
    server.Answer("/a.bin", response);
    return Fetch(server.Url("/a.bin"));
  }

  void ExpectFailed(const char* code, const char* what, const std::string& url) {
    EXPECT_EQ(Texts{std::string("ERROR ") + code + " " + what + " '" + url + "' failed."}, log.Messages());
    EXPECT_EQ("", NamesIn(folder.Path()));
  }

  WebServer server;
  TemporaryFolder folder;
  std::string destination;
  LogCapture log;
};

class DownloadSizeTest : public DownloadTest, public testing::WithParamInterface<std::size_t> {
 protected:
  void ExpectBody(const Response& response) {
    EXPECT_HRESULT(S_OK, FetchPath(response));
    EXPECT_TRUE(PatternOf(GetParam()) == ReadWholeFile(destination));
    EXPECT_EQ("", log.Text());
  }
};

TEST_P(DownloadSizeTest, ArrivesByteForByte) {
  ExpectBody(Response().Body(PatternOf(GetParam())));
}

TEST_P(DownloadSizeTest, ArrivesWithoutALength) {
  ExpectBody(Response().NoLength().Body(PatternOf(GetParam())));
}

TEST_P(DownloadSizeTest, ArrivesInChunks) {
  const std::string content = PatternOf(GetParam());
  Response response;
  for (std::size_t start = 0; start < content.size(); start += 1500)
    response.Chunk(content.substr(start, 1500));
  ExpectBody(response);
}

INSTANTIATE_TEST_SUITE_P(, DownloadSizeTest, testing::Values(0, 1, 4095, 4096, 4097, 100000),
                         testing::PrintToStringParamName());

TEST_F(DownloadTest, TheServerIsAskedAsNorvik) {
  EXPECT_HRESULT(S_OK, FetchPath(Response().Body("x")));
  const std::vector<Request> requests = server.Requests();
  ASSERT_EQ(1u, requests.size());
  EXPECT_EQ("GET", requests[0].method);
  EXPECT_EQ("/a.bin", requests[0].path);
  EXPECT_EQ("Norvik", requests[0].Header("User-Agent"));
  EXPECT_EQ("", requests[0].Header("If-Modified-Since"));
  EXPECT_EQ("", requests[0].Header("If-None-Match"));
}

TEST_F(DownloadTest, AQueryIsAskedForAsItIs) {
  server.Answer("/f.cgi?name=a.b&c=%20d", Response().Body("answer"));
  EXPECT_HRESULT(S_OK, Fetch(server.Url("/f.cgi?name=a.b&c=%20d")));
  EXPECT_EQ("answer", ReadWholeFile(destination));
}

TEST_F(DownloadTest, EveryTransferAsksTheServer) {
  EXPECT_HRESULT(S_OK, FetchPath(Response().Header("Cache-Control", "max-age=3600").Header("ETag", "\"1\"").Body("one")));
  EXPECT_EQ("one", ReadWholeFile(destination));
  EXPECT_HRESULT(S_OK, FetchPath(Response().Header("Cache-Control", "max-age=3600").Header("ETag", "\"2\"").Body("two")));
  EXPECT_EQ("two", ReadWholeFile(destination));
  EXPECT_EQ((Texts{"GET /a.bin", "GET /a.bin"}), server.Asked());
}

TEST_F(DownloadTest, NothingIsLeftInTheInternetCache) {
  EXPECT_HRESULT(S_OK, FetchPath(Response().Header("Cache-Control", "max-age=3600").Body("x")));
  EXPECT_EQ("", CachedFile(server.Url("/a.bin")));
}

TEST_F(DownloadTest, TheSchemesCaseDoesNotCount) {
  server.Answer("/a.bin", Response().Body("x"));
  EXPECT_HRESULT(S_OK, Fetch("HTTP" + server.Url("/a.bin").substr(4)));
  EXPECT_EQ("x", ReadWholeFile(destination));
}

// One attribute at a time: for a user who is not root, Wine keeps only one of the two on a file.
TEST_F(DownloadTest, AttributesAndTimeAreSet) {
  server.Answer("/a.bin", Response().Body("x"));
  EXPECT_HRESULT(S_OK, Fetch(server.Url("/a.bin"), nullptr, FILE_ATTRIBUTE_HIDDEN));
  EXPECT_EQ(DWORD{FILE_ATTRIBUTE_HIDDEN}, AttributesOf(destination) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
  ASSERT_TRUE(DeleteFileA(destination.c_str()));
  EXPECT_HRESULT(S_OK, Fetch(server.Url("/a.bin"), nullptr, FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(DWORD{FILE_ATTRIBUTE_READONLY}, AttributesOf(destination) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
  const FILETIME written = GetFileWriteTimeOf(destination);
  EXPECT_EQ(0, CompareFileTime(&kAnyTime, &written));
}

TEST_F(DownloadTest, AnErrorPageIsStoredLikeAnyOther) {
  for (const char* const status : {"404 Not Found", "403 Forbidden", "500 Broken"}) {
    EXPECT_HRESULT(S_OK, FetchPath(Response().Status(status).Body(std::string("page ") + status)));
    EXPECT_EQ(std::string("page ") + status, ReadWholeFile(destination));
  }
  EXPECT_EQ("", log.Text());
}

TEST_F(DownloadTest, AnErrorPageIsFoundByItsText) {
  for (const char* const status : {"200 OK", "404 Not Found"}) {
    LogCapture own;
    const std::string url = server.Url("/a.bin");
    server.Answer("/a.bin", Response().Status(status).Body(std::string(5000, 'a')).Body("<h1>No such file</h1>"));
    EXPECT_HRESULT(kNotFoundResult, Fetch(url, "<h1>No such file", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ("ERROR 0x80070002 Source URL '" + url + "' not found.", own.Messages().back());
    EXPECT_EQ("", NamesIn(folder.Path()));
  }
}

// The text stands across the byte 4096, wherever the connection cuts the answer.
TEST_F(DownloadTest, TheTextIsFoundAcrossTheBorderOfTwoReads) {
  const std::string text = "<h1>No such file</h1>";
  for (const std::size_t bytes : {1, 10, 20}) {
    const std::string body = std::string(4096 - bytes, 'a') + text + std::string(5000, 'b');
    server.Answer("/a.bin", Response().Body(body));
    EXPECT_HRESULT(kNotFoundResult, Fetch(server.Url("/a.bin"), text.c_str()));
    EXPECT_EQ("", NamesIn(folder.Path()));
  }
}

TEST_F(DownloadTest, AnAnswerShorterThanTheTextIsStored) {
  server.Answer("/a.bin", Response().Body("short"));
  EXPECT_HRESULT(S_OK, Fetch(server.Url("/a.bin"), "<h1>No such file</h1>"));
  EXPECT_EQ("short", ReadWholeFile(destination));
  EXPECT_EQ(Texts{"INFO Read in too few bytes to check for 'not found'."}, log.Messages());
}

TEST_F(DownloadTest, ARedirectIsFollowed) {
  server.Answer("/b.bin", Response().Body("there"));
  EXPECT_HRESULT(S_OK, FetchPath(Response().Redirect("/b.bin")));
  EXPECT_EQ("there", ReadWholeFile(destination));
  EXPECT_EQ((Texts{"GET /a.bin", "GET /b.bin"}), server.Asked());
}

TEST_F(DownloadTest, AManifestIsPreparedOnTheWay) {
  const std::string rest = "\r\n<VantorManifest version=\"1\">" + std::string(5000, ' ') + "</VantorManifest>";
  server.Answer("/m.xml", Response().Body("<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"" +
                                          server.Url("/m.dtd") + "\">" + rest));
  EXPECT_HRESULT(
      S_OK, Fetch(server.Url("/m.xml"), nullptr, FILE_ATTRIBUTE_NORMAL, kTransferXMLDocument | kTransferManifest));
  EXPECT_EQ("<?xml version=\"1.0\"?>" + ReadWholeFile(ProjectFile("tests/transfer/data/manifest.dtd.txt")) + rest,
            ReadWholeFile(destination));
  EXPECT_EQ(Texts{"GET /m.xml"}, server.Asked());
}

TEST_F(DownloadTest, APageThatIsNoDocumentIsRefused) {
  server.Answer("/m.xml", Response().Status("404 Not Found").Body("<html><body>No such file</body></html>"));
  const DWORD flags = kTransferXMLDocument | kTransferManifest;
  EXPECT_HRESULT(E_FAIL, Fetch(server.Url("/m.xml"), nullptr, FILE_ATTRIBUTE_NORMAL, flags));
  EXPECT_EQ(
      (Texts{"ERROR 0x80004005 Not an XML document ('  <html>').", "ERROR 0x80004005 Invalid XML document ('  <body>')."}),
      log.Messages());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(DownloadTest, APortWhereNobodyListensIsReported) {
  const std::string url = server.RefusedUrl("/a.bin");
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072EFD), Fetch(url));
  ExpectFailed("0x80072efd", "Opening", url);
}

// A name with an empty part is refused before anybody is asked for it.
TEST_F(DownloadTest, AHostThatIsNoneIsReported) {
  const std::string url = "http://no..body.test/a.bin";
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072EE7), Fetch(url));
  ExpectFailed("0x80072ee7", "Opening", url);
}

// Without an announced length, WinINet under Wine takes the end of a connection for the end of the data, and so does the
// transfer: what arrived is the file.
struct EarlyEndRow {
  const char* name;
  Response response;
  std::string content;
};

class EarlyEndInWineTest : public DownloadTest, public testing::WithParamInterface<EarlyEndRow> {};

TEST_P(EarlyEndInWineTest, EndsTheData) {
  EXPECT_HRESULT(S_OK, FetchPath(GetParam().response));
  EXPECT_TRUE(GetParam().content == ReadWholeFile(destination));
  EXPECT_EQ("", log.Text());
}

INSTANTIATE_TEST_SUITE_P(
    , EarlyEndInWineTest,
    testing::Values(
        EarlyEndRow{"InTheHead", Response::Raw().Body("HTTP/1.1 200 OK\r\nContent-Le"), ""},
        EarlyEndRow{"NegativeLength", Response().NoLength().Header("Content-Length", "-5").Body("abc"), "abc"},
        EarlyEndRow{"MalformedChunk",
                    Response().NoLength().Header("Transfer-Encoding", "chunked").Body("3\r\nabc\r\nzz\r\n"), "abc"},
        EarlyEndRow{"InAChunk", Response().NoLength().Header("Transfer-Encoding", "chunked").Body("30\r\nabc"), "abc"}),
    [](const testing::TestParamInfo<EarlyEndRow>& row) { return std::string(row.param.name); });

struct NoAnswerRow {
  const char* name;
  Response response;
};

class NoAnswerTest : public DownloadTest, public testing::WithParamInterface<NoAnswerRow> {};

TEST_P(NoAnswerTest, IsALostConnection) {
  WriteWholeFile(destination, "old");
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INTERNET_CONNECTION_ABORTED), FetchPath(GetParam().response));
  EXPECT_EQ(Texts{"ERROR 0x80072efe Opening '" + server.Url("/a.bin") + "' failed."}, log.Messages());
  EXPECT_EQ("old", ReadWholeFile(destination));
}

INSTANTIATE_TEST_SUITE_P(, NoAnswerTest,
                         testing::Values(NoAnswerRow{"Closed", Response::Raw()},
                                         NoAnswerRow{"NoHTTP", Response::Raw().Body("no HTTP at all")}),
                         [](const testing::TestParamInfo<NoAnswerRow>& row) { return std::string(row.param.name); });

struct ShortBodyRow {
  const char* name;
  Response response;
};

class ShortBodyTest : public DownloadTest, public testing::WithParamInterface<ShortBodyRow> {};

TEST_P(ShortBodyTest, IsAFailedRead) {
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INTERNET_CONNECTION_ABORTED), FetchPath(GetParam().response));
  ExpectFailed("0x80072efe", "Reading", server.Url("/a.bin"));
}

INSTANTIATE_TEST_SUITE_P(
    , ShortBodyTest,
    testing::Values(ShortBodyRow{"NothingBehindTheHead", Response().Length(100000)},
                    ShortBodyRow{"HalfABody", Response().Length(100000).Body(PatternOf(50000))},
                    ShortBodyRow{"OneByteShort", Response().Length(8193).Body(PatternOf(8192))},
                    ShortBodyRow{"LengthBeyondAllDisks", Response().Length(99999999999999ull).Body("abc")}),
    [](const testing::TestParamInfo<ShortBodyRow>& row) { return std::string(row.param.name); });

TEST_F(DownloadTest, ADocumentThatIsCutInItsHeadIsAFailedRead) {
  server.Answer("/m.xml", Response().Length(1000).Body("<?xml?><!DOC"));
  const DWORD flags = kTransferXMLDocument | kTransferManifest;
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INTERNET_CONNECTION_ABORTED),
                 Fetch(server.Url("/m.xml"), nullptr, FILE_ATTRIBUTE_NORMAL, flags));
  EXPECT_EQ(Texts{"ERROR 0x80072efe Reading failed."}, log.Messages());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(DownloadTest, ADocumentThatEndsInItsHeadIsRefused) {
  server.Answer("/m.xml", Response().Body("<?xml?><!DOC"));
  const DWORD flags = kTransferXMLDocument | kTransferManifest;
  EXPECT_HRESULT(E_FAIL, Fetch(server.Url("/m.xml"), nullptr, FILE_ATTRIBUTE_NORMAL, flags));
  EXPECT_EQ(Texts{"ERROR 0x80004005 Invalid XML document ('   <!DOC')."}, log.Messages());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(DownloadTest, AFailedTransferLeavesTheHandlesClosed) {
  int open = 0;
  PATCH_IMPORT(session, InternetOpenA, [&](auto original, auto... arguments) {
    const HINTERNET handle = original(arguments...);
    open += handle != nullptr;
    return handle;
  });
  PATCH_IMPORT(connection, InternetOpenUrlA, [&](auto original, auto... arguments) {
    const HINTERNET handle = original(arguments...);
    open += handle != nullptr;
    return handle;
  });
  PATCH_IMPORT(close, InternetCloseHandle, [&](auto original, HINTERNET handle) {
    --open;
    return original(handle);
  });
  EXPECT_HRESULT(S_OK, FetchPath(Response().Body("x")));
  EXPECT_EQ(0, open);
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INTERNET_CANNOT_CONNECT), Fetch(server.RefusedUrl("/a.bin")));
  EXPECT_EQ(0, open);
  EXPECT_HRESULT(kNotFoundResult, Fetch(server.Url("/nothing"), "not found"));
  EXPECT_EQ(0, open);
}

TEST_F(DownloadTest, ACookieComesFromTheServerToo) {
  const std::string name = server.Url("/a.bin");
  server.Answer("/a.bin", Response().Body("norvik=served"));
  EXPECT_HRESULT(S_OK, FetchURL(name.c_str(), name.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, kTransferCookie, nullptr));
  char data[256] = "";
  DWORD size = sizeof(data);
  EXPECT_TRUE(InternetGetCookieA(name.c_str(), nullptr, data, &size));
  EXPECT_STREQ("norvik=served", data);
  EXPECT_HRESULT(S_OK, Fetch(name));
  EXPECT_EQ("norvik=served", server.Requests().back().Header("Cookie"));
}

}  // namespace
