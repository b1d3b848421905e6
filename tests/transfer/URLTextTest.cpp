#include "transfer/URLText.h"

#include <gtest/gtest.h>

#include <string>

#include "common/ModulePath.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"

namespace {

// The module's path for the time of a test.
class ModuleAt {
 public:
  explicit ModuleAt(const char* path) : before(GetModulePath()) { SetModulePath(path); }
  ~ModuleAt() { SetModulePath(before.c_str()); }
  ModuleAt(const ModuleAt&) = delete;
  ModuleAt& operator=(const ModuleAt&) = delete;

 private:
  std::string before;
};

std::string Corrected(const std::string& url) {
  const OwnedText corrected = CorrectURL(url.c_str());
  return corrected ? corrected.get() : "(null)";
}

struct CorrectRow {
  const char* name;
  const char* url;
  const char* corrected;
};

class CorrectURLTest : public testing::TestWithParam<CorrectRow> {
 protected:
  ModuleAt module{"C:\\Apps\\norvik.dll"};
};

TEST_P(CorrectURLTest, GivesTheCorrectedText) {
  EXPECT_EQ(GetParam().corrected, Corrected(GetParam().url));
}

INSTANTIATE_TEST_SUITE_P(
    , CorrectURLTest,
    testing::Values(
        CorrectRow{"BareHttp", "http:", "http://"}, CorrectRow{"BareHttpInCapitals", "HTTP:", "http://"},
        CorrectRow{"BareHttps", "https:", "https://"}, CorrectRow{"BareHttpsMixed", "hTTpS:", "https://"},
        CorrectRow{"HttpInCapitals", "HTTP://Host/Dir/a.exe", "http://Host/Dir/a.exe"},
        CorrectRow{"HttpsInCapitals", "HTTPS://Host/Dir/a.exe", "https://Host/Dir/a.exe"},
        CorrectRow{"HttpWithSlashes", "http://", "http://"}, CorrectRow{"HttpWithoutSlashes", "HTTP:host", "http:host"},
        CorrectRow{"HttpsWithoutSlashes", "HTTPS:host", "https:host"},
        CorrectRow{"BackslashesAreKept", "http:\\\\h\\a.txt", "http:\\\\h\\a.txt"},
        CorrectRow{"NothingIsEscaped", "http://h/a b%20c?d=\"e\"#f", "http://h/a b%20c?d=\"e\"#f"},
        CorrectRow{"SchemeWithoutColon", "http", "file://C:\\Apps\\http"},
        CorrectRow{"LongerScheme", "httpx://h/a", "file://httpx://h/a"},
        CorrectRow{"LeadingBlank", " http://h/a", "file:// http://h/a"},
        CorrectRow{"OtherScheme", "ftp://h/a", "file://ftp://h/a"}, CorrectRow{"Empty", "", "file://"},
        CorrectRow{"BareFile", "file:", "file://"}, CorrectRow{"BareFileInCapitals", "FILE:", "file://"},
        CorrectRow{"FileWithOneSlash", "file:/", "file://"}, CorrectRow{"FileWithTwoSlashes", "file://", "file://"},
        CorrectRow{"FileURL", "file://C:\\Temp\\x.txt", "file://C:\\Temp\\x.txt"},
        CorrectRow{"FileURLInCapitals", "FILE://C:\\Temp\\x.txt", "file://C:\\Temp\\x.txt"},
        CorrectRow{"FileURLWithThreeSlashes", "file:///C:/x", "file:///C:/x"},
        CorrectRow{"FileWithoutSlashesLosesTwoCharacters", "file:C:\\x.txt", "file://\\x.txt"},
        CorrectRow{"FileWithOneCharacter", "file:a", "file://"}, CorrectRow{"FileWithTwoCharacters", "file:ab", "file://"},
        CorrectRow{"FileWithThreeCharacters", "file:abc", "file://C:\\Apps\\c"},
        CorrectRow{"FileURLOfABareName", "file://setup.exe", "file://C:\\Apps\\setup.exe"},
        CorrectRow{"BareName", "setup.exe", "file://C:\\Apps\\setup.exe"},
        CorrectRow{"BareNameWithQuery", "setup.exe?x", "file://C:\\Apps\\setup.exe?x"},
        CorrectRow{"Path", "C:\\Temp\\x.txt", "file://C:\\Temp\\x.txt"}, CorrectRow{"Drive", "C:", "file://C:"},
        CorrectRow{"RelativePath", "dir/x.txt", "file://dir/x.txt"},
        CorrectRow{"NetworkPath", "\\\\server\\share\\x", "file://\\\\server\\share\\x"},
        CorrectRow{"Formats", "%s%n.txt", "file://C:\\Apps\\%s%n.txt"}),
    [](const testing::TestParamInfo<CorrectRow>& row) { return std::string(row.param.name); });

TEST(URLTextTest, ABareNameLiesInTheRootWhenTheModuleDoes) {
  ModuleAt module("C:\\norvik.dll");
  EXPECT_EQ("file://C:\\setup.exe", Corrected("setup.exe"));
}

TEST(URLTextTest, ABareNameHasAnEmptyFolderWhenTheModuleIsUnknown) {
  ModuleAt module("");
  EXPECT_EQ("file://\\setup.exe", Corrected("setup.exe"));
}

TEST(URLTextTest, ACorrectedTextStaysAsItIs) {
  ModuleAt module("C:\\Apps\\norvik.dll");
  for (const char* const url : {"HTTP:", "https:", "file:", "setup.exe", "C:\\Temp\\x.txt"}) {
    const std::string once = Corrected(url);
    EXPECT_EQ(once, Corrected(once));
  }
}

TEST(URLTextTest, AVeryLongNameIsCorrectedWhole) {
  ModuleAt module("C:\\Apps\\norvik.dll");
  const std::string name(100000, 'n');
  EXPECT_EQ("file://C:\\Apps\\" + name, Corrected(name));
  EXPECT_EQ("http:" + name, Corrected("HTTP:" + name));
}

TEST(URLTextTest, ASecondByteThatLooksLikeASeparatorLeavesANameBare) {
  ModuleAt module("C:\\Apps\\norvik.dll");
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte == 0x83; });
  EXPECT_EQ("file://C:\\Apps\\\x83\x5C.txt", Corrected("\x83\x5C.txt"));
}

