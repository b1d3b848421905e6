// Which documents are manifests.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include "engine/EngineFixture.h"
#include "engine/Manifest.h"
#include "support/HResult.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;

constexpr char kHead[] = "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n";
constexpr char kCopy[] = "<Copy><Source>http://h/a.txt</Source><Destination><Temp/></Destination></Copy>";
constexpr char kOpen[] = "<Open><Source>http://h/a.txt</Source><Destination><Temp/></Destination></Open>";

// A manifest file of any content.
class ManifestFile {
 public:
  explicit ManifestFile(const std::string& content) : path(fixture.WriteSource("m.xml", content)) {}
  ~ManifestFile() { DeleteUrlCacheEntryA(path.c_str()); }

  HRESULT Read() {
    manifest = std::make_unique<CManifest>(0, Wide(path).c_str(), nullptr);
    return manifest->Read(fixture.permissions.get());
  }

  int CountCommands() const {
    int count = 0;
    for (CListIterator commands = manifest->CommandIterator(); commands.Next();)
      ++count;
    return count;
  }

  const CopyFixture fixture;
  const std::string path;
  std::unique_ptr<CManifest> manifest;
};

std::string Root(const std::string& content) {
  return kHead + ("<VantorManifest version=\"1.0\">" + content) + "</VantorManifest>";
}

// The same with one `Copy` whose destination has this content.
std::string Destination(const std::string& content) {
  return Root(CopyElement("http://h/a.txt", content));
}

struct DocumentRow {
  const char* name;
  std::string content;
  int commands = 0;
};

class ValidManifestTest : public testing::TestWithParam<DocumentRow> {};

TEST_P(ValidManifestTest, IsRead) {
  ManifestFile file(GetParam().content);
  EXPECT_HRESULT(S_OK, file.Read());
  EXPECT_EQ(GetParam().commands, file.CountCommands());
}

INSTANTIATE_TEST_SUITE_P(
    , ValidManifestTest,
    testing::Values(
        DocumentRow{"RootAlone", Root(""), 0},
        DocumentRow{"EmptyVersion", kHead + std::string("<VantorManifest version=\"\"/>"), 0},
        DocumentRow{"OneCopy", Root(kCopy), 1}, DocumentRow{"ThreeCopies", Root(std::string(kCopy) + kCopy + kCopy), 3},
        DocumentRow{"OneOpen", Root(kOpen), 1}, DocumentRow{"CopyAndOpen", Root(std::string(kCopy) + kOpen), 2},
        DocumentRow{"WhiteSpaceAndComments", Root(std::string("\r\n\t<!-- x -->") + kCopy + "\n\n"), 1},
        DocumentRow{"InternetCache", Destination("<InternetCache/>"), 1},
        DocumentRow{
            "InternetCacheWithExpiry", Destination("<InternetCache><ExpireTime>2030-01-01</ExpireTime></InternetCache>"), 1},
        DocumentRow{
            "Everything",
            Destination("<FileName>b.txt</FileName><Path>C:\\x</Path><Attributes><Normal/><ReadOnly/><Hidden/>"
                        "<FileTime>2002-06-25</FileTime></Attributes><IfFileExists><Update force=\"true\"/></IfFileExists>"),
            1},
        DocumentRow{"NotFoundHTML", Root(CopyElement("http://h/a.txt", "<Temp/>", "<NotFoundHTML>x</NotFoundHTML>")), 1},
        DocumentRow{"AnotherDocumentType",
                    std::string("<?xml version=\"1.0\"?><!DOCTYPE html><VantorManifest version=\"1.0\"/>"), 0}),
    [](const auto& row) { return row.param.name; });

class InvalidManifestTest : public testing::TestWithParam<DocumentRow> {};

TEST_P(InvalidManifestTest, IsRefusedAsAWhole) {
  ManifestFile file(GetParam().content);
  const LogCapture log(false);
  EXPECT_HRESULT(E_FAIL, file.Read());
  EXPECT_FALSE(file.manifest->CommandIterator().HasMore());
  ASSERT_FALSE(log.Messages().empty());
  EXPECT_EQ("ERROR 0x80004005 Failed to read XML document '" + CachedFile(file.path) + "'.", log.Messages().back());
}

