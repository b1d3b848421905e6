#include "log/LogFile.h"

#include <gtest/gtest.h>
#include <shlwapi.h>

#include <cstring>
#include <cwchar>
#include <functional>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

#include "log/LocalFolder.h"
#include "support/Files.h"
#include "support/GuardedHeap.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

constexpr SourceFile kSourceFile = {"LogFileTest"};
constexpr char kNotice[] = "\r\nToo many errors. Logging stopped...\r\n";
constexpr char kTimePattern[] = "\\(\\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d\\) ";

void ExpectMatch(const std::string& pattern, const std::string& text) {
  EXPECT_TRUE(std::regex_match(text, std::regex(pattern))) << text << "\ndoes not match\n" << pattern;
}

// What the log is like before anything was chosen: it is looked at before the first test begins.
struct FirstUse {
  FirstUse() {
    PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder.Path()));
    LogText("one");
    LogText("two");
  }

  const LONG debugLogging = GetDebugLogging();
  const TemporaryFolder folder;
};

const FirstUse firstUse;

TEST(LogFileTest, DebugLoggingIsOnToBeginWith) {
  EXPECT_EQ(1, firstUse.debugLogging);
}

TEST(LogFileTest, ALineBeforeAnyFileWasChosenGoesToTheDefaultFile) {
  EXPECT_EQ("onetwo", ReadWholeFile(firstUse.folder.File("Vantor\\Logs\\Norvik\\Norvik.log")));
}

TEST(LogFileTest, AnEntryWithoutDebugLoggingHasLevelAndTime) {
  LogCapture log(false);
  LogInfo(HERE, "Permit File: %s", "C:\\Apps\\permit.xml");
  ExpectMatch(std::string("INFO ") + kTimePattern + "\r\n\tPermit File: C:\\\\Apps\\\\permit\\.xml\r\n", log.Text());
}

TEST(LogFileTest, AnEntryWithDebugLoggingNamesItsSource) {
  LogCapture log(true);
  LogWarning(88, "Manifest", S_FALSE, "text");
  ExpectMatch(std::string("WARNING ") + kTimePattern + "on line 88 in file 'Manifest' \r\n\ttext\r\n", log.Text());
}

TEST(LogFileTest, AFailureShowsItsCodeAndTheSystemsText) {
  LogCapture log(true);
  LogError(120, "CopyCommand", E_INVALIDARG, "%d of %s", 2, "three");
  ExpectMatch(std::string("ERROR ") + kTimePattern +
                  "on line 120 in file 'CopyCommand' Error \\(0x80070057\\) [^\r\n]+\r\n\t2 of three\r\n",
              log.Text());
}

// A handler of FormatMessageA: the system's text for E_INVALIDARG.
auto SystemTextIs(const char* text) {
  return [text](auto, DWORD flags, const void* source, DWORD code, DWORD language, char* buffer, DWORD size,
                va_list* arguments) {
    EXPECT_EQ(DWORD{FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM}, flags);
    EXPECT_EQ(nullptr, source);
    EXPECT_EQ(0x80070057u, code);
    EXPECT_EQ(0x400u, language);  // the user's own
    EXPECT_EQ(0u, size);
    EXPECT_EQ(nullptr, arguments);
    char* const copy = static_cast<char*>(LocalAlloc(LPTR, 32));
    lstrcpyA(copy, text);
    *reinterpret_cast<char**>(buffer) = copy;
    return static_cast<DWORD>(lstrlenA(copy));
  };
}

TEST(LogFileTest, TheSystemsTextLosesItsLineEnd) {
  LogCapture log(false);
  PATCH_IMPORT(systemText, FormatMessageA, SystemTextIs("100%s wrong.\r\n"));
  LogError(HERE, E_INVALIDARG, "x");
  ExpectMatch(std::string("ERROR ") + kTimePattern + "Error \\(0x80070057\\) 100%s wrong\\.\r\n\tx\r\n", log.Text());
}

// A text of two characters could not be a line end with anything before it.
TEST(LogFileTest, ASystemTextThatIsTooShortForALineEndIsWrittenWhole) {
  const char* const rows[][2] = {{"a", "a"}, {"ab", "ab"}, {"abc", "a"}};
  for (const auto& row : rows) {
    LogCapture log(false);
    PATCH_IMPORT(systemText, FormatMessageA, SystemTextIs(row[0]));
    LogError(HERE, E_INVALIDARG, "x");
    ExpectMatch(std::string("ERROR ") + kTimePattern + "Error \\(0x80070057\\) " + row[1] + "\r\n\tx\r\n", log.Text());
  }
}

