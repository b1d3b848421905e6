// The text of a destination: what is permitted is a prefix of the resolved folder, and nothing is written anywhere else.

#include <gtest/gtest.h>

#include <algorithm>

#include "names/NamesFixture.h"

namespace {

class FolderNamesTest : public NamesTest, public testing::WithParamInterface<NameRow> {};

TEST_P(FolderNamesTest, AreWrittenIntoOrRefused) {
  ExpectOutcome(GetParam());
}

const std::string kSource = "{server}/a.txt";

std::string Element(const std::string& kind, const std::string& text) {
  return "<" + kind + ">" + text + "</" + kind + ">";
}

NameRow Written(const char* name, const std::string& kind, const std::string& text, Lines came) {
  return {name, kSource, Element(kind, text), "", std::move(came)};
}

NameRow NotPermitted(const char* name, const std::string& kind, const std::string& text, const std::string& resolved) {
  return {
      name, kSource, Element(kind, text), "0x80070005 Destination folder '" + resolved + "' doesn't have permission.", {}};
}

NameRow NotPermitted(const char* name, const std::string& text) {
  return NotPermitted(name, "Path", text, text);
}

NameRow NotMade(const char* name, const std::string& text, const std::string& code) {
  return {name, kSource, Element("Path", text), code + " Failed to create path '" + text + "'.", {}};
}

INSTANTIATE_TEST_SUITE_P(
    Roots, FolderNamesTest,
    testing::Values(NotPermitted("LongForm", "\\\\?\\{folder}"), NotPermitted("DeviceForm", "\\\\.\\{folder}"),
                    NotPermitted("ObjectForm", "\\??\\{folder}"), NotPermitted("SlashedLongForm", "//?/{folder}"),
                    NotPermitted("Network", "\\\\localhost\\share\\x"),
                    NotPermitted("LongNetwork", "\\\\?\\UNC\\localhost\\share\\x"), NotPermitted("Pipe", "\\\\.\\pipe"),
                    NotPermitted("DriveRelative", "C:x"), NotPermitted("OnlyADrive", "C:"),
                    NotPermitted("RootRelative", "\\x"), NotPermitted("Bare", "x"), NotPermitted("FolderAbove", ".."),
                    NotPermitted("Device", "NUL"), NotPermitted("Percent", "%n%s%1")),
    [](const auto& row) { return row.param.name; });

// As text the permitted folder begins these, and that is what is asked; where the system takes them is the author's to
// answer for (docs/security.md).
INSTANTIATE_TEST_SUITE_P(
    Prefixes, FolderNamesTest,
    testing::Values(
        Written("Below", "Path", "{folder}\\x\\y", {"{folder}\\x", "{folder}\\x\\y", "{folder}\\x\\y\\a.txt"}),
        Written("BelowBySlash", "Path", "{folder}/x", {"{folder}\\x", "{folder}\\x\\a.txt"}),
        Written("DotsWithinTheFolder", "Path", "{folder}\\x\\..\\y", {"{folder}\\y", "{folder}\\y\\a.txt"}),
        Written("DotsOutOfTheFolder", "Path", "{folder}\\..\\outside", {"{area}\\outside", "{area}\\outside\\a.txt"}),
        Written("TwoSeparators", "Path", "{folder}\\\\x", {"{folder}\\x", "{folder}\\x\\a.txt"}),
        Written("PercentBelow", "Path", "{folder}\\%n%s%1", {"{folder}\\%n%s%1", "{folder}\\%n%s%1\\a.txt"}),
        Written("BlankAtTheEnd", "Path", "{folder}\\x ", {"{folder}\\x", "{folder}\\x\\a.txt"}),
        NotPermitted("DotsFromTheFolderAbove", "{area}\\x\\..\\permitted"),
        NotPermitted("SlashesInstead", "{area}/permitted")),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Characters, FolderNamesTest,
    testing::Values(NotMade("Star", "{folder}\\a*", "0x8007007b"), NotMade("Quote", "{folder}\\a\"b", "0x8007007b"),
                    NotMade("Pipe", "{folder}\\a|b", "0x8007007b"),
                    NotMade("BelowADevice", "{folder}\\nul\\x", "0x80070003")),
    [](const auto& row) { return row.param.name; });

// The folders of the other kinds are resolved before they are compared.
INSTANTIATE_TEST_SUITE_P(
    Resolved, FolderNamesTest,
    testing::Values(
        Written("TempBelow", "Temp", "permitted\\x",
                {"{temp}\\permitted", "{temp}\\permitted\\x", "{temp}\\permitted\\x\\a.txt"}),
        Written("TempThroughDots", "Temp", "x\\..\\permitted", {"{temp}\\permitted", "{temp}\\permitted\\a.txt"}),
        NotPermitted("TempAbove", "Temp", "..\\x", "{above temp}\\x"),
        NotPermitted("TempOutOfThePermitted", "Temp", "permitted\\..\\x", "{temp}\\x"),
        NotPermitted("TempOutAtTheEnd", "Temp", "permitted\\..", "{temp}"),
        NotPermitted("TempAboveTheRoot", "Temp", "..\\..\\..\\..\\..\\..\\x", "C:\\x"),
        NotPermitted("TempWithADrive", "Temp", "D:\\x", "D:\\x"),
        NotPermitted("TempOfADevice", "Temp", "NUL", "{temp}\\NUL"),
        Written("PersonalBelow", "Personal", "permitted\\x",
                {"{personal}\\permitted", "{personal}\\permitted\\x", "{personal}\\permitted\\x\\a.txt"}),
        NotPermitted("PersonalAbove", "Personal", "..\\x", "{above personal}\\x"),
        NotPermitted("PersonalOutOfThePermitted", "Personal", "permitted\\..\\x", "{personal}\\x"),
        NotPermitted("PersonalOutAtTheEnd", "Personal", "permitted\\..", "{personal}"),
        NotPermitted("PersonalWithADrive", "Personal", "D:\\x", "D:\\x"),
        NotPermitted("PersonalOfTheNetwork", "Personal", "\\\\localhost\\share", "\\\\localhost\\share"),
        NotPermitted("VantorUserAbove", "VantorUser", "..\\x", "{personal}\\x"),
        NotPermitted("VantorDataAboveTheRoot", "VantorData", "..\\..\\..\\..\\..\\..\\x", "C:\\x")),
    [](const auto& row) { return row.param.name; });

// Text of this length takes the path of a folder to `length` characters.
std::string FolderOfLength(const std::string& base, std::size_t length) {
  std::string path = base;
  while (path.size() + 60 < length)
    path += "\\" + std::string(40, 'd');
  return path + "\\" + std::string(length - path.size() - 1, 'e');
}

class LongFolderTest : public NamesTest, public testing::WithParamInterface<std::size_t> {};

// What is left of a longer text.
std::string CutToTheLongestPath(const std::string& text) {
  const std::string path = text.substr(0, 259);
  return path.back() == '\\' ? path.substr(0, 258) : path;
}

// The folders from below `base` to `path`.
Lines FoldersBelow(const std::string& base, const std::string& path) {
  Lines folders;
  for (std::size_t end = base.size(); end < path.size();) {
    end = std::min(path.find('\\', end + 1), path.size());
    folders.push_back(path.substr(0, end));
  }
  return folders;
}

// A longer text is cut; the path that is left has the permitted folder in front of it all the same. There is room for the
// folder, and none for a file in it.
TEST_P(LongFolderTest, StaysBelowThePermittedFolder) {
  const std::string text = FolderOfLength(folder, GetParam());
  const std::string path = Shown(CutToTheLongestPath(text));
  EXPECT_HRESULT(S_FALSE, RunCommand(kSource, Element("Path", text)));
  EXPECT_EQ(FoldersBelow("{folder}", path), Changes());
  EXPECT_EQ(Told("0x800700ce Creating '" + path + "\\a.txt' failed."), Told());
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt"}), server.Asked());
  ExpectLogInOrder();
}

// A folder that cannot be resolved leaves the Internet cache, which is not permitted.
TEST_P(LongFolderTest, OfAnotherKindIsRefusedWhole) {
  control->SetEnableLogDebug(VARIANT_FALSE);
  const std::string text = FolderOfLength("permitted", GetParam());
  EXPECT_HRESULT(S_FALSE, RunCommand(kSource, Element("Temp", text)));
  EXPECT_EQ(Lines{}, Changes());
  EXPECT_EQ(Told("0x80070005 Destination folder '{cache}' doesn't have permission."), Told());
  EXPECT_EQ(Lines{"GET /control-run.xml"}, server.Asked());
  ExpectLogInOrder();
}

INSTANTIATE_TEST_SUITE_P(Lengths, LongFolderTest, testing::Values(259, 260, 261, 1100, 70000));

}  // namespace
