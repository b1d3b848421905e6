#include <gtest/gtest.h>

#include "permissions/SourceDocument.h"
#include "permissions/SourcePermission.h"
#include "support/AllocationFailure.h"
#include "support/HResult.h"
#include "support/HeapBalance.h"
#include "support/LogCapture.h"

namespace {

using Lines = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

struct ExtensionRow {
  const char* name;
  const char* entry;
  const char* candidate;
  bool isPermitted;
};

class ExtensionQuestionRowTest : public testing::TestWithParam<ExtensionRow> {};

TEST_P(ExtensionQuestionRowTest, TheEntryIsTheWholeCandidate) {
  const ExtensionRow& row = GetParam();
  const CSourcePermission permission(SourceDocument({"http://host/"}, {row.entry}).Get(), nullptr);
  EXPECT_HRESULT(row.isPermitted ? S_OK : E_ACCESSDENIED, permission.IsExtensionPermitted(row.candidate));
}

const ExtensionRow kExtensionRows[] = {
    {"Equal", "exe", "exe", true},
    {"UpperCase", "exe", "EXE", true},
    {"MixedCase", "exe", "Exe", true},
    {"EntryInUpperCase", "EXE", "exe", true},
    {"EntryWithADot", ".exe", "exe", false},
    {"EntryWithADotInUpperCase", ".exe", "EXE", false},
    {"CandidateWithADot", "exe", ".exe", false},
    {"CandidateIsABeginning", "exe", "ex", false},
    {"EntryIsABeginning", "exe", "exe1", false},
    {"Other", "exe", "dll", false},
    {"NoExtensionAtAll", "exe", "", false},
    {"NoExtensionWithAnEmptyEntry", "", "", true},
    {"AnExtensionWithAnEmptyEntry", "", "exe", false},
    {"Wildcard", "*", "exe", false},
    {"ABlankBehind", "exe", "exe ", false},
    {"TheNameOfACookie", "session.txt", "Session.TXT", true},
    {"CaseOfTheCodePage", "caf\xe9", "CAF\xc9", true},
};

INSTANTIATE_TEST_SUITE_P(Rows, ExtensionQuestionRowTest, testing::ValuesIn(kExtensionRows), [](const auto& row) {
  return std::string(row.param.name);
});

class ExtensionQuestionTest : public testing::Test {
 protected:
  ExtensionQuestionTest() : permission(SourceDocument({"http://host/"}, {"exe", "XML", ".dll", "100%s"}).Get(), nullptr) {}

  const CSourcePermission permission;
};

constexpr char kList[] =
    "\tPermitted source extensions:\r\n"
    "\t\texe\r\n"
    "\t\tXML\r\n"
    "\t\t.dll\r\n"
    "\t\t100%s\r\n";

std::string Message(const LogCapture& log) {
  const std::string text = log.Text();
  const std::size_t start = text.find("\r\n\t");
  return start == std::string::npos ? text : text.substr(start + 2);
}

TEST_F(ExtensionQuestionTest, AnyEntryPermits) {
  LogCapture log;
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("exe"));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("xml"));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted(".DLL"));
  EXPECT_EQ("", log.Text());
}

TEST_F(ExtensionQuestionTest, ARefusalShowsTheWholeList) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsExtensionPermitted("Dll"));
  EXPECT_EQ(std::string("\tExtension 'Dll' is not permitted.\r\n") + kList, Message(log));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("ERROR", log.Entries()[0].level);
  EXPECT_HRESULT(E_ACCESSDENIED, log.Entries()[0].code);
}

TEST_F(ExtensionQuestionTest, ARefusalShowsTheSameWithDebugLogging) {
  LogCapture log(true);
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsExtensionPermitted(""));
  EXPECT_EQ(std::string("\tExtension '' is not permitted.\r\n") + kList, Message(log));
  ASSERT_EQ(1u, log.Entries().size());
  EXPECT_EQ("SourcePermission", log.Entries()[0].file);
}

TEST_F(ExtensionQuestionTest, AnExtensionIsNoFormat) {
  LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsExtensionPermitted("%s%n%d"));
  EXPECT_EQ(std::string("\tExtension '%s%n%d' is not permitted.\r\n") + kList, Message(log));
}

TEST_F(ExtensionQuestionTest, AnOverlongExtensionIsRefused) {
  LogCapture log(false);
  const std::string extension(100000, 'e');
  EXPECT_HRESULT(E_ACCESSDENIED, permission.IsExtensionPermitted(extension.c_str()));
  EXPECT_EQ("\tExtension '" + std::string(1023 - 11, 'e') + "\r\n" + kList, Message(log));
}

// Extensions are spoken of as URLs here: administrators know the line by these words.
TEST_F(ExtensionQuestionTest, WithoutACandidateThereIsNoAnswer) {
  LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, permission.IsExtensionPermitted(nullptr));
  EXPECT_EQ(Lines{"ERROR 0x80070057 Missing source URL parameter."}, log.Messages());
  EXPECT_EQ(1u, log.Entries().size());
}

TEST_F(ExtensionQuestionTest, WithoutAListThereIsNoAnswer) {
  const CSourcePermission empty(SourceDocument({"http://host/"}, {}).Get(), nullptr);
  LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, empty.IsExtensionPermitted("exe"));
  EXPECT_HRESULT(E_UNEXPECTED, empty.IsExtensionPermitted(nullptr));
  EXPECT_EQ(Lines(2, "ERROR 0x8000ffff Missing permitted URL list."), log.Messages());
  EXPECT_EQ(2u, log.Entries().size());
  const CSourceURL url(L"http://host/tool.exe", SourceRole::Command, nullptr);
  EXPECT_HRESULT(S_OK, empty.IsURLPermitted(&url));
}

// The question makes an item, and a copy of the text for it.
TEST_F(ExtensionQuestionTest, WithoutMemoryThereIsNoAnswer) {
  Codes answers;
  std::vector<Lines> messages;
  std::vector<Codes> traces;
  HRESULT hr = S_OK;
  auto log = std::make_unique<LogCapture>();
  const int allocations = ForEachFailedAllocation([&] { hr = permission.IsExtensionPermitted("exe"); },
                                                  [&] {
    answers.push_back(hr);
    messages.push_back(log->Messages());
    traces.push_back(log->ErrorTraces());
    log.reset();
    log = std::make_unique<LogCapture>();
  });
  EXPECT_EQ(2, allocations);
  EXPECT_EQ((Codes{E_OUTOFMEMORY, E_OUTOFMEMORY}), answers);
  EXPECT_EQ((std::vector<Lines>{{"ERROR 0x8007000e Failed to create source extension"}, {}}), messages);
  EXPECT_EQ((std::vector<Codes>{{}, {E_OUTOFMEMORY, E_OUTOFMEMORY}}), traces);
  EXPECT_HRESULT(S_OK, hr);
}

TEST_F(ExtensionQuestionTest, AskingLosesNoMemory) {
  const HeapBalance heap;
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("exe"));
  EXPECT_HRESULT(S_OK, permission.IsExtensionPermitted("EXE"));
  EXPECT_EQ(0, heap.Outstanding());
}

}  // namespace
