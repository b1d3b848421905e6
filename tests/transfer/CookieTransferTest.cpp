#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ScriptedInternet.h"
#include "support/Files.h"
#include "support/GuardedHeap.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "transfer/CookieWriter.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;

constexpr char kCookieURL[] = "http://cookie.test/d/a.txt";
constexpr FILETIME kTime = {0x01D83400, 0x01CF5C6B};

std::string CookieOf(const char* url) {
  char data[8192] = "";
  DWORD size = sizeof(data);
  return InternetGetCookieA(url, nullptr, data, &size) ? data : "";
}

// A local source, and the system's call for cookies in the test's hands.
class CookieTransferTest : public testing::Test {
 protected:
  CookieTransferTest() : source(folder.File("source.txt")) {}

  HRESULT Transfer(const FILETIME* time = nullptr) {
    return CopyLocalFile(source.c_str(), kCookieURL, FILE_ATTRIBUTE_NORMAL, time, kTransferCookie);
  }

  BOOL Set(const char* url, const char* name, const char* data) {
    EXPECT_STREQ(kCookieURL, url);
    EXPECT_EQ(nullptr, name);
    set.push_back(data);
    return TRUE;
  }

  TemporaryFolder folder;
  std::string source;
  LogCapture log;
  Texts set;
};

TEST_F(CookieTransferTest, TheBytesAreSetAsACookie) {
  WriteWholeFile(source, "norvik=one");
  EXPECT_HRESULT(S_OK, Transfer());
  EXPECT_EQ("norvik=one", CookieOf(kCookieURL));
  WriteWholeFile(source, "norvik=two");
  EXPECT_HRESULT(S_OK, Transfer());
  EXPECT_EQ("norvik=two", CookieOf(kCookieURL));
  EXPECT_EQ("", log.Text());
  EXPECT_EQ("source.txt", NamesIn(folder.Path()));
}

TEST_F(CookieTransferTest, ACookieWithAnExpiryInTheFutureIsThere) {
  const SYSTEMTIME later = {2037, 12, 0, 31, 1, 2, 3, 0};
  FILETIME time;
  SystemTimeToFileTime(&later, &time);
  WriteWholeFile(source, "norvik=dated");
  EXPECT_HRESULT(S_OK, Transfer(&time));
  EXPECT_EQ("norvik=dated", CookieOf(kCookieURL));
  EXPECT_EQ("", log.Text());
}

TEST_F(CookieTransferTest, TheWholeTextIsTheData) {
  PATCH_IMPORT(record, InternetSetCookieA, [this](auto, auto... arguments) { return Set(arguments...); });
  const SYSTEMTIME time = {2030, 2, 0, 3, 4, 5, 6, 0};
  FILETIME expiry;
  SystemTimeToFileTime(&time, &expiry);
  WriteWholeFile(source, "a=%s; path=/");
  EXPECT_HRESULT(S_OK, Transfer(&expiry));
  EXPECT_HRESULT(S_OK, Transfer());
  EXPECT_EQ((Texts{"a=%s; path=/; expires = Sun, 03-Feb-2030 04:05:06 GMT", "a=%s; path=/"}), set);
}

TEST_F(CookieTransferTest, AnEmptySourceIsAnEmptyText) {
  PATCH_IMPORT(record, InternetSetCookieA, [this](auto, auto... arguments) { return Set(arguments...); });
  WriteWholeFile(source, "");
  EXPECT_HRESULT(S_OK, Transfer());
  EXPECT_EQ(Texts{""}, set);
}

TEST_F(CookieTransferTest, TheTextEndsAtAZeroByte) {
  PATCH_IMPORT(record, InternetSetCookieA, [this](auto, auto... arguments) { return Set(arguments...); });
  WriteWholeFile(source, std::string("a=b\0c=d", 7));
  EXPECT_HRESULT(S_OK, Transfer());
  EXPECT_EQ(Texts{"a=b"}, set);
}

TEST_F(CookieTransferTest, ALongTextIsKeptWhole) {
  PATCH_IMPORT(record, InternetSetCookieA, [this](auto, auto... arguments) { return Set(arguments...); });
  for (const std::size_t bytes : {4095, 4096, 4097, 100000}) {
    std::string text = "a=";
    for (std::size_t i = 2; i < bytes; ++i)
      text += static_cast<char>('0' + i / 7 % 10);
    WriteWholeFile(source, text);
    EXPECT_HRESULT(S_OK, Transfer());
    EXPECT_TRUE(text == set.back());
  }
}

