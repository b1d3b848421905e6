// The document types for editors and checkers (share/dtd) say what the module's say. After a change of the module's,
//
//   NORVIK_WRITE_DTDS=1 scripts/run-windows-program build/x64/tests/transfer_tests.exe --gtest_filter='ExternalSubsetTest.*'
//
// writes them anew.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <string>

#include "support/Files.h"
#include "support/Replaced.h"
#include "transfer/DocumentType.h"

namespace {

// What stands between the brackets of a document type declaration, without the line end behind the first.
std::string SubsetOf(const std::string& declaration) {
  const std::size_t start = declaration.find("[\n") + 2;
  return declaration.substr(start, declaration.rfind("]>") - start);
}

// Alternatives that begin with the same elements need a reader that looks ahead, which XML asks of nobody: some checkers
// then check nothing. So those that differ in one element become one, with these elements as its alternatives.
std::string WithoutLookingAhead(std::string subset) {
  const std::regex alternative(R"(\(FileName\?, (\w+), Attributes\?, IfFileExists\?\))");
  std::string all, folders;
  for (std::sregex_iterator match(subset.begin(), subset.end(), alternative), end; match != end; ++match) {
    all += (all.empty() ? "" : " | ") + match->str();
    folders += (folders.empty() ? "" : " | ") + match->str(1);
  }
  EXPECT_NE(std::string::npos, subset.find(all + ")>\n")) << "the alternatives do not stand side by side";
  return Replaced(subset, all, "(FileName?, (" + folders + "), Attributes?, IfFileExists?)");
}

void ExpectFile(const std::string& name, const std::string& expected) {
  const std::string path = ProjectFile("share/dtd/" + name);
  if (std::getenv("NORVIK_WRITE_DTDS"))
    WriteWholeFile(path, expected);
  EXPECT_EQ(expected, ReadWholeFile(path));
}

TEST(ExternalSubsetTest, TheManifestsSaysWhatTheModulesDoes) {
  const std::string subset = SubsetOf(kManifestDTD);
  EXPECT_EQ(0u, subset.find("<!ELEMENT VantorManifest "));
  ExpectFile("manifest.dtd", WithoutLookingAhead(subset));
}

TEST(ExternalSubsetTest, ThePermissionFilesIsTheModulesByteForByte) {
  const std::string subset = SubsetOf(kPermitDTD);
  EXPECT_EQ(0u, subset.find("<!ELEMENT VantorPermissions "));
  ExpectFile("permit.dtd", subset);
}

TEST(ExternalSubsetTest, AlternativesBecomeOne) {
  const std::string before =
      "<!ELEMENT D (C | (FileName?, A, Attributes?, IfFileExists?) | (FileName?, B, Attributes?, IfFileExists?))>\n";
  EXPECT_EQ("<!ELEMENT D (C | (FileName?, (A | B), Attributes?, IfFileExists?))>\n", WithoutLookingAhead(before));
}

}  // namespace
