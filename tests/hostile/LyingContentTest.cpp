// What servers send: sizes at the borders of the transfer's chunks and beyond 32 bits, redirects, error pages, and what all
// of this does to a file that stands there.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "hostile/HostileFixture.h"
#include "support/ImportPatch.h"
#include "support/Turns.h"

namespace {

// A text of which no two places look alike for a long time.
std::string Pattern(std::size_t bytes) {
  std::string text;
  for (unsigned value = 1; text.size() < bytes; value = value * 1103515245 + 12345)
    text += static_cast<char>(value >> 16);
  return text;
}

class BodySizeTest : public HostileTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(BodySizeTest, IsCopiedByteForByte) {
  const std::string body = Pattern(GetParam());
  server.Answer("/a.txt", Response().Body(body));
  server.Answer("/b.txt", body.empty() ? Response().Status("204 No Content").NoLength() : Response().Chunk(body));
  EXPECT_HRESULT(S_OK, Execute(CopyOf("a.txt") + CopyOf("b.txt")));
  EXPECT_TRUE(body == Written("a.txt"));
  EXPECT_TRUE(body == Written("b.txt"));
}

INSTANTIATE_TEST_SUITE_P(, BodySizeTest, testing::Values(0, 1, 4095, 4096, 4097), testing::PrintToStringParamName());

// Compares what is written to one file with a repeated pattern instead of storing it: Wine's file system would take minutes
// for it.
class CheckedFile {
 public:
  CheckedFile(const std::string& path, const std::string& pattern, HMODULE module)
      : name(path),
        period(pattern.size()),
        repeated(pattern + pattern),
        open(
            "CreateFileA",
            [this](auto original, const char* file, auto... rest) {
    const HANDLE opened = original(file, rest...);
    if (name == file)
      handle = opened;
    return opened;
            },
            module),
  write(
      "WriteFile",
      [this](auto original, HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED* overlapped) {
    if (file != handle)
      return original(file, bytes, count, written, overlapped);
    Check(bytes, count);
    *written = count;
    return TRUE;
      },
      module) {}

  ULONGLONG Bytes() const { return bytesWritten; }
  ULONGLONG WrongWrites() const { return wrongWrites; }

 private:
  void Check(const void* bytes, DWORD count) {
    const std::size_t offset = static_cast<std::size_t>(bytesWritten % period);
    if (offset + count > repeated.size() || std::memcmp(repeated.data() + offset, bytes, count) != 0)
      ++wrongWrites;
    bytesWritten += count;
  }

  const std::string name;
  const std::size_t period;
  const std::string repeated;
  HANDLE handle = nullptr;
  ULONGLONG bytesWritten = 0;
  ULONGLONG wrongWrites = 0;
  ImportedFunction<struct CheckedOpen, decltype(&::CreateFileA)> open;
  ImportedFunction<struct CheckedWrite, decltype(&::WriteFile)> write;
};

// Asks the system for many bytes at once and hands them on as the module asks for them: under Wine each call costs as much
// as the bytes of many.
class ReadAhead {
 public:
  explicit ReadAhead(HMODULE module)
      : read(
            "InternetReadFile",
            [this](auto original, HINTERNET file, void* buffer, DWORD size, DWORD* count) -> BOOL {
              *count = 0;
              if (position == available) {
                position = available = 0;
                if (!original(file, bytes.data(), static_cast<DWORD>(bytes.size()), &available))
                  return FALSE;
              }
              *count = std::min(size, available - position);
              std::memcpy(buffer, bytes.data() + position, *count);
              position += *count;
              return TRUE;
            },
            module) {}

