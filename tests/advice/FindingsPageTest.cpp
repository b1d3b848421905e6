// docs/findings.md has every code with its level, in order, and its examples have what they show.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "FakeSurroundings.h"
#include "FindingSupport.h"
#include "ManifestSupport.h"
#include "advice/ManifestFindings.h"
#include "advice/PermitFindings.h"
#include "advice/Words.h"
#include "support/PermitFile.h"

namespace {

struct Section {
  std::string code;
  std::string level;
  std::vector<std::string> examples;
};

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  for (std::size_t start = 0; start != std::string::npos;) {
    const std::size_t end = text.find(separator, start);
    parts.push_back(text.substr(start, end == std::string::npos ? end : end - start));
    start = end == std::string::npos ? end : end + separator.size();
  }
  return parts;
}

// "`code` (level ...)", and the blocks below.
Section SectionOf(const std::string& text) {
  Section section;
  std::smatch heading;
  const std::string line = text.substr(0, text.find('\n'));
  EXPECT_TRUE(std::regex_match(line, heading, std::regex("`([a-z-]+)` \\((error|warning|note)[a-z, ]*\\)"))) << line;
  section.code = heading[1];
  section.level = heading[2];
  const std::vector<std::string> blocks = Split(text, "\n```xml\n");
  for (std::size_t i = 1; i < blocks.size(); ++i)
    section.examples.push_back(blocks[i].substr(0, blocks[i].find("\n```")));
  return section;
}

std::vector<Section> Sections() {
  std::string page = ReadWholeFile(ProjectFile("docs/findings.md"));
  page.erase(std::remove(page.begin(), page.end(), '\r'), page.end());
  const std::vector<std::string> texts = Split(page, "\n### ");
  std::vector<Section> sections;
  for (std::size_t i = 1; i < texts.size(); ++i)
    sections.push_back(SectionOf(texts[i]));
  return sections;
}

TEST(FindingsPageTest, HasEveryCodeWithItsLevel) {
  std::vector<FindingKind> kinds = PermitFindingKinds();
  kinds.insert(kinds.end(), ManifestFindingKinds().begin() + kSharedFindingKinds, ManifestFindingKinds().end());
  const std::vector<Section> sections = Sections();
  ASSERT_EQ(kinds.size(), sections.size());
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    EXPECT_EQ(kinds[i].code, sections[i].code);
    EXPECT_EQ(NameOf(kinds[i].level), sections[i].level) << kinds[i].code;
  }
  for (int i = 0; i < kSharedFindingKinds; ++i)
    EXPECT_STREQ(kinds[i].code, ManifestFindingKinds()[i].code);
}

// The examples tell of a machine on which this is so; its startup folders are those of this one.
class ExampleSurroundings final : public Surroundings {
 public:
  std::string WriterOf(const std::wstring& path) const override { return path == L"C:\\Packages" ? "Users" : ""; }
  std::string NeighbourOf(const std::wstring& folder) const override { return folder == L"C:\\Data" ? "Database" : ""; }
  std::vector<NamedFolder> GuardedFolders() const override { return ThisMachinesSurroundings().GuardedFolders(); }
  std::vector<NamedFolder> StartupFolders() const override { return ThisMachinesSurroundings().StartupFolders(); }
  std::wstring ProfilesFolder() const override { return L"C:\\Users"; }
  bool IsProgram(const std::string& extension) const override { return ThisMachinesSurroundings().IsProgram(extension); }
};

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// What an example does not show is sound.
Findings FindingsOfEntries(const std::string& entries) {
  const bool hasURL = Holds(entries, "<URL>");
  const bool hasExtension = Holds(entries, "<Extension>");
  const std::string url = hasURL ? entries : "<URL>https://sound/apps/</URL>";
  const std::string extension = hasExtension ? entries : "<Extension>sound</Extension>";
  const std::string folder = hasURL || hasExtension ? "<InternetCache/>" : entries;
  PermitFile permit;
  permit.Write(
      "<?xml version=\"1.0\"?>\n<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">\n<VantorPermissions "
      "version=\"1.0\"><Source>" +
      url + extension + "</Source><Destination>" + folder + "</Destination></VantorPermissions>");
  const PermitDocument document(WideFromAnsi(permit.Path().c_str()));
  EXPECT_TRUE(document.IsUsable()) << entries;
  return FindingsOf(document, ExampleSurroundings());
}

Findings FindingsOfExample(const std::string& example) {
  if (!Holds(example, "<Copy>"))
    return FindingsOfEntries(example);
  const ManifestFile file(ManifestOf(example));
  return FindingsOf(ManifestDocument(file.Path()), ExampleSurroundings());
}

// The first example of a section has its finding, the others are mended.
TEST(FindingsPageTest, TheExamplesHaveWhatTheyShow) {
  int examples = 0;
  for (const Section& section : Sections()) {
    for (std::size_t i = 0; i < section.examples.size(); ++i, ++examples) {
      const Findings found = OfCode(FindingsOfExample(section.examples[i]), section.code);
      EXPECT_EQ(i == 0 ? 1u : 0u, found.size()) << section.code << "\n" << section.examples[i];
      if (!found.empty()) {
        EXPECT_EQ(section.level, NameOf(found[0].level)) << section.code;
      }
    }
  }
  EXPECT_GE(examples, 50);
}

// Paths of the user who runs the tests are not written down.
std::string WithoutProfiles(std::string message) {
  const std::string start = "'" + Utf8(ThisMachinesSurroundings().ProfilesFolder()) + "\\";
  for (std::size_t place = 0; (place = message.find('\'', place)) != std::string::npos; ++place) {
    if (_strnicmp(message.c_str() + place, start.c_str(), start.size()) == 0)
      message.replace(place, message.find('\'', place + 1) + 1 - place, "PATH");
  }
  return message;
}

// messages.txt has what is said of the first example of each section.
TEST(FindingsPageTest, TheMessagesAreThoseThatAreWrittenDown) {
  std::string said;
  for (const Section& section : Sections()) {
    if (!section.examples.empty()) {
      for (const Finding& finding : OfCode(FindingsOfExample(section.examples[0]), section.code))
        said += section.code + "\n  " + WithoutProfiles(finding.message) + "\n";
    }
  }
  std::string written = ReadWholeFile(ProjectFile("tests/advice/messages.txt"));
  written.erase(std::remove(written.begin(), written.end(), '\r'), written.end());
  EXPECT_EQ(written, said);
}

// These need a machine or a document that no short example can show.
TEST(FindingsPageTest, AlmostEveryCodeHasAnExample) {
  std::string without;
  for (const Section& section : Sections())
    without += section.examples.empty() ? section.code + " " : "";
  EXPECT_EQ("invalid file-writable folder-unresolved ", without);
}

}  // namespace