TEST(LogFileTest, TheSystemsTextIsGivenBack) {
  LogCapture log(false);
  char* given = nullptr;
  std::vector<HLOCAL> freed;
  PATCH_IMPORT(systemText, FormatMessageA, [&](auto original, auto... arguments) {
    const DWORD length = SystemTextIs("text")(original, arguments...);
    given = *reinterpret_cast<char**>(std::get<4>(std::make_tuple(arguments...)));
    return length;
  });
  PATCH_IMPORT(record, LocalFree, [&](auto original, HLOCAL memory) {
    freed.push_back(memory);
    return original(memory);
  });
  LogError(HERE, E_INVALIDARG, "x");
  EXPECT_EQ(std::vector<HLOCAL>{given}, freed);
}

// A length without a text, or a text without a length, is none.
TEST(LogFileTest, ASystemTextThatIsHalfThereIsNone) {
  for (const DWORD length : {0, 4}) {
    LogCapture log(false);
    PATCH_IMPORT(half, FormatMessageA, [length](auto original, auto... arguments) {
      if (length == 0)
        SystemTextIs("text")(original, arguments...);
      return length;
    });
    LogError(HERE, E_INVALIDARG, "x");
    ExpectMatch(std::string("ERROR ") + kTimePattern + "Error \\(0x80070057\\)\r\n\tx\r\n", log.Text());
  }
}

TEST(LogFileTest, ACodeWithoutSystemTextStandsAlone) {
  LogCapture log(false);
  PATCH_IMPORT(noText, FormatMessageA, FailWith(DWORD{0}, ERROR_MR_MID_NOT_FOUND));
  LogError(HERE, static_cast<HRESULT>(0x80072EE7), "x");
  ExpectMatch(std::string("ERROR ") + kTimePattern + "Error \\(0x80072ee7\\)\r\n\tx\r\n", log.Text());
}

TEST(LogFileTest, CodesThatAreNoFailureShowNothing) {
  LogCapture log(false);
  LogWarning(HERE, S_FALSE, "one");
  LogError(HERE, S_OK, "two");
  ExpectMatch(std::string("WARNING ") + kTimePattern + "\r\n\tone\r\nERROR " + kTimePattern + "\r\n\ttwo\r\n", log.Text());
}

TEST(LogFileTest, AnEmptyOrMissingFormatIsASingleLine) {
  LogCapture log(false);
  LogErrorW(HERE, S_OK, L"");
  LogErrorW(HERE, S_OK, nullptr);
  LogError(HERE, S_OK, nullptr);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-zero-length"
  LogError(HERE, S_OK, "");
#pragma GCC diagnostic pop
  const std::string line = std::string("ERROR ") + kTimePattern + "\r\n";
  ExpectMatch(line + line + line + line, log.Text());
}

TEST(LogFileTest, TheTimeIsTheLocalTime) {
  LogCapture log(false);
  PATCH_IMPORT(clock, GetLocalTime, [](auto, SYSTEMTIME* time) { *time = {2026, 11, 6, 14, 9, 5, 7, 123}; });
  LogInfo(HERE, "x");
  EXPECT_EQ("INFO (11/14/2026 09:05:07) \r\n\tx\r\n", log.Text());
}

TEST(LogFileTest, AnOverlongNarrowMessageIsCutAt1023Characters) {
  LogCapture log(false);
  const std::string text(2000, 'a');
  LogInfo(HERE, "%s", text.c_str());
  EXPECT_EQ(std::string(1023, 'a'), log.Entries().at(0).message);
}

TEST(LogFileTest, AnOverlongWideMessageIsCutAt2046Characters) {
  LogCapture log(false);
  const std::wstring text(4000, L'a');
  LogInfoW(HERE, L"%s", text.c_str());
  EXPECT_EQ(std::string(2046, 'a'), log.Entries().at(0).message);
}

