#include "advice/Explanation.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <new>

#include "advice/Document.h"
#include "advice/KeptLog.h"
#include "advice/Words.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "support/PermitFile.h"
#include "support/Seed.h"

namespace {

class ExplanationTest : public testing::Test {
 protected:
  Answer Ask(QuestionKind kind, const std::wstring& asked, FolderKind folderKind = FolderKind::Path) {
    if (!document) {
      permit.Write();
      document = std::make_unique<PermitDocument>(WideFromAnsi(permit.Path().c_str()));
    }
    return Explain(*document, {kind, asked, folderKind});
  }

  std::string NearestTo(const std::wstring& url) {
    const Answer answer = Ask(QuestionKind::Source, url);
    return answer.nearest ? answer.nearest->entry->text + " " + NameOf(answer.nearest->reason) : "";
  }

  // What is said of a folder for which there is no answer; empty when there is one.
  std::string WhyUnanswered(const std::wstring& asked, FolderKind folderKind) {
    try {
      Ask(QuestionKind::Folder, asked, folderKind);
      return {};
    } catch (const Unanswered& reason) {
      return reason.what();
    }
  }

  PermitFile permit;
  std::unique_ptr<PermitDocument> document;
};

TEST_F(ExplanationTest, NamesTheFirstEntryThatPermits) {
  permit.URL("http://b/").URL("http://a/").URL("http://a/x/").Extension("txt");
  const Answer answer = Ask(QuestionKind::Manifest, L"HTTP://a/x/m.xml");
  EXPECT_TRUE(answer.isPermitted);
  EXPECT_EQ("http://a/x/m.xml", answer.understood);
  ASSERT_NE(nullptr, answer.by);
  EXPECT_EQ("http://a/", answer.by->text);
  EXPECT_FALSE(answer.nearest);
}

TEST_F(ExplanationTest, NamesTheNearestEntryOfARefusal) {
  permit.URL("C:\\x\\").URL("https://a/x/").URL("http://b/x/").URL("http://a/z/").URL("http://a/x/y/").URL("http://a/X/");
  permit.Extension("txt");
  EXPECT_EQ("http://a/X/ case-differs", NearestTo(L"http://A/X/f"));
}

TEST_F(ExplanationTest, PrefersWhatDiffersLeast) {
  permit.URL("C:\\x\\").URL("http://b/x/").URL("http://a/z/").URL("http://a/x/y/").Extension("txt");
  EXPECT_EQ("http://a/x/y/ entry-longer", NearestTo(L"http://a/x/f"));
  EXPECT_EQ("http://a/z/ path-differs", NearestTo(L"http://a/q/f"));
  EXPECT_EQ("http://b/x/ host-differs", NearestTo(L"http://c/x/f"));
  EXPECT_EQ("http://a/z/ scheme-differs", NearestTo(L"https://a/z/f"));
  EXPECT_EQ("C:\\x\\ path-differs", NearestTo(L"C:\\y\\f"));
}

TEST_F(ExplanationTest, TheFirstOfEquallyNearEntriesIsNamed) {
  permit.URL("http://b/").URL("http://c/").Extension("txt");
  EXPECT_EQ("http://b/ host-differs", NearestTo(L"http://a/f"));
}

TEST_F(ExplanationTest, AnswersForExtensionsAndFolders) {
  permit.URL("http://a/").Extension(".txt").Extension("exe").Folder("Path", "C:\\Apps");
  EXPECT_EQ("dot-in-entry", std::string(NameOf(Ask(QuestionKind::Extension, L"TXT").nearest->reason)));
  EXPECT_TRUE(Ask(QuestionKind::Extension, L"EXE").isPermitted);
  const Answer folder = Ask(QuestionKind::Folder, L"c:\\apps2", FolderKind::Path);
  EXPECT_TRUE(folder.isPermitted);
  EXPECT_EQ("Path=c:\\apps2", folder.asked);
  EXPECT_EQ("c:\\apps2", folder.understood);
  const Answer personal = Ask(QuestionKind::Folder, L"", FolderKind::Personal);
  EXPECT_FALSE(personal.isPermitted);
  EXPECT_EQ("Personal", personal.asked);
  EXPECT_NE("", personal.understood);
}

TEST_F(ExplanationTest, WithoutEntriesNothingIsNearest) {
  permit.URL("http://a/").Extension("txt");
  const Answer answer = Ask(QuestionKind::Folder, L"", FolderKind::Temp);
  EXPECT_FALSE(answer.isPermitted);
  EXPECT_FALSE(answer.nearest);
}

TEST_F(ExplanationTest, AFolderThatCannotBeResolvedIsAnUnansweredQuestion) {
  permit.URL("http://a/").Extension("txt").Folder("Temp");
  EXPECT_EQ("'Temp=" + std::string(300, 'x') + "' is longer than the module can use.",
            WhyUnanswered(std::wstring(300, L'x'), FolderKind::Temp));
  PATCH_IMPORT(none, SHGetFolderPathA, [](auto, auto...) -> HRESULT { return E_FAIL; });
  EXPECT_EQ("'Personal' cannot be understood: " + ReasonText(E_FAIL), WhyUnanswered(L"", FolderKind::Personal));
}

// A URL of any length is no trouble; without memory there is no answer.
TEST_F(ExplanationTest, WithoutMemoryForAURLThereIsNoAnswer) {
  permit.URL("http://a/").Extension("txt");
  EXPECT_TRUE(Ask(QuestionKind::Source, L"http://a/" + std::wstring(100000, L'x')).isPermitted);
  PATCH_IMPORT(none, WideCharToMultiByte, FailWith(0, ERROR_NOT_ENOUGH_MEMORY));
  for (const QuestionKind kind : {QuestionKind::Manifest, QuestionKind::Source, QuestionKind::Extension})
    EXPECT_THROW(Ask(kind, L"http://b/c"), std::bad_alloc) << NameOf(kind);
}

TEST_F(ExplanationTest, UserNamesAndPasswordsAreNotShown) {
  permit.URL("http://a/").Extension("txt");
  const Answer answer = Ask(QuestionKind::Source, L"http://user:secret@b/f");
  EXPECT_EQ("http://b/f", answer.asked);
  EXPECT_EQ("http://b/f", answer.understood);
  EXPECT_EQ(std::string::npos, answer.nearest->message.find("secret"));
}

TEST_F(ExplanationTest, NothingIsWrittenIntoTheLog) {
  permit.URL("http://a/").Extension("txt");
  const LogCapture log;
  Ask(QuestionKind::Source, L"http://b/f");
  Ask(QuestionKind::Source, L"");
  EXPECT_EQ("", log.Text());
}

// 20 files of 100 entries and 50 questions each: every entry is compared with every question.
TEST(ManyExplanationsTest, AgreeWithTheModule) {
  static const std::vector<std::string> parts = {"a", "b", "A", "ab"};
  Dice dice;
  const auto url = [&] {
    std::string text = dice.Roll(2) ? "http://" : "https://";
    for (std::size_t count = 1 + dice.Roll(4); count > 0; --count)
      text += dice.Choose(parts) + "/";
    return text;
  };
  for (int file = 0; file < 20; ++file) {
    PermitFile permit;
    for (int i = 0; i < 100; ++i)
      permit.URL("https://long/" + url().substr(8) + url().substr(8));
    permit.URL(url()).Extension("txt").Write();
    const PermitDocument document(WideFromAnsi(permit.Path().c_str()));
    ASSERT_TRUE(document.IsUsable());
    for (int i = 0; i < 50; ++i) {
      const std::wstring asked = WideFromAnsi(((dice.Roll(2) ? "https://long/" : "") + url()).c_str());
      const CSourceURL candidate(asked.c_str(), SourceRole::Command, nullptr);
      const PermitEntry* expected = nullptr;
      for (const PermitEntry& entry : document.Entries()) {
        if (!expected && entry.kind == EntryKind::URL && entry.item->Compare(&candidate) == 0)
          expected = &entry;
      }
      const KeptLog log;
      const Answer answer = Explain(document, {QuestionKind::Source, asked, FolderKind::Path});
      ASSERT_EQ(expected, answer.by) << Utf8(asked);
      ASSERT_EQ(expected != nullptr, document.Permissions()->IsSourceURLPermitted(&candidate) == S_OK);
      ASSERT_EQ(expected == nullptr, answer.nearest.has_value());
    }
  }
}

}  // namespace
