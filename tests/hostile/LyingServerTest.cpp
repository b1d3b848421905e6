// Servers that break off, and servers that promise what they do not send: whatever they do to a file, they do to a manifest.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <cstring>
#include <thread>

#include "hostile/HostileFixture.h"
#include "support/ImportPatch.h"

namespace {

constexpr char kAborted[] = "0x80072efe";
constexpr char kNoConnection[] = "0x80072efd";
constexpr char kReset[] = "0x80072eff";
constexpr char kSocketReset[] = "0x80072746";

HRESULT ResultOf(const std::string& code) {
  return static_cast<HRESULT>(std::stoul(code, nullptr, 16));
}

// What is told of a manifest that could not be read to its end.
Lines Unread(const std::string& code) {
  return {"ERROR " + code + " Reading '{manifest}' failed.", "ERROR " + code + " Failed to copy '{manifest}' to '{cached}'.",
          RunFailed(code)};
}

// What is told of one that was cut without a notice.
const Lines kCutDocument = {"ERROR 0x80004005 XML Parsing Error in '{cached}'",
                            "ERROR 0x80004005 Failed to read XML document '{cached}'.", RunFailed("0x80004005")};

struct LieRow {
  const char* name;
  Response response;
  const char* verb;  // what fails
  const char* code = kAborted;
};

class BrokenAnswerTest : public HostileTest, public testing::WithParamInterface<LieRow> {
 protected:
  std::string Failure(const std::string& what) const {
    return std::string("ERROR ") + GetParam().code + " " + GetParam().verb + " '" + what + "' failed.";
  }
};

TEST_P(BrokenAnswerTest, LeavesNoFile) {
  server.Answer("/a.txt", GetParam().response);
  EXPECT_HRESULT(S_FALSE, Execute(CopyOf("a.txt") + Copy("b.txt")));
  EXPECT_EQ((Lines{Failure("{server}/a.txt"), std::string("ERROR ") + GetParam().code + " 'Copy' command failed.",
                   kCommandFailed}),
            Told());
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt", "GET /b.txt"}), server.Asked());
}

// A file that stood there is lost once the transfer has created its own.
TEST_P(BrokenAnswerTest, CostsTheOldFileOnlyAfterAnAnswerBegan) {
  server.Answer("/a.txt", GetParam().response);
  WriteWholeFile(destination.File("a.txt"), "old");
  EXPECT_HRESULT(S_FALSE, Execute(CopyOf("a.txt")));
  EXPECT_EQ(GetParam().verb == std::string("Opening") ? std::optional<std::string>("old") : std::nullopt, Written("a.txt"));
}

TEST_P(BrokenAnswerTest, IsNoManifest) {
  const std::string code = GetParam().code;
  EXPECT_HRESULT(ResultOf(code), RunAnswered(GetParam().response));
  EXPECT_EQ((Lines{Failure("{manifest}"), "ERROR " + code + " Failed to copy '{manifest}' to '{cached}'.", RunFailed(code)}),
            Told());
  EXPECT_EQ(Lines{"GET /control-run.xml"}, server.Asked());
}

const std::string kGood = ManifestOf("");

std::string RefusedURL() {
  return "http://localhost:" + std::to_string(WebServer::Port("refused")) + "/a.txt";
}

INSTANTIATE_TEST_SUITE_P(
    , BrokenAnswerTest,
    testing::Values(LieRow{"ClosedBeforeTheAnswer", Response::Raw(), "Opening"},
                    LieRow{"ResetBeforeTheAnswer", Response::Raw().Reset(), "Opening"},
                    LieRow{"BytesThatAreNoAnswer", Response::Raw().Body("\1\2\3\4"), "Opening"},
                    LieRow{"NobodyBehindARedirect", Response().Redirect(RefusedURL()), "Opening", kNoConnection},
                    LieRow{"AByteMissing", Response().Length(kGood.size() + 1).Body(kGood), "Reading"},
                    LieRow{"FiveBillionAnnounced", Response().Length(5000000000ull).Body(kGood), "Reading"},
                    LieRow{"RightInItsLowHalf", Response().Length(0x100000000ull + kGood.size()).Body(kGood), "Reading"},
                    LieRow{"TwoLengthsTheFirstTooLong", Response().Header("Content-Length", "5000").Body(kGood), "Reading"}),
    [](const testing::TestParamInfo<LieRow>& row) { return std::string(row.param.name); });

// The transport may stop at the announced length by itself; what it shows beyond that is a failed read.
class TooLongBodyTest : public HostileTest {
 protected:
  const std::string announced = kGood.substr(0, kGood.size() - 1);
  const Response response = Response().Length(announced.size()).Body(kGood);
};

TEST_F(TooLongBodyTest, IsCutOrLeavesNoFile) {
  server.Answer("/a.txt", response);
  const HRESULT hr = Execute(CopyOf("a.txt"));
  if (hr == S_OK) {
    EXPECT_EQ(announced, Written("a.txt"));
  } else {
    EXPECT_HRESULT(S_FALSE, hr);
    EXPECT_EQ((Lines{"ERROR 0x80072efe Reading '{server}/a.txt' failed.", "ERROR 0x80072efe 'Copy' command failed.",
                     kCommandFailed}),
              Told());
    EXPECT_EQ("", NamesIn(destination.Path()));
  }
}

TEST_F(TooLongBodyTest, IsNoManifest) {
  const HRESULT hr = RunAnswered(response);
  if (hr == E_FAIL) {
    EXPECT_EQ(kCutDocument, Told());
  } else {
    EXPECT_HRESULT(ResultOf(kAborted), hr);
    EXPECT_EQ(Unread(kAborted), Told());
  }
}

// The reset comes while the body is read: the answer stands at its Hold until the module asks for the first bytes of it.
// Which code it gives depends on what the transport makes of it: the body ends early, the transport says that it was reset,
// or it hands on what the socket said.
class ResetTest : public HostileTest {
 protected:
  static Response ResetBehind(const std::string& body) { return Response().Length(100000).Body(body).Hold().Reset(); }

