// Manifests that attack: they are refused or done, and nothing that they name is ever asked for or read.

#include <gtest/gtest.h>

#include "hostile/HostileFixture.h"
#include "support/Turns.h"

namespace {

constexpr char kInvalid[] = "ERROR 0x80004005 Invalid XML document ('";
constexpr char kNotXML[] = "ERROR 0x80004005 Not an XML document ('";

enum class Outcome { Done, RefusedByItsHead, RefusedByTheParser };

struct AttackRow {
  const char* name;
  std::string document;
  Outcome outcome = Outcome::RefusedByTheParser;
  Lines head = {};  // what is told about the document's head
};

class AttackingManifestTest : public HostileTest, public testing::WithParamInterface<AttackRow> {
 protected:
  AttackingManifestTest() {
    WriteWholeFile(documents.File("canary.txt"), "CANARY");
    server.Answer("/evil.dtd", Response().Body("<!ELEMENT VantorManifest ANY><!ENTITY e 'CANARY'>"));
    server.Answer("/a.txt", Response().Body("a"));
  }

  bool IsDone() const { return GetParam().outcome == Outcome::Done; }

  void ExpectOutcome(HRESULT hr, Lines asked) const {
    EXPECT_HRESULT(IsDone() ? S_OK : E_FAIL, hr);
    EXPECT_EQ(Expected(), Told());
    if (IsDone())
      asked.push_back("GET /a.txt");
    EXPECT_EQ(asked, server.Asked());
    EXPECT_EQ(IsDone() ? "a.txt" : "", NamesIn(destination.Path()));
    EXPECT_EQ(IsDone() ? std::optional<std::string>("a") : std::nullopt, Written("a.txt"));
    if (FileExistsAt(LogCapture::PathOf(kRunLog))) {
      EXPECT_EQ(std::string::npos, ReadWholeFile(LogCapture::PathOf(kRunLog)).find("CANARY"));
    }
  }

