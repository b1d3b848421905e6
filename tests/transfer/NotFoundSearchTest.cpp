#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlwapi.h>

#include <string>
#include <vector>

#include "ScriptedInternet.h"
#include "support/Files.h"
#include "support/GuardedHeap.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;

constexpr char kSource[] = "http://h/a.exe";
constexpr char kText[] = "not found";  // 9 bytes
constexpr char kFoundLine[] = "ERROR 0x80070002 Source URL 'http://h/a.exe' not found.";
constexpr char kShortLine[] = "INFO Read in too few bytes to check for 'not found'.";

std::string Joined(const Texts& chunks) {
  std::string all;
  for (const std::string& chunk : chunks)
    all += chunk;
  return all;
}

class NotFoundSearchTest : public testing::Test {
 protected:
  NotFoundSearchTest() : destination(folder.File("copy.exe")) {}

  HRESULT Fetch(const Texts& chunks, const char* text = kText, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    ScriptedInternet internet(chunks);
    const HRESULT hr = FetchURL(kSource, destination.c_str(), attributes, nullptr, 0, text);
    EXPECT_TRUE(internet.IsClosed());
    EXPECT_EQ(4096u, internet.LargestRead());
    return hr;
  }

  void ExpectFound(const Texts& chunks, const char* text = kText) {
    LogCapture log;
    EXPECT_HRESULT(kNotFoundResult, Fetch(chunks, text));
    ASSERT_FALSE(log.Messages().empty());
    EXPECT_EQ(kFoundLine, log.Messages().back());
    EXPECT_EQ("FileUtilities", log.Entries().back().file);
    EXPECT_EQ("", NamesIn(folder.Path()));
  }

  // The transfer brings all chunks, and logs that `shortChunks` of them were too short.
  void ExpectBrought(const Texts& chunks, std::size_t shortChunks = 0, const char* text = kText) {
    LogCapture log;
    EXPECT_HRESULT(S_OK, Fetch(chunks, text));
    EXPECT_TRUE(Joined(chunks) == ReadWholeFile(destination));
    EXPECT_EQ(Texts(shortChunks, kShortLine), log.Messages());
  }

  TemporaryFolder folder;
  std::string destination;
};

TEST_F(NotFoundSearchTest, TheTextIsFoundAnywhereInAChunk) {
  ExpectFound({"not found, sorry"});
  ExpectFound({"sorry, not found, alas"});
  ExpectFound({"sorry, not found"});
  ExpectFound({std::string(4087, 'a') + kText});
  ExpectFound({std::string(4096, 'a'), std::string(4096, 'b'), "ccc not found ccc"});
}

TEST_F(NotFoundSearchTest, TheTextIsFoundAcrossEveryBorderOfTwoFullChunks) {
  const std::string text = kText;
  for (std::size_t bytes = 1; bytes < text.size(); ++bytes) {
    SCOPED_TRACE(bytes);
    ExpectFound({std::string(4096 - bytes, 'a') + text.substr(0, bytes), text.substr(bytes) + std::string(4000, 'b')});
  }
}

TEST_F(NotFoundSearchTest, TheTextIsFoundWhenTheSecondChunkIsItsEndAlone) {
  ExpectFound({"0123456789not", " found"});
  ExpectFound({"0123456789not foun", "d"});
}

TEST_F(NotFoundSearchTest, AShortAnswerIsSearchedOnce) {
  ExpectFound({"not found"});
  ExpectBrought({"no"}, 1);
  ExpectBrought({"NOT FOUND"}, 1);
}

TEST_F(NotFoundSearchTest, AChunkOfOneByteMoreIsNotShort) {
  ExpectBrought({"012345678"}, 1);
  ExpectBrought({"0123456789"}, 0);
}

TEST_F(NotFoundSearchTest, NothingIsCarriedOverFromAShortChunk) {
  ExpectBrought({"not", " found"}, 2);
}

TEST_F(NotFoundSearchTest, AShortChunkForgetsWhatWasCarriedBefore) {
  ExpectBrought({"0123456789not ", "-", "found 0123456789"}, 1);
  ExpectBrought({"0123456789not f", "-", "ound"}, 2);
}

// The second chunk lies over the beginning of the first one.
TEST_F(NotFoundSearchTest, BytesOfAnEarlierChunkAreNeverSeen) {
  ExpectBrought({"xxxxfound-0123456789", "not "}, 1);
  ExpectBrought({"xxxxxxxxxxxxfound-0123456789", "0123456 not "}, 0);
  ExpectBrought({std::string(4092, 'x') + "ound", "0123456 not f"}, 0);
}

TEST_F(NotFoundSearchTest, CaseCounts) {
  ExpectBrought({"sorry, Not Found, NOT FOUND, not Found"});
}