  // A handler: the first read of the body of `path` meets the reset.
  auto ResetAtRead(const std::string& path) {
    return [this, path](auto original, auto... arguments) {
      if (!isReset && server.Asked().back() == "GET " + path) {
        server.AwaitHold(path);
        server.Release(path);
        isReset = true;
      }
      return original(arguments...);
    };
  }

  void TearDown() override {
    EXPECT_TRUE(isReset);
    HostileTest::TearDown();
  }

  // The code that the first message of the log has, which is one of the three.
  std::string CodeTold() const {
    const Lines told = Told();
    const std::string code = told.empty() ? "" : told[0].substr(std::strlen("ERROR "), std::strlen(kAborted));
    EXPECT_TRUE(code == kAborted || code == kReset || code == kSocketReset) << code;
    return code;
  }

 private:
  bool isReset = false;
};

TEST_F(ResetTest, InTheBodyLeavesNoFile) {
  PATCH_IMPORT(reads, InternetReadFile, ResetAtRead("/a.txt"), module.Handle());
  server.Answer("/a.txt", ResetBehind(std::string(50000, 'x')));
  EXPECT_HRESULT(S_FALSE, Execute(CopyOf("a.txt") + Copy("b.txt")));
  const std::string code = CodeTold();
  EXPECT_EQ((Lines{"ERROR " + code + " Reading '{server}/a.txt' failed.", "ERROR " + code + " 'Copy' command failed.",
                   kCommandFailed}),
            Told());
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
}

TEST_F(ResetTest, InTheBodyIsNoManifest) {
  PATCH_IMPORT(reads, InternetReadFile, ResetAtRead(kManifestPath), module.Handle());
  const HRESULT hr = RunAnswered(ResetBehind(kGood));
  const std::string code = CodeTold();
  EXPECT_HRESULT(ResultOf(code), hr);
  EXPECT_EQ(Unread(code), Told());
}

struct OddRow {
  const char* name;
  Response response;
};

class OddAnswerTest : public HostileTest, public testing::WithParamInterface<OddRow> {};

TEST_P(OddAnswerTest, IsTheFile) {
  server.Answer("/a.txt", GetParam().response);
  EXPECT_HRESULT(S_OK, Execute(CopyOf("a.txt")));
  EXPECT_EQ(Lines{}, Told());
  EXPECT_EQ(kGood, Written("a.txt"));
}

TEST_P(OddAnswerTest, IsTheManifest) {
  EXPECT_HRESULT(S_OK, RunAnswered(GetParam().response));
  EXPECT_EQ(Lines{}, Told());
}

std::string ManyHeaders() {
  std::string headers = "first";
  for (int i = 0; i < 8000; ++i)
    headers += "\r\nX-Header-" + std::to_string(i) + ": value";
  return headers;
}

INSTANTIATE_TEST_SUITE_P(
    , OddAnswerTest,
    testing::Values(
        OddRow{"AHeaderOf200KB", Response().Header("X-Long", std::string(200000, 'x')).Body(kGood)},
        OddRow{"HeadersOf200KB", Response().Header("X-Many", ManyHeaders()).Body(kGood)},
        OddRow{"NoLength", Response().NoLength().Body(kGood)},
        OddRow{"ANegativeLength", Response().NoLength().Header("Content-Length", "-5").Body(kGood)},
        OddRow{"ALengthThatIsNoNumber", Response().NoLength().Header("Content-Length", "abc").Body(kGood)},
        OddRow{"TheSameLengthTwice", Response().Header("Content-Length", std::to_string(kGood.size())).Body(kGood)},
        OddRow{"Chunks", Response().Chunk(kGood.substr(0, 9)).Chunk(kGood.substr(9))},
        OddRow{"ChunksWithAWrongLength", Response().Header("Content-Length", "5").Chunk(kGood)},
        OddRow{"Status404", Response().Status("404 Not Found").Body(kGood)},
        OddRow{"Status500", Response().Status("500 Broken").Body(kGood)}),
    [](const testing::TestParamInfo<OddRow>& row) { return std::string(row.param.name); });

// Whether a body in chunks is whole only the system's transport can tell, and not every one does. Nothing is made up, and a
// cut document is refused.
struct CutRow {
  const char* name;
  Response response;
  std::string sent;  // of the body
  Lines head = {};   // what is told about the document's head
};

class CutChunksTest : public HostileTest, public testing::WithParamInterface<CutRow> {};

TEST_P(CutChunksTest, AreNeverMoreThanWasSent) {
  server.Answer("/a.txt", GetParam().response);
  const HRESULT hr = Execute(CopyOf("a.txt"));
  if (hr == S_OK) {
    EXPECT_EQ(GetParam().sent, Written("a.txt"));
  } else {
    EXPECT_HRESULT(S_FALSE, hr);
    EXPECT_EQ("ERROR 0x80072efe 'Copy' command failed.", Told().at(1));
    EXPECT_EQ("", NamesIn(destination.Path()));
  }
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt"}), server.Asked());
}

TEST_P(CutChunksTest, AreNoManifest) {
  const HRESULT hr = RunAnswered(GetParam().response);
  if (hr == E_FAIL) {
    Lines told = GetParam().head;
    told.insert(told.end(), {"ERROR 0x80004005 Failed to copy '{manifest}' to '{cached}'.", RunFailed("0x80004005")});
    EXPECT_EQ(GetParam().head.empty() ? kCutDocument : told, Told());
  } else {
    EXPECT_HRESULT(ResultOf(kAborted), hr);
    EXPECT_EQ(Unread(kAborted), Told());
  }
}

constexpr char kNoXML[] = "ERROR 0x80004005 Not an XML document ('        ').";
constexpr char kNoFile[] = "ERROR 0x80004005 Invalid XML document ('        ').";

Response Chunked(const std::string& body) {
  return Response().NoLength().Header("Transfer-Encoding", "chunked").Body(body);
}

INSTANTIATE_TEST_SUITE_P(
    , CutChunksTest,
    testing::Values(CutRow{"ALengthThatIsNoNumber", Chunked("zz\r\n" + kGood + "\r\n0\r\n\r\n"), "", {kNoXML, kNoFile}},
                    CutRow{"NoLastChunk", Chunked("a\r\n" + kGood.substr(0, 10) + "\r\n"), kGood.substr(0, 10), {kNoFile}},
                    CutRow{"ChunkCutShort", Chunked("ff\r\n" + kGood.substr(0, 40)), kGood.substr(0, 40)},
                    CutRow{"NoChunk", Chunked(""), "", {kNoXML, kNoFile}}),
    [](const testing::TestParamInfo<CutRow>& row) { return std::string(row.param.name); });

struct StallRow {
  const char* name;
  Response response;
  const char* verb;
};

class StalledServerTest : public HostileTest, public testing::WithParamInterface<StallRow> {};

TEST_P(StalledServerTest, ThatIsClosedIsALostConnection) {
  server.Answer("/a.txt", GetParam().response);
  std::thread closing([this] {
    server.AwaitHold("/a.txt");
    server.Release("/a.txt");
  });
  EXPECT_HRESULT(S_FALSE, Execute(CopyOf("a.txt")));
  closing.join();
  EXPECT_EQ((Lines{std::string("ERROR 0x80072efe ") + GetParam().verb + " '{server}/a.txt' failed.",
                   "ERROR 0x80072efe 'Copy' command failed.", kCommandFailed}),
            Told());
  EXPECT_EQ("", NamesIn(destination.Path()));
}

INSTANTIATE_TEST_SUITE_P(, StalledServerTest,
                         testing::Values(StallRow{"BeforeTheAnswer", Response::Raw().Hold(), "Opening"},
                                         StallRow{"BehindTheHead", Response().Length(9).Hold(), "Reading"},
                                         StallRow{"InTheBody", Response().Length(9).Body("half").Hold(), "Reading"}),
                         [](const testing::TestParamInfo<StallRow>& row) { return std::string(row.param.name); });

}  // namespace