// The room for the text doubles: the text, the buffer of the transfer, five times more room, and the data of the cookie.
TEST_F(CookieTransferTest, ALongTextIsCollectedInFewSteps) {
  PATCH_IMPORT(refuse, InternetSetCookieA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  WriteWholeFile(source, std::string(100000, 'a'));
  int allocations = 0;
  HRESULT hr;
  {
    PATCH_IMPORT(count, HeapAlloc, [&](auto original, auto... arguments) {
      ++allocations;
      return original(arguments...);
    });
    hr = CopyLocalFile(source.c_str(), kCookieURL, FILE_ATTRIBUTE_NORMAL, nullptr, kTransferCookie);
  }
  EXPECT_HRESULT(E_ACCESSDENIED, hr);
  EXPECT_EQ(8, allocations);
}

TEST_F(CookieTransferTest, ACookieIsSetOnceAndNotBeforeItWasBegun) {
  PATCH_IMPORT(record, InternetSetCookieA, [this](auto, auto... arguments) { return Set(arguments...); });
  CookieWriter cookie(kCookieURL);
  EXPECT_TRUE(cookie.Close());
  EXPECT_EQ(Texts{}, set);
  ASSERT_TRUE(cookie.Create(FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(cookie.Write("a=b", 3));
  EXPECT_TRUE(cookie.Close());
  EXPECT_TRUE(cookie.Close());
  EXPECT_EQ(Texts{"a=b"}, set);
}

TEST_F(CookieTransferTest, NothingIsWrittenBehindTheText) {
  PATCH_IMPORT(refuse, InternetSetCookieA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  for (const std::size_t bytes : {0, 1, 4094, 4095, 4096, 8191, 8192, 12288, 16383, 16384}) {
    WriteWholeFile(source, std::string(bytes, 'a'));
    GuardedHeap heap;
    EXPECT_HRESULT(E_ACCESSDENIED, Transfer(&kTime));
    EXPECT_LE(3, heap.Checked());
  }
}

// The second chunk doubles the room for the text, to the byte.
TEST_F(CookieTransferTest, NothingIsWrittenBehindATextThatFillsItsRoom) {
  PATCH_IMPORT(refuse, InternetSetCookieA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  ScriptedInternet internet({std::string(4095, 'a'), std::string(4096, 'b'), "c"});
  GuardedHeap heap;
  EXPECT_HRESULT(E_ACCESSDENIED, FetchURL("http://h/a", kCookieURL, 0, nullptr, kTransferCookie, nullptr));
  EXPECT_LE(4, heap.Checked());
}

TEST_F(CookieTransferTest, ACookieThatIsRefusedIsReported) {
  PATCH_IMPORT(refuse, InternetSetCookieA, FailWith(FALSE, ERROR_INVALID_PARAMETER));
  WriteWholeFile(source, "a=b");
  EXPECT_HRESULT(E_INVALIDARG, Transfer());
  EXPECT_EQ(Texts{std::string("ERROR 0x80070057 Writing '") + kCookieURL + "' failed."}, log.Messages());
}

TEST_F(CookieTransferTest, WithoutMemoryNothingIsSet) {
  PATCH_IMPORT(record, InternetSetCookieA, [this](auto, auto... arguments) { return Set(arguments...); });
  WriteWholeFile(source, std::string(10000, 'a'));
  const std::string creating = std::string("ERROR 0x8007000e Creating '") + kCookieURL + "' failed.";
  const std::string writing = std::string("ERROR 0x8007000e Writing '") + kCookieURL + "' failed.";
  // The value, the buffer of the transfer, the value grown twice, the text.
  const Texts messages = {creating, "ERROR 0x8007000e Copy buffer creation failed.", writing, writing, writing};
  for (std::size_t call = 1; call <= messages.size(); ++call) {
    SCOPED_TRACE(call);
    LogCapture own;
    HRESULT hr;
    {
      PATCH_IMPORT(noMemory, HeapAlloc, [count = std::size_t{0}, call](auto original, auto... arguments) mutable -> void* {
        return ++count == call ? nullptr : original(arguments...);
      });
      hr = CopyLocalFile(source.c_str(), kCookieURL, FILE_ATTRIBUTE_NORMAL, nullptr, kTransferCookie);
    }
    EXPECT_HRESULT(E_OUTOFMEMORY, hr);
    EXPECT_EQ(Texts{messages[call - 1]}, own.Messages());
  }
}

// Closing the destination sets the cookie, after a failure too.
TEST_F(CookieTransferTest, AfterAFailureWhatArrivedIsSet) {
  PATCH_IMPORT(record, InternetSetCookieA, [this](auto, auto... arguments) { return Set(arguments...); });
  ScriptedInternet internet({"a=first", "second"});
  internet.FailRead(2, ERROR_INTERNET_TIMEOUT);
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072EE2),
                 FetchURL("http://h/a", kCookieURL, FILE_ATTRIBUTE_NORMAL, &kTime, kTransferCookie, nullptr));
  EXPECT_EQ(Texts{"ERROR 0x80072ee2 Reading 'http://h/a' failed."}, log.Messages());
  EXPECT_EQ(Texts{"a=first"}, set);
}

TEST_F(CookieTransferTest, AFailedCookieDeletesNoFile) {
  PATCH_IMPORT(noDelete, DeleteFileA, [](auto, const char* name) {
    ADD_FAILURE() << name;
    return FALSE;
  });
  PATCH_IMPORT(refuse, InternetSetCookieA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  WriteWholeFile(source, "a=b");
  EXPECT_HRESULT(E_ACCESSDENIED, Transfer());
}

}  // namespace