 private:
  Lines Expected() const {
    Lines lines = GetParam().head;
    if (GetParam().outcome == Outcome::RefusedByItsHead)
      lines.push_back("ERROR 0x80004005 Failed to copy '{manifest}' to '{cached}'.");
    if (GetParam().outcome == Outcome::RefusedByTheParser) {
      lines.push_back("ERROR 0x80004005 XML Parsing Error in '{cached}'");
      lines.push_back("ERROR 0x80004005 Failed to read XML document '{cached}'.");
    }
    if (!IsDone())
      lines.push_back(RunFailed("0x80004005"));
    return lines;
  }
};

TEST_P(AttackingManifestTest, FromTheWebReachesNothing) {
  const HRESULT hr = RunAnswered(Response().Body(Filled(GetParam().document)));
  ExpectOutcome(hr, {"GET /control-run.xml"});
}

TEST_P(AttackingManifestTest, FromAFileReachesNothing) {
  ExpectOutcome(RunLocal(Filled(GetParam().document)), {});
}

// The plan says what would become of the command.
const bool kArePlansShared = ShareCases("AttackingManifestTest", "IsCheckedAndPlannedWithoutReachingAnything");

TEST_P(AttackingManifestTest, IsCheckedAndPlannedWithoutReachingAnything) {
  WriteWholeFile(documents.File("attack.xml"), Filled(GetParam().document));
  const ProgramResult checked = RunTool({L"check", L"attack.xml"});
  EXPECT_EQ(IsDone() ? 0u : 1u, checked.code) << checked.output;
  EXPECT_EQ(
      0u, checked.output.find(IsDone() ? "valid and sound: attack.xml (manifest)\n" : "not valid: attack.xml (manifest)\n"))
      << checked.output;
  EXPECT_EQ(std::string::npos, checked.output.find("CANARY")) << checked.output;
  EXPECT_EQ("", checked.errors);
  EXPECT_EQ(Lines{}, server.Asked());
  EXPECT_EQ("", NamesIn(destination.Path()));
}

const std::string kDeclaration = "<?xml version=\"1.0\"?>";
const std::string kType = "<!DOCTYPE VantorManifest>";
const std::string kCopy = "<Copy><Source>{server}/a.txt</Source><Destination><Path>{folder}</Path></Destination></Copy>";
const std::string kBody = "<VantorManifest version=\"1.0\">" + kCopy + "</VantorManifest>";
const std::string kPlain = kDeclaration + kType + kBody;
const std::string kReferring = Replaced(kBody, "/a.txt", "/a.txt?&e;");
const std::string kEvilType = "<!DOCTYPE VantorManifest [<!ENTITY e SYSTEM \"{server}/evil.dtd\">]>";
const std::string kFileType = "<!DOCTYPE VantorManifest [<!ENTITY e SYSTEM \"file:///{documents}\\canary.txt\">]>";

std::string Subset(const std::string& declarations) {
  return kDeclaration + "<!DOCTYPE VantorManifest [" + declarations + "]>" + kReferring;
}

// A billion characters, from ten declarations.
std::string BillionLaughs() {
  std::string declarations = "<!ENTITY e0 \"laughter\">";
  for (int i = 1; i < 10; ++i) {
    const std::string one = "&e" + std::to_string(i - 1) + ";";
    declarations +=
        "<!ENTITY e" + std::to_string(i) + " \"" + one + one + one + one + one + one + one + one + one + one + "\">";
  }
  return Subset(declarations + "<!ENTITY e \"&e9;\">");
}

INSTANTIATE_TEST_SUITE_P(
    Entities, AttackingManifestTest,
    testing::Values(AttackRow{"NotDeclared", kDeclaration + kType + kReferring},
                    AttackRow{"Internal", Subset("<!ENTITY e \"value\">")},
                    AttackRow{"ExternalOfTheServer", Subset("<!ENTITY e SYSTEM \"{server}/evil.dtd\">")},
                    AttackRow{"ExternalPublic", Subset("<!ENTITY e PUBLIC \"evil\" \"{server}/evil.dtd\">")},
                    AttackRow{"ExternalFile", Subset("<!ENTITY e SYSTEM \"file:///{documents}\\canary.txt\">")},
                    AttackRow{"Parameter", Subset("<!ENTITY % p SYSTEM \"{server}/evil.dtd\"> %p;")},
                    AttackRow{"ParameterInternal", Subset("<!ENTITY % p \"<!ENTITY e 'v'>\"> %p;")},
                    AttackRow{"Unparsed", Subset("<!NOTATION n SYSTEM \"{server}/evil.dtd\">")},
                    AttackRow{"Recursive", Subset("<!ENTITY e \"&f;\"><!ENTITY f \"&e;\">")},
                    AttackRow{"BillionLaughs", BillionLaughs()}),
    [](const testing::TestParamInfo<AttackRow>& row) { return std::string(row.param.name); });

// What begins an instruction and does not end it would make the module's own document type a part of that instruction.
INSTANTIATE_TEST_SUITE_P(
    Types, AttackingManifestTest,
    testing::Values(
        AttackRow{
            "ExternalType", kDeclaration + "<!DOCTYPE VantorManifest SYSTEM \"{server}/evil.dtd\">" + kBody, Outcome::Done},
        AttackRow{"PublicType", kDeclaration + "<!DOCTYPE VantorManifest PUBLIC \"evil\" \"{server}/evil.dtd\">" + kBody,
                  Outcome::Done},
        AttackRow{"SecondType", kDeclaration + kType + "<!DOCTYPE VantorManifest SYSTEM \"{server}/evil.dtd\">" + kBody},
        AttackRow{"SecondTypeWithEntities", kDeclaration + kType + kEvilType + kReferring},
        AttackRow{"TypeInAnOpenInstruction", "<?xml-a ><!DOCTYPE x>?>" + kEvilType + kReferring, Outcome::RefusedByItsHead,
                  Lines{std::string(kInvalid) + "<?xml-a >')."}},
        AttackRow{"TypeInAnOpenInstructionForAFile", "<?xml-a ><!DOCTYPE x>?>" + kFileType + kReferring,
                  Outcome::RefusedByItsHead, Lines{std::string(kInvalid) + "<?xml-a >')."}},
        AttackRow{"NoTypeBehindAnOpenInstruction", "<?xml-a ><!DOCTYPE x>?>" + kBody, Outcome::RefusedByItsHead,
                  Lines{std::string(kInvalid) + "<?xml-a >')."}},
        AttackRow{"CommentWithAType", kDeclaration + "<!-- <!DOCTYPE x> -->" + kType + kBody},
        AttackRow{"CommentWithABracket", kDeclaration + "<!-- > -->" + kType + kBody, Outcome::RefusedByItsHead,
                  Lines{std::string(kInvalid) + "  <!-- >')."}},
        AttackRow{
            "CommentWithADeclaration", kDeclaration + kType + "<!-- <?xml version=\"1.0\"?> > -->" + kBody, Outcome::Done},
        AttackRow{
            "CommentFirst", "<!-- c -->" + kType + kBody, Outcome::Done, Lines{std::string(kNotXML) + "<!-- c -->')."}}),
    [](const testing::TestParamInfo<AttackRow>& row) { return std::string(row.param.name); });

std::string WithRoot(const std::string& attributes, const std::string& content) {
  return kDeclaration + kType + "<VantorManifest version=\"1.0\" " + attributes + ">" + content + "</VantorManifest>";
}

INSTANTIATE_TEST_SUITE_P(
    References, AttackingManifestTest,
    testing::Values(
        AttackRow{"StyleSheet",
                  kDeclaration + kType + "<?xml-stylesheet type=\"text/xsl\" href=\"{server}/evil.dtd\"?>" + kBody,
                  Outcome::Done},
        AttackRow{"StyleSheetFirst", "<?xml-stylesheet type=\"text/xsl\" href=\"{server}/evil.dtd\"?>" + kType + kBody,
                  Outcome::Done},
        AttackRow{"Inclusion",
                  WithRoot("xmlns:xi=\"http://www.w3.org/2001/XInclude\"", "<xi:include href=\"{server}/evil.dtd\"/>")},
        AttackRow{"Schema", WithRoot("xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                                     "xsi:noNamespaceSchemaLocation=\"{server}/evil.dtd\"",
                                     kCopy)},
        AttackRow{"ReducedSchema", WithRoot("xmlns:a=\"x-schema:{server}/evil.dtd\"", kCopy)}),
    [](const testing::TestParamInfo<AttackRow>& row) { return std::string(row.param.name); });

std::string Encoded(const std::string& encoding) {
  return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>" + kType + kBody;
}

// UTF-16 has a zero byte in every character of the document's head: what is asked for is not found there.
std::string Sixteen(const std::string& mark, bool isBigEndian) {
  std::string bytes = mark;
  for (const char character : Encoded("UTF-16"))
    bytes += isBigEndian ? std::string(1, '\0') + character : character + std::string(1, '\0');
  return bytes;
}

const std::string kNoItem = std::string(kInvalid) + "        ').";

// Closes the declaration and opens a comment around the module's type, in characters that only UTF-7 has.
const std::string kSeven = "<?xml version=\"1.0\" encoding=\"UTF-7\" +AD8APgA8ACEALQAt-?><!DOCTYPE x>-->";

INSTANTIATE_TEST_SUITE_P(
    Encodings, AttackingManifestTest,
    testing::Values(
        AttackRow{"UTF8", Encoded("UTF-8"), Outcome::Done},
        AttackRow{"UTF8WithAMark", "\xEF\xBB\xBF" + Encoded("UTF-8"), Outcome::Done,
                  Lines{std::string(kNotXML) + "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>')."}},
        AttackRow{"UTF16Little", Sixteen("", false), Outcome::RefusedByItsHead,
                  Lines{std::string(kNotXML) + "       <').", kNoItem}},
        AttackRow{"UTF16LittleWithAMark", Sixteen("\xFF\xFE", false), Outcome::RefusedByItsHead,
                  Lines{std::string(kNotXML) + "     \xFF\xFE<').", kNoItem}},
        AttackRow{
            "UTF16Big", Sixteen("", true), Outcome::RefusedByItsHead, Lines{std::string(kNotXML) + "        ').", kNoItem}},
        AttackRow{"UTF16BigWithAMark", Sixteen("\xFE\xFF", true), Outcome::RefusedByItsHead,
                  Lines{std::string(kNotXML) + "      \xFE\xFF').", kNoItem}},
        AttackRow{"Latin1", Encoded("ISO-8859-1"), Outcome::Done},
        AttackRow{"Windows1252", Encoded("windows-1252"), Outcome::Done}, AttackRow{"Unknown", Encoded("x-nobody")},
        AttackRow{"UTF16ThatIsNone", Encoded("UTF-16")},
        AttackRow{"UTF8ThatIsNone", kDeclaration + kType + "<!-- \xE4 -->" + kBody},
        AttackRow{"UTF7AroundTheType", kSeven + kEvilType + kReferring}),
    [](const testing::TestParamInfo<AttackRow>& row) { return std::string(row.param.name); });

std::string ZeroBefore(const char* place) {
  std::string document = kPlain;
  return document.insert(document.find(place), 1, '\0');
}

INSTANTIATE_TEST_SUITE_P(
    ZeroBytes, AttackingManifestTest,
    testing::Values(AttackRow{"First", ZeroBefore("<?xml"), Outcome::Done, Lines{std::string(kNotXML) + "        ')."}},
                    AttackRow{"InTheDeclaration", ZeroBefore("version")},
                    AttackRow{"BeforeTheType", ZeroBefore("<!DOCTYPE"), Outcome::RefusedByItsHead, Lines{kNoItem}},
                    AttackRow{"InTheType", ZeroBefore("ntorManifest>"), Outcome::Done},
                    AttackRow{"BetweenElements", ZeroBefore("<Copy>")}, AttackRow{"InAText", ZeroBefore("a.txt")}),
    [](const testing::TestParamInfo<AttackRow>& row) { return std::string(row.param.name); });

// `start`, blanks and `end`, together of `bytes` bytes.
std::string Item(const std::string& start, std::size_t bytes, const std::string& end) {
  return start + std::string(bytes - start.size() - end.size(), ' ') + end;
}

std::string Cut(const std::string& item) {
  return std::string(kInvalid) + item.substr(0, 511) + "').";
}

const std::string kVersion = "<?xml version=\"1.0\"";
const std::string kTypeStart = "<!DOCTYPE VantorManifest";
const std::string kEndless = "<!DOCTYPE " + std::string(2000000, 'm');

INSTANTIATE_TEST_SUITE_P(
    Heads, AttackingManifestTest,
    testing::Values(
        AttackRow{"DeclarationOf511Bytes", Item(kVersion, 511, "?>") + kType + kBody, Outcome::Done},
        AttackRow{"DeclarationOf512Bytes", Item(kVersion, 512, "?>") + kType + kBody, Outcome::RefusedByItsHead,
                  Lines{Cut(Item(kVersion, 512, "?>"))}},
        AttackRow{"TypeOf511Bytes", kDeclaration + Item(kTypeStart, 511, ">") + kBody, Outcome::Done},
        AttackRow{"TypeOf512Bytes", kDeclaration + Item(kTypeStart, 512, ">") + kBody, Outcome::RefusedByItsHead,
                  Lines{Cut(Item(kTypeStart, 512, ">"))}},
        AttackRow{"TypeOf513Bytes", kDeclaration + Item(kTypeStart, 513, ">") + kBody, Outcome::RefusedByItsHead,
                  Lines{Cut(Item(kTypeStart, 513, ">"))}},
        AttackRow{"DeclarationOfMegabytes", "<?xml " + kEndless, Outcome::RefusedByItsHead, Lines{Cut("<?xml " + kEndless)}},
        AttackRow{"TypeOfMegabytes", kDeclaration + kEndless, Outcome::RefusedByItsHead, Lines{Cut(kEndless)}}),
    [](const testing::TestParamInfo<AttackRow>& row) { return std::string(row.param.name); });

std::string Nested(int depth) {
  std::string start, end;
  for (int i = 0; i < depth; ++i) {
    start += "<Copy>";
    end += "</Copy>";
  }
  return WithRoot("", start + end);
}

const std::string kMegabytes(2000000, 'm');

INSTANTIATE_TEST_SUITE_P(
    Sizes, AttackingManifestTest,
    testing::Values(
        AttackRow{"TwentyThousandNestedElements", Nested(20000)},
        AttackRow{"FileNameOfMegabytes", Replaced(kPlain, "<Path>", "<FileName>" + kMegabytes + ".txt</FileName><Path>"),
                  Outcome::Done},
        AttackRow{
            "AttributeOfMegabytes", Replaced(kPlain, "version=\"1.0\">", "version=\"" + kMegabytes + "\">"), Outcome::Done},
        AttackRow{
            "ForceOfMegabytes",
            Replaced(kPlain, "</Path>", "</Path><IfFileExists><Overwrite force=\"" + kMegabytes + "\"/></IfFileExists>"),
            Outcome::Done}),
    [](const testing::TestParamInfo<AttackRow>& row) { return std::string(row.param.name); });

}  // namespace