TEST(URLTextTest, WithoutMemoryNothingIsCorrected) {
  for (const char* const url : {"http:", "http://h", "https:", "file:", "C:\\x", "setup.exe"}) {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    const bool isCorrected = CorrectURL(url) != nullptr;
    EXPECT_FALSE(isCorrected);
  }
}

TEST(URLTextTest, TwoSchemesAreWeb) {
  for (const char* const url : {"http:", "http://h/a", "HTTP:x", "https:", "HttpS://h"})
    EXPECT_TRUE(IsWebURL(url)) << url;
  for (const char* const url : {"", "h", "http", "https", "httpx:", " http:", "file://http:", "ftp://h", "C:\\http:"})
    EXPECT_FALSE(IsWebURL(url)) << url;
}

constexpr char kNone[] = "(null)";

struct SplitRow {
  const char* name;
  const char* url;
  HRESULT result;
  const char* folder;
  const char* fileName;
  const char* extension;
};

std::string TextOf(const OwnedText& text) {
  return text ? text.get() : kNone;
}

class SplitURLTest : public testing::TestWithParam<SplitRow> {};

TEST_P(SplitURLTest, GivesFolderNameAndExtension) {
  OwnedText folder = CopyText("old"), fileName = CopyText("old"), extension = CopyText("old");
  EXPECT_HRESULT(GetParam().result, SplitURL(GetParam().url, folder, fileName, &extension));
  EXPECT_EQ(GetParam().folder, TextOf(folder));
  EXPECT_EQ(GetParam().fileName, TextOf(fileName));
  EXPECT_EQ(GetParam().extension, TextOf(extension));
}