TEST(LogFileTest, AnOverlongHeadIsCutAt1023Characters) {
  LogCapture log(true);
  const std::string name(2000, 'f');
  LogInfo(7, name.c_str(), "x");
  const std::string text = log.Text();
  ASSERT_EQ(1023 + std::strlen("\r\n\tx\r\n"), text.size());
  EXPECT_EQ("\r\n\tx\r\n", text.substr(1023));
  ExpectMatch(std::string("INFO ") + kTimePattern + "on line 7 in file 'f+", text.substr(0, 1023));
}

// Some systems end a text that was cut without a terminator.
TEST(LogFileTest, ATextThatWasCutIsEndedAllTheSame) {
  LogCapture log(false);
  {
    PATCH_IMPORT(cut, wvnsprintfA, [](auto, char* buffer, int characters, const char*, va_list) {
      EXPECT_EQ(1024, characters);
      std::memset(buffer, 'a', static_cast<std::size_t>(characters));
      return -1;
    });
    LogInfo(HERE, "%s", "text");
  }
  EXPECT_EQ(std::string(1023, 'a') + "\r\n\t" + std::string(1023, 'a') + "\r\n", log.Text());
}

TEST(LogFileTest, AWideTextThatWasCutIsEndedAllTheSame) {
  LogCapture log(false);
  {
    PATCH_IMPORT(cut, wvnsprintfW, [](auto, wchar_t* buffer, int characters, const wchar_t*, va_list) {
      EXPECT_EQ(2047, characters);
      std::wmemset(buffer, L'a', static_cast<std::size_t>(characters));
      return -1;
    });
    LogInfoW(HERE, L"%s", L"text");
  }
  EXPECT_EQ(std::string(2046, 'a'), log.Entries().at(0).message);
}

TEST(LogFileTest, ACharacterOfAWideMessageMayTakeTwoBytes) {
  LogCapture log(false);
  PATCH_IMPORT(japanese, WideCharToMultiByte, [](auto original, UINT codePage, DWORD flags, auto... rest) {
    EXPECT_EQ(UINT{CP_ACP}, codePage);
    EXPECT_EQ(0u, flags);
    return original(932, flags, rest...);
  });
  GuardedHeap heap;
  LogInfoW(HERE, L"%s", L"\u30BD\u30BD");
  EXPECT_EQ("\x83\x5C\x83\x5C", log.Entries().at(0).message);
  EXPECT_LE(1, heap.Checked());
}

TEST(LogFileTest, WideMessagesAreWrittenInTheAnsiCodePage) {
  LogCapture log(true);
  LogInfoW(1, "A", L"%s", L"one");
  LogWarningW(2, "B", E_FAIL, L"%s-%d", L"two", 2);
  LogErrorW(3, "C", E_OUTOFMEMORY, L"three");
  const auto entries = log.Entries();
  ASSERT_EQ(3u, entries.size());
  EXPECT_EQ("INFO", entries[0].level);
  EXPECT_EQ("one", entries[0].message);
  EXPECT_EQ("WARNING", entries[1].level);
  EXPECT_HRESULT(E_FAIL, entries[1].code);
  EXPECT_EQ("two-2", entries[1].message);
  EXPECT_EQ("ERROR", entries[2].level);
  EXPECT_EQ("C", entries[2].file);
  EXPECT_EQ(3, entries[2].line);
  EXPECT_HRESULT(E_OUTOFMEMORY, entries[2].code);
}

TEST(LogFileTest, AWideMessageThatCannotBeConvertedStillEndsItsLine) {
  LogCapture log(false);
  {
    PATCH_IMPORT(noConversion, WideCharToMultiByte, FailWith(0, ERROR_INSUFFICIENT_BUFFER));
    LogErrorW(HERE, S_OK, L"lost");
  }
  ExpectMatch(std::string("ERROR ") + kTimePattern + "\r\n\t\r\n", log.Text());
}

TEST(LogFileTest, AWideMessageWithoutMemoryStillEndsItsLine) {
  LogCapture log(false);
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    LogErrorW(HERE, S_OK, L"lost");
  }
  ExpectMatch(std::string("ERROR ") + kTimePattern + "\r\n\t\r\n", log.Text());
}

TEST(LogFileTest, TextFromOutsideIsNoFormat) {
  LogCapture log(false);
  LogError(HERE, S_OK, "%s", "%s%n%d%x");
  EXPECT_EQ("%s%n%d%x", log.Entries().at(0).message);
}