TEST_F(NotFoundSearchTest, AZeroByteEndsTheSearchInItsChunk) {
  ExpectBrought({std::string("MZ\0 not found ", 14)});
  ExpectFound({std::string("not found\0 MZ ", 14)});
}

TEST_F(NotFoundSearchTest, AZeroByteFarFromTheBorderDoesNotHideTheNextChunk) {
  ExpectFound({std::string("MZ\0 0123456789", 14), "0123456789 not found"});
}

TEST_F(NotFoundSearchTest, AZeroByteInTheCarriedEndHidesTheNextChunk) {
  ExpectBrought({std::string("0123456789MZ\0--", 15), "0123456789 not found"});
}

TEST_F(NotFoundSearchTest, ACarriedEndThatBeginsWithAZeroByteIsLeftOut) {
  ExpectFound({std::string("0123456789\0-1234567", 19), "0123456789 not found"});
  ExpectBrought({std::string("0123456789\0-123 not", 19), " found 0123456789"});
}

TEST_F(NotFoundSearchTest, WithoutATextNothingIsSearched) {
  PATCH_IMPORT(search, StrStrA, [](auto original, auto... texts) {
    ADD_FAILURE() << "it was searched";
    return original(texts...);
  });
  ExpectBrought({"not found", "a"}, 0, nullptr);
  ExpectBrought({"not found", "a"}, 0, "");
}

TEST_F(NotFoundSearchTest, AnEmptyAnswerIsAnEmptyFile) {
  ExpectBrought({});
}

TEST_F(NotFoundSearchTest, ATextOfOneByteIsSought) {
  ExpectFound({"abc"}, "c");
  ExpectBrought({"abc", "d"}, 1, "e");
}

TEST_F(NotFoundSearchTest, ATextOfAWholeChunkIsSought) {
  const std::string text = std::string(4095, 'a') + "b";
  ExpectFound({text}, text.c_str());
  ExpectBrought({std::string(4096, 'a'), text.substr(1)}, 2, text.c_str());
}

TEST_F(NotFoundSearchTest, ATextLongerThanAChunkIsNeverFound) {
  const std::string text(5000, 'a');
  ExpectBrought({std::string(4096, 'a'), std::string(4096, 'a')}, 2, text.c_str());
}

TEST_F(NotFoundSearchTest, ATextIsNoFormatAndNoPattern) {
  ExpectFound({"100%s of it"}, "0%s o");
  ExpectBrought({"something that is there"}, 0, "s.*t");
}

TEST_F(NotFoundSearchTest, NothingIsWrittenBehindTheBuffer) {
  const std::string longText(5000, 'x');
  for (const char* const text : {kText, "n", longText.c_str()}) {
    ScriptedInternet internet({std::string(4096, 'a'), std::string(4096, 'b'), "c", std::string(4096, 'd')});
    GuardedHeap heap;
    EXPECT_HRESULT(S_OK, FetchURL(kSource, destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, text));
    EXPECT_LE(1, heap.Checked());
  }
}

TEST_F(NotFoundSearchTest, AReadOnlyFileIsDeletedToo) {
  LogCapture log;
  EXPECT_HRESULT(kNotFoundResult, Fetch({std::string(4096, 'a'), "not found"}, kText, FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(NotFoundSearchTest, TheFileThatStoodThereIsGoneToo) {
  WriteWholeFile(destination, "old");
  ExpectFound({"not found"});
}

TEST_F(NotFoundSearchTest, NothingIsReadBehindTheText) {
  ScriptedInternet internet({"0123456789", "not found", "more"});
  EXPECT_HRESULT(kNotFoundResult, FetchURL(kSource, destination.c_str(), 0, nullptr, 0, kText));
  EXPECT_EQ(2, internet.Reads());
}

TEST_F(NotFoundSearchTest, TheHeadOfADocumentIsSearchedAsItIsRead) {
  LogCapture log;
  const DWORD flags = kTransferXMLDocument | kTransferManifest;
  {
    ScriptedInternet internet({"<?xml?><!DOCTYPE not found>", "<V/>"});
    EXPECT_HRESULT(kNotFoundResult, FetchURL(kSource, destination.c_str(), 0, nullptr, flags, kText));
  }
  {
    ScriptedInternet internet({"<?xml?><!DOCTYPE V>", "<V>0123456789", "not found</V>"});
    EXPECT_HRESULT(kNotFoundResult, FetchURL(kSource, destination.c_str(), 0, nullptr, flags, kText));
  }
  EXPECT_EQ((Texts{"ERROR 0x80070002 Source URL not found.", kFoundLine}), log.Messages());
  EXPECT_EQ(std::vector<HRESULT>{S_OK}, log.ErrorTraces());
  EXPECT_EQ("", NamesIn(folder.Path()));
}

}  // namespace
