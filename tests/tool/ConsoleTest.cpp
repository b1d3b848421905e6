#include "tool/Console.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tool/FakeStreams.h"
#include "tool/ToolFixture.h"

namespace {

using StreamsTest = FakeStreamsTest;
using Pieces = std::vector<std::wstring>;

TEST_F(StreamsTest, AConsoleIsGivenCharacters) {
  Do([] {
    Print("\xC3\xA4");
    PrintError("b");
  });
  EXPECT_EQ(Pieces{L"\xE4"}, output.written);
  EXPECT_EQ(L"b", error.written.at(0));
  EXPECT_EQ("", output.bytes + error.bytes);
}

TEST_F(StreamsTest, AConsoleIsGivenALongTextInPieces) {
  Do([] { Print(std::string(8000, 'a') + std::string(8000, 'b') + "c"); });
  EXPECT_EQ((Pieces{std::wstring(8000, L'a'), std::wstring(8000, L'b'), L"c"}), output.written);
}

TEST_F(StreamsTest, AFileIsGivenItsBytesHoweverFewItTakes) {
  output.isConsole = false;
  output.mostBytes = 3;
  Do([] { Print("\xC3\xA4 b c d"); });
  EXPECT_EQ("\xC3\xA4 b c d", output.bytes);
  EXPECT_EQ(Pieces{}, output.written);
}

TEST_F(StreamsTest, WhatNobodyReadsComesToAnEnd) {
  output.isConsole = false;
  output.isRead = false;
  error.isConsole = false;
  error.mostBytes = 0;
  Do([] {
    Print("a");
    PrintError("b");
  });
  EXPECT_EQ("", output.bytes + error.bytes);
}

TEST_F(StreamsTest, AConsoleThatUnderstandsItShowsColours) {
  Do([] {
    EXPECT_EQ("\x1b[32ma\x1b[0m", InColour(Colour::Green, "a"));
    EXPECT_EQ("\x1b[33ma\x1b[0m", InColour(Colour::Yellow, "a"));
    EXPECT_EQ("\x1b[31ma\x1b[0m", InColour(Colour::Red, "a"));
    EXPECT_EQ("\x1b[90ma\x1b[0m", InColour(Colour::Grey, "a"));
    EXPECT_EQ("a", InColour(Colour::None, "a"));
  });
  EXPECT_EQ(7u, output.mode) << "it was not told to, or lost what else it does";
  EXPECT_EQ(3u, error.mode);
}

TEST_F(StreamsTest, NothingElseShowsColours) {
  output.knowsSequences = false;
  Do([] { EXPECT_EQ("a", InColour(Colour::Red, "a")); });
  output.knowsSequences = true;
  output.isConsole = false;
  Do([] { EXPECT_EQ("a", InColour(Colour::Red, "a")); });
  output.isConsole = true;
  _putenv("NO_COLOR=1");
  Do([] { EXPECT_EQ("a", InColour(Colour::Red, "a")); });
  _putenv("NO_COLOR=");
  Do([] { EXPECT_NE("a", InColour(Colour::Red, "a")); });
}

TEST_F(StreamsTest, ProgressIsALineThatTheNextTextTakesAway) {
  const std::wstring erased = L"\r\x1b[K";
  Do([] {
    ShowProgress("1 of 2");
    ShowProgress(std::string(120, 'x'));
    ShowProgress(Repeated("\xC3\xA4", 100));
    Print("done");
    Print("more");
  });
  EXPECT_EQ((Pieces{erased + L"1 of 2", erased + std::wstring(99, L'x'), erased + std::wstring(99, L'\xE4'), erased}),
            error.written);
  EXPECT_EQ((Pieces{L"done", L"more"}), output.written);
  EXPECT_EQ(7u, error.mode);
  error.written.clear();
  Do([] {
    ShowProgress("1 of 2");
    PrintError("failed");
  });
  EXPECT_EQ((Pieces{erased + L"1 of 2", erased, L"failed"}), error.written);
}

TEST_F(StreamsTest, AFileHasNoProgress) {
  error.isConsole = false;
  Do([] {
    ShowProgress("1 of 2");
    Print("done");
  });
  EXPECT_EQ("", error.bytes);
  EXPECT_EQ(Pieces{}, error.written);
  error.isConsole = true;
  error.knowsSequences = false;
  Do([] { ShowProgress("1 of 2"); });
  EXPECT_EQ(Pieces{}, error.written);
}

TEST(ConsoleTest, ParagraphsAreIndentedAndFitIntoAHundredColumns) {
  EXPECT_EQ("  a b\n", Paragraph(2, " a\r\n\tb "));
  EXPECT_EQ("", Paragraph(2, " \n"));
  EXPECT_EQ(std::string(50, 'x') + " " + std::string(49, 'y') + "\nz\n",
            Paragraph(0, std::string(50, 'x') + " " + std::string(49, 'y') + " z"));
  EXPECT_EQ("a\n" + std::string(150, 'x') + "\nb\n", Paragraph(0, "a " + std::string(150, 'x') + " b"));
}

TEST(ConsoleTest, AColumnIsACharacterAndNotAByte) {
  const std::string word = Repeated("\xC3\xA4", 49);
  EXPECT_EQ(word + " " + word + "\n", Paragraph(0, word + " " + word));
}

}  // namespace