TEST(LogFileTest, TracesAreWrittenWhileDebugLoggingIsOn) {
  LogCapture log(true);
  LogInfoTrace(88, "Manifest");
  LogWarningTrace(HERE, E_FAIL);
  LogErrorTrace(HERE, E_ACCESSDENIED);
  const std::string text = log.Text();
  ExpectMatch(
      std::string("INFO ") + kTimePattern + "on line 88 in file 'Manifest' \r\n", text.substr(0, text.find('\n') + 1));
  const auto entries = log.Entries();
  ASSERT_EQ(3u, entries.size());
  EXPECT_EQ("WARNING", entries[1].level);
  EXPECT_HRESULT(E_FAIL, entries[1].code);
  EXPECT_EQ("ERROR", entries[2].level);
  EXPECT_HRESULT(E_ACCESSDENIED, entries[2].code);
  EXPECT_EQ("", entries[2].message);
}

TEST(LogFileTest, TracesAreNotWrittenWhileItIsOff) {
  LogCapture log(false);
  LogInfoTrace(HERE);
  LogWarningTrace(HERE, E_FAIL);
  LogErrorTrace(HERE, E_FAIL);
  EXPECT_HRESULT(E_FAIL, Traced(HERE, E_FAIL));
  EXPECT_EQ("", log.Text());
}

TEST(LogFileTest, AnyValueButZeroTurnsDebugLoggingOn) {
  LogCapture log(false);
  SetDebugLogging(-1);
  EXPECT_EQ(-1, GetDebugLogging());
  LogInfoTrace(HERE);
  EXPECT_EQ(1u, log.Entries().size());
}

TEST(LogFileTest, FailuresAreLoggedAndGivenBack) {
  LogCapture log(true);
  EXPECT_HRESULT(E_FAIL, Reported(HERE, E_FAIL, "%s", "a"));
  EXPECT_HRESULT(E_POINTER, ReportedW(HERE, E_POINTER, L"%s", L"b"));
  EXPECT_HRESULT(E_UNEXPECTED, Traced(HERE, E_UNEXPECTED));
  EXPECT_EQ((std::vector<std::string>{"ERROR 0x80004005 a", "ERROR 0x80004003 b"}), log.Messages());
  EXPECT_EQ(std::vector<HRESULT>{E_UNEXPECTED}, log.ErrorTraces());
}

struct LineRow {
  const char* title;
  const char* message;
  const char* written;
};

class LogLineTest : public testing::TestWithParam<LineRow> {};

TEST_P(LogLineTest, OnlyALineThatLooksLikeAnEntryIsIndented) {
  const std::string expected = std::string("ERROR ") + kTimePattern + "\r\n\t" + GetParam().written + "\r\n";
  {
    LogCapture log(false);
    LogError(HERE, S_OK, "'%s' failed.", GetParam().message);
    ExpectMatch(expected, log.Text());
    EXPECT_EQ(1u, log.Entries().size());
  }
  LogCapture log(false);
  LogErrorW(HERE, S_OK, L"'%s' failed.", Wide(GetParam().message).c_str());
  ExpectMatch(expected, log.Text());
  EXPECT_EQ(1u, log.Entries().size());
}

INSTANTIATE_TEST_SUITE_P(
    Lines, LogLineTest,
    testing::Values(
        LineRow{"Error", "a\r\nERROR (01/01/2001 00:00:00) b", "'a\r\n\tERROR \\(01/01/2001 00:00:00\\) b' failed\\."},
        LineRow{"Warning", "a\r\nWARNING (01/01/2001 00:00:00) ", "'a\r\n\tWARNING \\(01/01/2001 00:00:00\\) ' failed\\."},
        LineRow{"Info", "a\r\nINFO (01/01/2001 00:00:00) ", "'a\r\n\tINFO \\(01/01/2001 00:00:00\\) ' failed\\."},
        LineRow{"LineFeed", "a\nERROR (", "'a\n\tERROR \\(' failed\\."},
        LineRow{"CarriageReturn", "a\rERROR (", "'a\r\tERROR \\(' failed\\."},
        LineRow{"SeveralLines", "\r\nERROR\r\n\r\nERROR", "'\r\n\tERROR\r\n\r\n\tERROR' failed\\."},
        LineRow{"IndentedAlready", "a\r\n\tERROR (", "'a\r\n\tERROR \\(' failed\\."},
        LineRow{"AnotherWord", "a\r\nb\r\n.", "'a\r\nb\r\n\\.' failed\\."},
        LineRow{"InTheLine", "ERROR (01/01/2001 00:00:00) ", "'ERROR \\(01/01/2001 00:00:00\\) ' failed\\."}),
    [](const auto& row) { return row.param.title; });

