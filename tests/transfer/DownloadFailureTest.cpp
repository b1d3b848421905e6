#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FileFault.h"
#include "ScriptedInternet.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "transfer/DocumentType.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

constexpr char kSource[] = "http://h/%s.exe";

HRESULT ResultOf(const std::string& code) {
  return static_cast<HRESULT>(std::stoul(code, nullptr, 16));
}

class DownloadFailureTest : public testing::Test {
 protected:
  DownloadFailureTest() : destination(folder.File("copy.exe")) {}

  HRESULT Fetch(DWORD flags = 0, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    return FetchURL(kSource, destination.c_str(), attributes, &kAnyTime, flags, nullptr);
  }

  void ExpectReading(const char* code) {
    EXPECT_EQ(Texts{std::string("ERROR ") + code + " Reading '" + kSource + "' failed."}, log.Messages());
    EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
    EXPECT_EQ("", NamesIn(folder.Path()));
  }

  TemporaryFolder folder;
  std::string destination;
  LogCapture log;
};

TEST_F(DownloadFailureTest, AMissingNameIsAnInvalidArgument) {
  PATCH_IMPORT(noInternet, InternetOpenA, [](auto, const char*, DWORD, const char*, const char*, DWORD) -> HINTERNET {
    ADD_FAILURE() << "nothing is asked for";
    return nullptr;
  });
  const char* const rows[][2] = {{nullptr, "x"}, {"", "x"}, {kSource, nullptr}, {kSource, ""}};
  for (const auto& row : rows)
    EXPECT_HRESULT(E_INVALIDARG, DownloadURL(row[0], row[1], 0, nullptr, 0, "gone"));
  EXPECT_HRESULT(E_INVALIDARG, FetchURL(kSource, nullptr, 0, nullptr, 0, nullptr));
  EXPECT_EQ(Texts{}, log.Messages());
  EXPECT_EQ(Codes(5, E_INVALIDARG), log.ErrorTraces());
  EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
}

TEST_F(DownloadFailureTest, WithoutTheInternetTheErrorIsTraced) {
  PATCH_IMPORT(noInternet, InternetOpenA, FailWith(static_cast<HINTERNET>(nullptr), ERROR_INTERNET_OUT_OF_HANDLES));
  WriteWholeFile(destination, "old");
  EXPECT_HRESULT(ResultOf("0x80072ee1"), Fetch());
  EXPECT_EQ(Texts{}, log.Messages());
  EXPECT_EQ(Codes{ResultOf("0x80072ee1")}, log.ErrorTraces());
  EXPECT_EQ("old", ReadWholeFile(destination));
}

TEST_F(DownloadFailureTest, AnAddressThatCannotBeOpenedIsReportedAndTheSessionClosed) {
  HINTERNET session = nullptr;
  std::vector<HINTERNET> closed;
  PATCH_IMPORT(open, InternetOpenA, [&](auto original, auto... arguments) { return session = original(arguments...); });
  PATCH_IMPORT(noAddress, InternetOpenUrlA, FailWith(static_cast<HINTERNET>(nullptr), ERROR_INTERNET_NAME_NOT_RESOLVED));
  PATCH_IMPORT(close, InternetCloseHandle, [&](auto original, HINTERNET handle) {
    closed.push_back(handle);
    return original(handle);
  });
  WriteWholeFile(destination, "old");
  EXPECT_HRESULT(ResultOf("0x80072ee7"), Fetch());
  EXPECT_EQ(Texts{std::string("ERROR 0x80072ee7 Opening '") + kSource + "' failed."}, log.Messages());
  EXPECT_EQ(std::vector<HINTERNET>{session}, closed);
  EXPECT_EQ("old", ReadWholeFile(destination));
}

TEST_F(DownloadFailureTest, AnAnswerWithoutAStatusIsALostConnection) {
  ScriptedInternet internet({});
  internet.Announce(HTTP_QUERY_STATUS_CODE, "0");
  WriteWholeFile(destination, "old");
  EXPECT_HRESULT(ResultOf("0x80072efe"), Fetch());
  EXPECT_EQ(Texts{std::string("ERROR 0x80072efe Opening '") + kSource + "' failed."}, log.Messages());
  EXPECT_TRUE(internet.IsClosed());
  EXPECT_EQ(0, internet.Reads());
  EXPECT_EQ("old", ReadWholeFile(destination));
}

TEST_F(DownloadFailureTest, AnyStatusIsAnAnswer) {
  ScriptedInternet internet({"abc"});
  internet.Announce(HTTP_QUERY_STATUS_CODE, "500");
  EXPECT_HRESULT(S_OK, Fetch());
  EXPECT_EQ("abc", ReadWholeFile(destination));
}

TEST_F(DownloadFailureTest, ADestinationThatCannotBeCreatedIsReported) {
  destination = folder.File("missing\\copy.exe");
  ScriptedInternet internet({"abc"});
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), Fetch());
  EXPECT_EQ(Texts{"ERROR 0x80070003 Creating '" + destination + "' failed."}, log.Messages());
  EXPECT_TRUE(internet.IsClosed());
  EXPECT_EQ(0, internet.Reads());
}