 private:
  std::vector<char> bytes = std::vector<char>(1 << 20);
  DWORD position = 0;
  DWORD available = 0;
  ImportedFunction<struct AheadRead, decltype(&::InternetReadFile)> read;
};

using LyingContentTest = HostileTest;

TEST_F(LyingContentTest, MoreThanFourGigabytesAreCopiedByteForByte) {
  const ULONGLONG bytes = (ULONGLONG{1} << WholeInOneWidth(32, 28)) + 4097;
  const std::string pattern = Pattern(65521);
  server.Answer("/big.txt", Response().Repeat(pattern, bytes));
  const CheckedFile file(destination.File("big.txt"), pattern, module.Handle());
  const ReadAhead ahead(module.Handle());
  EXPECT_HRESULT(S_OK, Execute(CopyOf("big.txt")));
  EXPECT_EQ(bytes, file.Bytes());
  EXPECT_EQ(0u, file.WrongWrites());
}

TEST_F(LyingContentTest, ARedirectToAnotherHostIsFollowed) {
  const std::string port = std::to_string(WebServer::Port("http"));
  server.Answer("/a.txt", Response().Redirect("http://127.0.0.1:" + port + "/b.txt").Body("moved"));
  server.Answer("/b.txt", Response().Body("found"));
  EXPECT_HRESULT(S_OK, Execute(CopyOf("a.txt")));
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
  EXPECT_EQ("found", Written("a.txt"));
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt", "GET /b.txt"}), server.Asked());
  EXPECT_EQ("127.0.0.1:" + port, server.Requests().back().Header("Host"));
}

TEST_F(LyingContentTest, AManifestMayBeRedirected) {
  server.Answer("/other.xml", Response().Body(ManifestOf(Copy("a.txt"))));
  EXPECT_HRESULT(S_OK, RunAnswered(Response().Redirect("/other.xml")));
  EXPECT_EQ("a.txt", Written("a.txt"));
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /other.xml", "GET /a.txt"}), server.Asked());
}

// The transport does not follow it: what came with it is the file.
TEST_F(LyingContentTest, ARedirectToALocalFileNeverBringsIt) {
  const std::string secret = documents.File("secret.txt");
  WriteWholeFile(secret, "CANARY");
  server.Answer("/a.txt", Response().Redirect("file:///" + Replaced(secret, "\\", "/")).Body("moved"));
  EXPECT_HRESULT(S_OK, Execute(CopyOf("a.txt")));
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt"}), server.Asked());
  EXPECT_EQ("moved", Written("a.txt"));
}

struct PageRow {
  const char* name;
  Response response;
  std::optional<std::string> written = std::nullopt;  // nothing when the text is found in the page
};

class NotFoundPageTest : public HostileTest, public testing::WithParamInterface<PageRow> {};

TEST_P(NotFoundPageTest, IsNoFile) {
  server.Answer("/a.txt", GetParam().response);
  const HRESULT hr = Execute(CopyOf("a.txt", "", "<NotFoundHTML>Page Missing</NotFoundHTML>"));
  EXPECT_EQ(GetParam().written, Written("a.txt"));
  if (!GetParam().written) {
    EXPECT_HRESULT(S_FALSE, hr);
    EXPECT_EQ((Lines{"ERROR 0x80070002 Source URL '{server}/a.txt' not found.", "ERROR 0x80070002 'Copy' command failed.",
                     kCommandFailed}),
              Told());
    EXPECT_EQ("", NamesIn(destination.Path()));
  } else {
    EXPECT_HRESULT(S_OK, hr);
    EXPECT_EQ(Lines{}, Told());
    EXPECT_EQ("a.txt", NamesIn(destination.Path()));
  }
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt"}), server.Asked());
}

const std::string kPage = "<html>Sorry, Page Missing</html>";
const std::string kZeroFirst = std::string("0123456789ab\0", 13) + kPage;

INSTANTIATE_TEST_SUITE_P(
    , NotFoundPageTest,
    testing::Values(
        PageRow{"Status200", Response().Body(kPage)}, PageRow{"Status404", Response().Status("404 Not Found").Body(kPage)},
        PageRow{"Status500", Response().Status("500 Broken").Body(kPage)},
        PageRow{"Status404WithoutTheText", Response().Status("404 Not Found").Body("something else"), "something else"},
        PageRow{"Status204", Response().Status("204 No Content").NoLength(), ""},
        PageRow{"Status304", Response().Status("304 Not Modified").NoLength(), ""},
        PageRow{"AcrossTheBorderOfTwoReads", Response().Body(std::string(4091, 'x') + "Page Missing")},
        PageRow{"AcrossTheBorderOfTwoChunks", Response().Chunk("<html>Sorry, Page M").Chunk("issing</html>")},
        PageRow{"BehindAZeroByte", Response().Body(kZeroFirst), kZeroFirst}),
    [](const testing::TestParamInfo<PageRow>& row) { return std::string(row.param.name); });

struct PolicyRow {
  const char* policy;
  HRESULT result;
  Lines told;
  bool isAsked;       // the server, for the file
  const char* names;  // what is in the folder afterwards
  const char* kept;   // the one that holds what was there before; null when it is lost
};

class PolicyTest : public HostileTest, public testing::WithParamInterface<PolicyRow> {};

TEST_P(PolicyTest, DecidesWhatAFailedTransferCosts) {
  server.Answer("/a.txt", Response().Length(100).Body("half"));
  WriteWholeFile(destination.File("a.txt"), "old");
  const std::string time = "<Attributes><FileTime>2002-06-25T12:00:00Z</FileTime></Attributes>";
  const std::string policy = std::string("<IfFileExists><") + GetParam().policy + "/></IfFileExists>";
  EXPECT_HRESULT(GetParam().result, Execute(CopyOf("a.txt", time + policy)));
  EXPECT_EQ(GetParam().told, Told());
  EXPECT_EQ(
      GetParam().isAsked ? Lines({"GET /control-run.xml", "GET /a.txt"}) : Lines{"GET /control-run.xml"}, server.Asked());
  EXPECT_EQ(GetParam().names, NamesIn(destination.Path()));
  if (GetParam().kept) {
    EXPECT_EQ("old", Written(GetParam().kept));
  }
}

const Lines kBrokenOff = {
    "ERROR 0x80072efe Reading '{server}/a.txt' failed.", "ERROR 0x80072efe 'Copy' command failed.", kCommandFailed};
const Lines kCanceled = {"WARNING 0x800704c7 '{folder}\\a.txt' exists, canceling operation.",
                         "ERROR 0x800704c7 File exists. 'Copy' command canceled.", kCommandFailed};

// The time of the existing file is later than the one in the command.
INSTANTIATE_TEST_SUITE_P(, PolicyTest,
                         testing::Values(PolicyRow{"Overwrite", S_FALSE, kBrokenOff, true, "", nullptr},
                                         PolicyRow{"Skip", S_OK, Lines{}, false, "a.txt", "a.txt"},
                                         PolicyRow{"Cancel", S_FALSE, kCanceled, false, "a.txt", "a.txt"},
                                         PolicyRow{"Rename", S_FALSE, kBrokenOff, true, "a.000", "a.000"},
                                         PolicyRow{"Update", S_OK, Lines{}, false, "a.txt", "a.txt"}),
                         [](const testing::TestParamInfo<PolicyRow>& row) { return std::string(row.param.policy); });

}  // namespace