// Whether a name is a device's is the system's to say: here it says so of the first file that is asked about.
TEST(LogFileTest, ADeviceIsNoLogFile) {
  LogCapture log(false);
  const TemporaryFolder folder;
  {
    PATCH_IMPORT(local, SHGetFolderPathA, FolderAt(folder.Path()));
    PATCH_IMPORT(device, GetFileType, [asked = 0](auto original, HANDLE file) mutable {
      return ++asked == 1 ? DWORD{FILE_TYPE_CHAR} : original(file);
    });
    LogInfo(HERE, "one");
    LogInfo(HERE, "two");
  }
  ExpectMatch(std::string("INFO ") + kTimePattern + "\r\n\tone\r\nINFO " + kTimePattern + "\r\n\ttwo\r\n",
              ReadWholeFile(folder.File("Vantor\\Logs\\Norvik\\Norvik.log")));
  EXPECT_EQ("", log.Text());
}

TEST(LogFileTest, RawTextIsAppendedAsItIs) {
  LogCapture log(false);
  LogText("\tone");
  LogText(nullptr);
  LogText("%s\r\n");
  EXPECT_EQ("\tone%s\r\n", log.Text());
}

TEST(LogFileTest, ChoosingTheFileAgainEmptiesItWithTheNextLine) {
  LogCapture log(false);
  const std::string path = LogCapture::PathOf("chosen");
  SetLogFileName(L"chosen.xml");
  LogText("one");
  LogText("two");
  EXPECT_EQ("onetwo", ReadWholeFile(path));
  SetLogFileName(L"chosen.xml");
  EXPECT_EQ("onetwo", ReadWholeFile(path));
  LogText("three");
  EXPECT_EQ("three", ReadWholeFile(path));
  DeleteFileA(path.c_str());
}

class CappedLogTest : public testing::Test {
 protected:
  CappedLogTest() { SetLogFileName(L"capped.xml"); }
  ~CappedLogTest() override { DeleteFileA(path.c_str()); }

  void Fill(std::size_t bytes) {
    LogText("x");
    LogText(std::string(bytes - 1, 'x').c_str());
    ASSERT_EQ(bytes, ReadWholeFile(path).size());
  }

  LogCapture restore;
  const std::string path = LogCapture::PathOf("capped");
};

TEST_F(CappedLogTest, AnEntryIsWrittenInFullJustBelowTheCapAndThenOnlyTheNotice) {
  Fill(65535);
  LogText("last");
  EXPECT_EQ(std::string(65535, 'x') + "last", ReadWholeFile(path));
  LogText("lost");
  const std::string capped = std::string(65535, 'x') + "last" + kNotice;
  EXPECT_EQ(capped, ReadWholeFile(path));
  LogText("lost");
  LogError(HERE, E_FAIL, "lost");
  EXPECT_EQ(capped, ReadWholeFile(path));
}

TEST_F(CappedLogTest, AFileOfExactlyTheCapTakesNothingMore) {
  Fill(65536);
  LogText("lost");
  EXPECT_EQ(std::string(65536, 'x') + kNotice, ReadWholeFile(path));
}

TEST_F(CappedLogTest, ChoosingTheFileAnewLiftsTheCap) {
  Fill(65536);
  LogText("lost");
  SetLogFileName(L"capped.xml");
  LogText("fresh");
  EXPECT_EQ("fresh", ReadWholeFile(path));
}

TEST_F(CappedLogTest, AFileThatIsChosenAnewGetsItsOwnNotice) {
  for (int time = 1; time <= 2; ++time) {
    SetLogFileName(L"capped.xml");
    Fill(65536);
    LogText("lost");
    EXPECT_EQ(std::string(65536, 'x') + kNotice, ReadWholeFile(path)) << time;
  }
}

TEST_F(CappedLogTest, AFileThatCouldNotBeOpenedGetsItsNoticeLater) {
  {
    PATCH_IMPORT(held, CreateFileA, FailWith(INVALID_HANDLE_VALUE, ERROR_SHARING_VIOLATION));
    LogText("lost");
  }
  Fill(65536);
  LogText("lost");
  EXPECT_EQ(std::string(65536, 'x') + kNotice, ReadWholeFile(path));
}