INSTANTIATE_TEST_SUITE_P(
    , SplitURLTest,
    testing::Values(
        SplitRow{"WebURL", "http://Host/Dir/a.exe", S_OK, "http://Host/Dir", "a.exe", "exe"},
        SplitRow{"FileURL", "file://C:\\Temp\\x.txt", S_OK, "file://C:\\Temp", "x.txt", "txt"},
        SplitRow{"Path", "C:\\Temp\\x.txt", S_OK, "C:\\Temp", "x.txt", "txt"},
        SplitRow{"Root", "C:\\x.txt", S_OK, "C:", "x.txt", "txt"}, SplitRow{"Drive", "C:x.txt", S_OK, "C:", "x.txt", "txt"},
        SplitRow{"BareHttp", "http://", S_OK, "http://", "", kNone},
        SplitRow{"BareHttps", "https://", S_OK, "https:/", "", kNone},
        SplitRow{"BareFile", "file://", S_OK, "file://", "", kNone},
        SplitRow{"HostAlone", "http://host.org", S_OK, "http://", "host.org", "org"},
        SplitRow{"TrailingSeparator", "http://h/d/", S_OK, "http://h/d", "", kNone},
        SplitRow{"TwoTrailingSeparators", "http://h/d//", S_OK, "http://h/d/", "", kNone},
        SplitRow{"LastSeparatorIsAColon", "http://h:80", S_OK, "http://h:", "80", kNone},
        SplitRow{"SchemeWithoutSlashes", "http:host", S_OK, "http:", "host", kNone},
        SplitRow{"NoDot", "http://h/d.e/name", S_OK, "http://h/d.e", "name", kNone},
        SplitRow{"LastDotWins", "http://h/a.tar.gz", S_OK, "http://h", "a.tar.gz", "gz"},
        SplitRow{"DotAtTheEnd", "http://h/a.", S_OK, "http://h", "a.", ""},
        SplitRow{"DotAlone", "http://h/.x", S_OK, "http://h", ".x", "x"},
        SplitRow{"Query", "http://h/a.cgi?b=c", S_OK, "http://h", "a.cgi", "cgi"},
        SplitRow{"DotInTheQuery", "http://h/d/f.cgi?name=a.b", S_OK, "http://h/d", "f.cgi", "b"},
        SplitRow{"LastQueryWins", "http://h/f.a?b?c", S_OK, "http://h", "f.a?b", "a?b"},
        SplitRow{"DotBetweenTwoQueries", "http://h/f?b.c?d", S_OK, "http://h", "f?b.c", "c"},
        SplitRow{"DotBeforeTheQuery", "http://h/a.?b", S_OK, "http://h", "a.", ""},
        SplitRow{"QueryAlone", "http://h/?a", S_OK, "http://h", "", kNone},
        SplitRow{"SeparatorInTheQuery", "http://h/f.cgi?p=/x/y.z", S_OK, "http://h/f.cgi?p=/x", "y.z", "z"},
        SplitRow{"ColonInTheQuery", "http://h/f.cgi?t=12:30", S_OK, "http://h/f.cgi?t=12:", "30", kNone},
        SplitRow{"OneSeparator", "/", S_OK, "", "", kNone},
        SplitRow{"NoSeparator", "name.txt", S_FALSE, "name.txt", kNone, kNone},
        SplitRow{"NoSeparatorButAQuery", "name.txt?a", S_FALSE, "name.txt?a", kNone, kNone},
        SplitRow{"Empty", "", S_FALSE, "", kNone, kNone}),
    [](const testing::TestParamInfo<SplitRow>& row) { return std::string(row.param.name); });

TEST(URLTextTest, ASplitWithoutAnExtensionIsPossible) {
  OwnedText folder, fileName;
  EXPECT_HRESULT(S_OK, SplitURL("http://h/a.b", folder, fileName, nullptr));
  EXPECT_STREQ("http://h", folder.get());
  EXPECT_STREQ("a.b", fileName.get());
}

TEST(URLTextTest, TheSecondByteOfACharacterSplitsNothing) {
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte == 0x83; });
  OwnedText folder, fileName, extension;
  EXPECT_HRESULT(S_OK, SplitURL("C:\\\x83\x5C\\a\x83.b\x83?c\x83:", folder, fileName, &extension));
  EXPECT_STREQ("C:\\\x83\x5C", folder.get());
  EXPECT_STREQ("a\x83.b\x83?c\x83:", fileName.get());
  EXPECT_EQ(nullptr, extension);
  EXPECT_HRESULT(S_FALSE, SplitURL("\x83\\", folder, fileName, &extension));
  EXPECT_STREQ("\x83\\", folder.get());
}

TEST(URLTextTest, ALeadByteAtTheEndIsACharacter) {
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte == 0x83; });
  OwnedText folder, fileName, extension;
  EXPECT_HRESULT(S_OK, SplitURL("C:\\a.\x83", folder, fileName, &extension));
  EXPECT_STREQ("a.\x83", fileName.get());
  EXPECT_STREQ("\x83", extension.get());
}

// The pieces are allocated in the order folder, file name, extension.
TEST(URLTextTest, APieceThatCannotBeAllocatedIsNullAndNoFailure) {
  for (int call = 1; call <= 3; ++call) {
    OwnedText folder, fileName, extension;
    HRESULT hr;
    {
      PATCH_IMPORT(noMemory, HeapAlloc, FailCall(call, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
      hr = SplitURL("http://h/a.b", folder, fileName, &extension);
    }
    EXPECT_HRESULT(S_OK, hr);
    EXPECT_EQ(call == 1 ? kNone : "http://h", TextOf(folder));
    EXPECT_EQ(call == 2 ? kNone : "a.b", TextOf(fileName));
    EXPECT_EQ(call == 3 ? kNone : "b", TextOf(extension));
  }
}

}  // namespace