INSTANTIATE_TEST_SUITE_P(
    , InvalidManifestTest,
    testing::Values(
        DocumentRow{"WithoutAVersion", kHead + std::string("<VantorManifest/>")},
        DocumentRow{"WithAnotherRoot", kHead + std::string("<VantorPermissions version=\"1.0\"/>")},
        DocumentRow{"WithACopyBehindItsOpen", Root(std::string(kOpen) + kCopy)},
        DocumentRow{"WithTwoOpens", Root(std::string(kOpen) + kOpen)},
        DocumentRow{"WithTextInItsRoot", Root(std::string("text") + kCopy)},
        DocumentRow{"WithAnUnknownElement", Root("<Move/>")}, DocumentRow{"WithAnEmptyCopy", Root("<Copy/>")},
        DocumentRow{"WithoutASource", Root("<Copy><Destination><Temp/></Destination></Copy>")},
        DocumentRow{"WithoutADestination", Root("<Copy><Source>http://h/a.txt</Source></Copy>")},
        DocumentRow{"WithTheDestinationFirst", Root("<Copy><Destination><Temp/></Destination><Source>x</Source></Copy>")},
        DocumentRow{
            "WithTwoSources", Root("<Copy><Source>x</Source><Source>y</Source><Destination><Temp/></Destination></Copy>")},
        DocumentRow{"WithAnEmptyDestination", Destination("")}, DocumentRow{"WithACookie", Destination("<Cookie/>")},
        DocumentRow{"WithTwoFolders", Destination("<Path>C:\\x</Path><Temp/>")},
        DocumentRow{"WithTheFileNameLast", Destination("<Temp/><FileName>a.txt</FileName>")},
        DocumentRow{"WithAFileNameForTheCache", Destination("<FileName>a.txt</FileName><InternetCache/>")},
        DocumentRow{"WithAttributesForTheCache", Destination("<InternetCache/><Attributes/>")},
        DocumentRow{
            "WithThePolicyBeforeTheAttributes", Destination("<Temp/><IfFileExists><Skip/></IfFileExists><Attributes/>")},
        DocumentRow{"WithTwoPolicies", Destination("<Temp/><IfFileExists><Skip/><Cancel/></IfFileExists>")},
        DocumentRow{"WithAnEmptyPolicy", Destination("<Temp/><IfFileExists/>")},
        DocumentRow{"WithForceAtSkip", Destination("<Temp/><IfFileExists><Skip force=\"true\"/></IfFileExists>")},
        DocumentRow{"WithTheAttributesInAnotherOrder", Destination("<Temp/><Attributes><Hidden/><ReadOnly/></Attributes>")},
        DocumentRow{"WithTextInReadOnly", Destination("<Temp/><Attributes><ReadOnly>x</ReadOnly></Attributes>")},
        DocumentRow{"WithAnAttributeAtCopy",
                    Root("<Copy browser=\"true\"><Source>x</Source><Destination><Temp/></Destination></Copy>")},
        DocumentRow{"WithTheNotFoundTextFirst",
                    Root("<Copy><NotFoundHTML/><Source>x</Source><Destination><Temp/></Destination></Copy>")},
        DocumentRow{"ThatIsCutOff", kHead + std::string("<VantorManifest version=\"1.0\"><Copy>")},
        DocumentRow{"WithAnUnknownEntity", Root(CopyElement("http://h/&x;", "<Temp/>"))},
        DocumentRow{"WithTwoRoots", Root("") + "<VantorManifest version=\"1.0\"/>"}, DocumentRow{"WithoutARoot", kHead},
        DocumentRow{"WithAnInternalSubset",
                    std::string("<?xml version=\"1.0\"?><!DOCTYPE VantorManifest [<!ENTITY x \"y\">]><VantorManifest "
                                "version=\"1.0\"/>")}),
    [](const auto& row) { return row.param.name; });

class UnpreparedManifestTest : public testing::TestWithParam<DocumentRow> {};

TEST_P(UnpreparedManifestTest, IsNotEvenStored) {
  ManifestFile file(GetParam().content);
  const LogCapture log(false);
  EXPECT_HRESULT(E_FAIL, file.Read());
  ASSERT_FALSE(log.Messages().empty());
  const std::string start = "ERROR 0x80004005 Failed to copy 'file://" + file.path + "' to '";
  EXPECT_EQ(start, log.Messages().back().substr(0, start.size()));
  EXPECT_EQ("", CachedFile(file.path));
}

INSTANTIATE_TEST_SUITE_P(
    , UnpreparedManifestTest,
    testing::Values(DocumentRow{"Empty", ""}, DocumentRow{"Text", "no document"},
                    DocumentRow{"WithoutADocumentType", "<?xml version=\"1.0\"?><VantorManifest version=\"1.0\"/>"},
                    DocumentRow{"WithoutAnything", "<VantorManifest version=\"1.0\"/>"},
                    DocumentRow{"WithACommentBeforeItsType",
                                "<?xml version=\"1.0\"?><!-- x --><!DOCTYPE VantorManifest SYSTEM \"m\"><VantorManifest "
                                "version=\"1.0\"/>"},
                    DocumentRow{"WithALongHead", "<?xml version=\"1.0\" " + std::string(512, ' ') + "?>" + kOpen}),
    [](const auto& row) { return row.param.name; });

}  // namespace