TEST_F(CappedLogTest, ANoticeWhoseEndCannotBeFoundIsLost) {
  Fill(65536);
  {
    PATCH_IMPORT(noSeek, SetFilePointer, FailWith(INVALID_SET_FILE_POINTER, ERROR_GEN_FAILURE));
    LogText("lost");
  }
  LogText("lost");
  EXPECT_EQ(std::string(65536, 'x'), ReadWholeFile(path));
}

TEST(LogFileTest, AFileHeldByAnotherLosesTheLineAndIsNotEmptiedLater) {
  LogCapture restore;
  const std::string path = LogCapture::PathOf("held");
  WriteWholeFile(path, "before");
  SetLogFileName(L"held.xml");
  {
    PATCH_IMPORT(held, CreateFileA, FailWith(INVALID_HANDLE_VALUE, ERROR_SHARING_VIOLATION));
    PATCH_IMPORT(notAsked, GetFileType, [](auto, HANDLE) {
      ADD_FAILURE() << "there is no file to ask about";
      return DWORD{FILE_TYPE_UNKNOWN};
    });
    LogText("lost");
  }
  LogText("after");
  EXPECT_EQ("beforeafter", ReadWholeFile(path));
  DeleteFileA(path.c_str());
}

TEST(LogFileTest, ALineWhoseEndCannotBeFoundIsLost) {
  LogCapture log(false);
  LogText("one");
  {
    PATCH_IMPORT(noSeek, SetFilePointer, FailWith(INVALID_SET_FILE_POINTER, ERROR_GEN_FAILURE));
    LogText("lost");
  }
  LogText("two");
  EXPECT_EQ("onetwo", log.Text());
}

TEST(LogFileTest, AFailedWriteLosesOnlyItsText) {
  LogCapture log(false);
  {
    PATCH_IMPORT(diskFull, WriteFile, FailWith(FALSE, ERROR_DISK_FULL));
    LogError(HERE, E_FAIL, "lost");
  }
  LogText("next");
  EXPECT_EQ("next", log.Text());
}

TEST(LogFileTest, TheFileIsOpenedAloneForEveryLine) {
  LogCapture log(false);
  std::vector<DWORD> dispositions;
  int closed = 0;
  PATCH_IMPORT(opens, CreateFileA,
               [&](auto original, const char* path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD attributes, HANDLE pattern) {
    EXPECT_EQ(GENERIC_WRITE, access);
    EXPECT_EQ(0u, sharing);
    EXPECT_EQ(nullptr, security);
    EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL}, attributes);
    dispositions.push_back(disposition);
    return original(path, access, sharing, security, disposition, attributes, pattern);
  });
  PATCH_IMPORT(closes, CloseHandle, [&](auto original, HANDLE handle) {
    ++closed;
    return original(handle);
  });
  LogInfo(HERE, "one");
  LogInfo(HERE, "two");
  EXPECT_EQ((std::vector<DWORD>{CREATE_ALWAYS, OPEN_ALWAYS}), dispositions);
  EXPECT_EQ(2, closed);
}

TEST(LogFileTest, LoggingKeepsTheLastError) {
  LogCapture log(true);
  PATCH_IMPORT(changesWriting, WriteFile, [](auto original, auto... arguments) {
    const BOOL isWritten = original(arguments...);
    SetLastError(ERROR_DISK_FULL);
    return isWritten;
  });
  PATCH_IMPORT(changesChoosing, SHGetFolderPathA, [](auto original, auto... arguments) {
    const HRESULT hr = original(arguments...);
    SetLastError(ERROR_DISK_FULL);
    return hr;
  });
  PATCH_IMPORT(exists, GetFileAttributesA, [](auto, const char*) { return DWORD{FILE_ATTRIBUTE_DIRECTORY}; });
  const std::function<void()> calls[] = {
      [] { LogError(HERE, E_FAIL, "a"); }, [] { LogErrorW(HERE, E_FAIL, L"a"); }, [] { LogErrorTrace(HERE, E_FAIL); },
      [] { LogText("a"); }, [] { SetLogFileName(L"other.xml"); }};
  for (const std::function<void()>& call : calls) {
    SetLastError(4711);
    call();
    EXPECT_EQ(4711u, GetLastError()) << &call - calls;
  }
}

}  // namespace
