#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Files.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "support/WebServer.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;

class SecureDownloadTest : public testing::Test {
 protected:
  SecureDownloadTest() : destination(folder.File("copy.bin")) { server.Answer("/a.bin", Response().Body("secret")); }

  HRESULT Fetch(const std::string& url, const char* notFoundText = nullptr) {
    return FetchURL(url.c_str(), destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, notFoundText);
  }

  void ExpectRefused(const char* code, const std::string& url) {
    EXPECT_HRESULT(static_cast<HRESULT>(std::stoul(code, nullptr, 16)), Fetch(url));
    EXPECT_EQ(Texts{std::string("ERROR ") + code + " Opening '" + url + "' failed."}, log.Messages());
    EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
    EXPECT_EQ("", NamesIn(folder.Path()));
    EXPECT_EQ(Texts{}, server.Asked());
  }

  WebServer server;
  TemporaryFolder folder;
  std::string destination;
  LogCapture log;
};

TEST_F(SecureDownloadTest, ACertificateOfATrustedAuthorityIsAccepted) {
  EXPECT_HRESULT(S_OK, Fetch(server.SecureUrl("/a.bin")));
  EXPECT_EQ("secret", ReadWholeFile(destination));
  ASSERT_EQ(1u, server.Requests().size());
  EXPECT_EQ("good", server.Requests()[0].port);
  EXPECT_EQ("Norvik", server.Requests()[0].Header("User-Agent"));
  EXPECT_EQ("", log.Text());
}

TEST_F(SecureDownloadTest, TheSchemesCaseDoesNotCount) {
  EXPECT_HRESULT(S_OK, Fetch("HTTPS" + server.SecureUrl("/a.bin").substr(5)));
  EXPECT_EQ("secret", ReadWholeFile(destination));
}

TEST_F(SecureDownloadTest, ALongBodyArrivesByteForByte) {
  server.Answer("/long.bin", Response().Repeat("0123456789abc", 100001));
  EXPECT_HRESULT(S_OK, Fetch(server.SecureUrl("/long.bin")));
  const std::string content = ReadWholeFile(destination);
  ASSERT_EQ(100001u, content.size());
  for (std::size_t i = 0; i < content.size(); ++i)
    ASSERT_EQ("0123456789abc"[i % 13], content[i]) << i;
}

TEST_F(SecureDownloadTest, TheNotFoundTextIsSoughtToo) {
  const std::string url = server.SecureUrl("/nothing");
  EXPECT_HRESULT(kNotFoundResult, Fetch(url, "not found"));
  EXPECT_EQ("ERROR 0x80070002 Source URL '" + url + "' not found.", log.Messages().back());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(SecureDownloadTest, ACertificateOfAnUnknownAuthorityIsRefused) {
  ExpectRefused("0x80072f0d", server.UntrustedUrl("/a.bin"));
}

TEST_F(SecureDownloadTest, AnExpiredCertificateIsRefused) {
  ExpectRefused("0x80072f05", server.ExpiredUrl("/a.bin"));
}

TEST_F(SecureDownloadTest, ACertificateOfAnotherNameIsRefused) {
  ExpectRefused("0x80072f06", server.WrongNameUrl("/a.bin"));
}

TEST_F(SecureDownloadTest, ARedirectToARefusedCertificateLeavesNothing) {
  server.Answer("/away", Response().Redirect(server.UntrustedUrl("/a.bin")));
  const std::string url = server.SecureUrl("/away");
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072F0D), Fetch(url));
  EXPECT_EQ(Texts{"ERROR 0x80072f0d Opening '" + url + "' failed."}, log.Messages());
  EXPECT_EQ("", NamesIn(folder.Path()));
  EXPECT_EQ(Texts{"GET /away"}, server.Asked());
}

TEST_F(SecureDownloadTest, ARefusedCertificateLeavesTheOldFile) {
  WriteWholeFile(destination, "old");
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072F0D), Fetch(server.UntrustedUrl("/a.bin")));
  EXPECT_EQ("old", ReadWholeFile(destination));
}

}  // namespace