TEST_F(DownloadFailureTest, WithoutMemoryForTheBufferNothingIsLeft) {
  ScriptedInternet internet({"abc"});
  HRESULT hr;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    hr = DownloadURL(kSource, destination.c_str(), FILE_ATTRIBUTE_READONLY, nullptr, 0, "gone");
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Copy buffer creation failed."}, log.Messages());
  EXPECT_TRUE(internet.IsClosed());
  EXPECT_EQ(0, internet.Reads());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

// Three chunks, and the read that tells their end.
TEST_F(DownloadFailureTest, AFailedReadLeavesNothingBehindWhicheverItIs) {
  for (int call = 1; call <= 4; ++call) {
    SCOPED_TRACE(call);
    LogCapture own;
    ScriptedInternet internet({std::string(4096, 'a'), std::string(4096, 'b'), "c"});
    internet.FailRead(call, ERROR_INTERNET_CONNECTION_RESET);
    EXPECT_HRESULT(ResultOf("0x80072eff"), Fetch(0, FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(Texts{std::string("ERROR 0x80072eff Reading '") + kSource + "' failed."}, own.Messages());
    EXPECT_TRUE(internet.IsClosed());
    EXPECT_EQ("", NamesIn(folder.Path()));
  }
}

TEST_F(DownloadFailureTest, AFailedReadWithoutAReasonIsStillAFailure) {
  ScriptedInternet internet({"a"});
  internet.FailRead(2, ERROR_SUCCESS);
  EXPECT_HRESULT(E_FAIL, Fetch());
  ExpectReading("0x80004005");
}

TEST_F(DownloadFailureTest, AFailedWriteLeavesNothingBehind) {
  for (const FileFault::Kind kind : {FileFault::Kind::Write, FileFault::Kind::ShortWrite}) {
    for (int call = 1; call <= 3; ++call) {
      LogCapture own;
      ScriptedInternet internet({std::string(4096, 'a'), std::string(4096, 'b'), "c"});
      FileFault fault(destination, kind, call, ERROR_WRITE_FAULT);
      EXPECT_HRESULT(ResultOf("0x8007001d"), Fetch(0, FILE_ATTRIBUTE_READONLY));
      EXPECT_EQ(Texts{"ERROR 0x8007001d Writing '" + destination + "' failed."}, own.Messages());
      EXPECT_TRUE(internet.IsClosed());
      EXPECT_EQ(call, internet.Reads());
      EXPECT_EQ("", NamesIn(folder.Path()));
    }
  }
}

TEST_F(DownloadFailureTest, ATimeThatCannotBeSetLeavesNothingBehind) {
  ScriptedInternet internet({"a"});
  FileFault fault(destination, FileFault::Kind::SetTime, 1, ERROR_ACCESS_DENIED);
  EXPECT_HRESULT(E_ACCESSDENIED, Fetch());
  EXPECT_EQ(Texts{"ERROR 0x80070005 Writing '" + destination + "' failed."}, log.Messages());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(DownloadFailureTest, NoTimeIsSetAfterAFailure) {
  ScriptedInternet internet({"a"});
  internet.FailRead(2, ERROR_INTERNET_TIMEOUT);
  FileFault count(destination, FileFault::Kind::SetTime, 0, 0);
  EXPECT_HRESULT(ResultOf("0x80072ee2"), Fetch());
  EXPECT_EQ(0, count.Calls());
}

TEST_F(DownloadFailureTest, ADocumentIsPreparedAndCopiedByteForByte) {
  ScriptedInternet internet({"<?xml?>\n<!DOC", "TYPE V>", "<V>", std::string(4096, 'a'), "</V>"});
  EXPECT_HRESULT(S_OK, Fetch(kTransferXMLDocument | kTransferManifest));
  EXPECT_EQ("<?xml?>" + ReadWholeFile(ProjectFile("tests/transfer/data/manifest.dtd.txt")) + "<V>" + std::string(4096, 'a') +
                "</V>",
            ReadWholeFile(destination));
  EXPECT_TRUE(internet.IsClosed());
  EXPECT_EQ("", log.Text());
}

TEST_F(DownloadFailureTest, ARefusedDocumentLeavesNothingBehind) {
  ScriptedInternet internet({"<?xml?><VantorManifest/>"});
  EXPECT_HRESULT(E_FAIL, Fetch(kTransferXMLDocument | kTransferManifest, FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(Texts{"ERROR 0x80004005 Invalid XML document ('<VantorManifest/>')."}, log.Messages());
  EXPECT_EQ(Codes{S_OK}, log.ErrorTraces());
  EXPECT_TRUE(internet.IsClosed());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

// The head is "<?xml?><!DOCTYPE V>", read byte by byte; the rest follows in chunks. Only the reads of the declaration may
// fail without consequence, as long as a document type follows.
TEST_F(DownloadFailureTest, ADocumentWithAFailedReadIsRefused) {
  for (const int call : {8, 19, 20, 21}) {
    SCOPED_TRACE(call);
    ScriptedInternet internet({"<?xml?><!DOCTYPE V>", "<V/>"});
    internet.FailRead(call, ERROR_INTERNET_CONNECTION_ABORTED);
    EXPECT_HRESULT(ResultOf("0x80072efe"), Fetch(kTransferXMLDocument | kTransferManifest));
    EXPECT_TRUE(internet.IsClosed());
    EXPECT_EQ("", NamesIn(folder.Path()));
  }
  const std::string head = "ERROR 0x80072efe Reading failed.";
  const std::string rest = std::string("ERROR 0x80072efe Reading '") + kSource + "' failed.";
  EXPECT_EQ((Texts{head, head, rest, rest}), log.Messages());
}

}  // namespace
