// `norvik browser kit`: the files it writes, what the registry makes of them, and what it refuses.

#include "advice/BrowserKit.h"
#include "advice/Words.h"
#include "support/RegistryAside.h"
#include "tool/ToolFixture.h"

namespace {

constexpr wchar_t kOrigin[] = L"https://portal.example.com";
constexpr wchar_t kOtherOrigin[] = L"http://127.0.0.1:8080";
const std::vector<std::string> kOrigins = {"https://portal.example.com", "http://127.0.0.1:8080"};

class KitCommandTest : public ToolTest {
 protected:
  // What the program is asked, for both origins.
  static std::vector<std::wstring> Kit(const std::wstring& out) {
    return {L"browser", L"kit", L"--origin", kOrigin, L"--origin", kOtherOrigin, L"--out", out};
  }

  void ExpectKit(const std::string& out) const {
    for (const KitFile& file : BrowserKit(kOrigins))
      EXPECT_EQ(file.bytes, ReadWholeFile(out + "\\" + file.name)) << file.name;
    EXPECT_EQ(BrowserKit(kOrigins).size(), EntriesOf(WideFromAnsi(out.c_str())).size());
  }

  // One sentence on standard error, and nothing else.
  void ExpectRefusal(unsigned long code, const std::string& part, const std::vector<std::wstring>& arguments) const {
    const ProgramResult result = Run(arguments);
    EXPECT_EQ(code, result.code);
    EXPECT_EQ("", result.output);
    EXPECT_EQ(0u, result.errors.find("norvik: ")) << result.errors;
    EXPECT_EQ(1u, LinesOf(result.errors).size()) << result.errors;
    EXPECT_NE(std::string::npos, result.errors.find(part)) << result.errors;
  }

  const std::string out = folder.File("kit");
};

TEST_F(KitCommandTest, WritesTheFilesIntoAFolderThatItMakes) {
  const Json document = RunJson(Kit(L"kit"), 0);
  Json files = Json::array();
  for (const KitFile& file : BrowserKit(kOrigins))
    files.push_back({{"file", out + "\\" + file.name}, {"purpose", file.purpose}});
  EXPECT_EQ((Json{{"schema", 1}, {"files", files}}), document);
  ExpectKit(out);
}

TEST_F(KitCommandTest, ShowsEachFileWithItsPurpose) {
  const ProgramResult result = Run(Kit(L"kit"));
  EXPECT_EQ(0u, result.code);
  EXPECT_EQ("", result.errors);
  std::vector<std::string> expected;
  for (const KitFile& file : BrowserKit(kOrigins)) {
    expected.push_back(out + "\\" + file.name);
    expected.push_back("    " + file.purpose);
  }
  EXPECT_EQ(expected, LinesOf(result.output));
}

TEST_F(KitCommandTest, TheFolderMayBeThereOrLieDeep) {
  ASSERT_TRUE(CreateDirectoryA(out.c_str(), nullptr));
  WriteWholeFile(out + "\\notes.txt", "mine");
  EXPECT_EQ(0u, Run(Kit(L"kit")).code);
  EXPECT_EQ("mine", ReadWholeFile(out + "\\notes.txt"));
  EXPECT_EQ(0u, Run(Kit(L"a\\b\\c\\")).code);
  ExpectKit(folder.File("a\\b\\c"));
}

TEST_F(KitCommandTest, TheFolderMayHaveAnyName) {
  const std::wstring name = L"\x4E00 kit";
  EXPECT_EQ(0u, Run(Kit(name)).code);
  EXPECT_EQ(BrowserKit(kOrigins).size(), EntriesOf(WideFromAnsi(folder.Path().c_str()) + L"\\" + name).size());
}

TEST_F(KitCommandTest, AFileThatIsThereIsReplacedOnlyWhenAskedFor) {
  ASSERT_TRUE(CreateDirectoryA(out.c_str(), nullptr));
  const std::string mine(100000, 'x');  // longer than any file of the kit
  WriteWholeFile(out + "\\ie-mode.reg", mine);
  ExpectRefusal(1, "ie-mode.reg' is there already. Nothing was written; --replace would replace it.", Kit(L"kit"));
  EXPECT_EQ("ie-mode.reg", NamesIn(out));
  EXPECT_EQ(mine, ReadWholeFile(out + "\\ie-mode.reg"));
  std::vector<std::wstring> replacing = Kit(L"kit");
  replacing.emplace_back(L"--replace");
  EXPECT_EQ(0u, Run(replacing).code);
  ExpectKit(out);
}

// Of several origins each is judged before anything is made. What an origin may be is a table of the advice library's tests.
TEST_F(KitCommandTest, AnOriginThatCannotBeListedIsRefusedBeforeAnythingIsWritten) {
  ExpectRefusal(
      2, "'https://portal.example.com/start' cannot be listed. An origin ends behind the host or the port",
      {L"browser", L"kit", L"--origin", kOrigin, L"--origin", L"https://portal.example.com/start", L"--out", L"kit"});
  ExpectRefusal(2, "'*' cannot be listed.", {L"browser", L"kit", L"--origin", L"*", L"--out", L"kit"});
  ExpectRefusal(2, "'' cannot be listed. It is empty.", {L"browser", L"kit", L"--origin", L"", L"--out", L"kit"});
  ExpectRefusal(2, "'[https://a,https://b]' cannot be listed. Only sites with",
                {L"browser", L"kit", L"--origin", L"[https://a,https://b]", L"--out", L"kit"});
  ExpectRefusal(2,
                "'https://b\xC3\xBC"
                "cher.example' cannot be listed.",
                {L"browser", L"kit", L"--origin",
                 L"https://b\xFC"
                 L"cher.example",
                 L"--out", L"kit"});
  EXPECT_FALSE(FileExistsAt(out));
}

TEST_F(KitCommandTest, AFileInTheFoldersPlaceIsNoFolder) {
  WriteWholeFile(out, "mine");
  ExpectRefusal(3, "'" + out + "' is a file and no folder.", Kit(L"kit"));
  ExpectRefusal(3, "The folder '" + out + "\\below' cannot be made: 0x", Kit(L"kit\\below"));
  EXPECT_EQ("mine", ReadWholeFile(out));
}

TEST_F(KitCommandTest, AFolderThatCannotBeMadeIsTold) {
  ExpectRefusal(3, "The folder '\\\\?\\Volume{0}\\kit' cannot be made: 0x", Kit(L"\\\\?\\Volume{0}\\kit"));
}

// Nobody may write here: what stands in the way is no file that could be replaced.
TEST_F(KitCommandTest, AFileThatCannotBeWrittenIsTold) {
  ASSERT_TRUE(CreateDirectoryA(out.c_str(), nullptr));
  ASSERT_TRUE(CreateDirectoryA((out + "\\README.txt").c_str(), nullptr));
  std::vector<std::wstring> replacing = Kit(L"kit");
  replacing.emplace_back(L"--replace");
  ExpectRefusal(3, "'" + out + "\\README.txt' cannot be written: 0x80070005", replacing);
  EXPECT_EQ("README.txt", NamesIn(out));
}

TEST_F(KitCommandTest, ARealDocumentOfEachPolicyListsTheOriginsInOneEntry) {
  EXPECT_EQ(0u, Run(Kit(L"kit")).code);
  const Json entries = {{{"protocol", "norvik"}, {"allowed_origins", kOrigins}}};
  EXPECT_EQ(entries, Json::parse(ReadWholeFile(out + "\\policy-value.json")));
  EXPECT_EQ((Json{{"AutoLaunchProtocolsFromOrigins", entries}}), Json::parse(ReadWholeFile(out + "\\chromium-policy.json")));
  EXPECT_EQ((Json{{"policies", {{"AutoLaunchProtocolsFromOrigins", entries}}}}),
            Json::parse(ReadWholeFile(out + "\\firefox-policies.json")));
}

// The system's own program reads the files; what the registry has then is what was meant.
TEST_F(KitCommandTest, TheRegistryTakesItsFiles) {
  const RegistryAside edge(HKEY_LOCAL_MACHINE, "Software\\Policies\\Microsoft\\Edge");
  const RegistryAside chrome(HKEY_LOCAL_MACHINE, "Software\\Policies\\Google\\Chrome");
  const RegistryAside firefox(HKEY_LOCAL_MACHINE, "Software\\Policies\\Mozilla\\Firefox");
  const RegistryAside internet(
      HKEY_LOCAL_MACHINE, "Software\\Policies\\Microsoft\\Windows\\CurrentVersion\\Internet Settings");
  const RegistryAside addOns(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\Ext");
  EXPECT_EQ(0u, Run(Kit(L"kit")).code);
  for (const wchar_t* const name : {L"edge.reg", L"chrome.reg", L"firefox.reg", L"ie-mode.reg"}) {
    const ProgramResult result =
        RunProgram("C:\\windows\\system32\\reg.exe", {L"import", WideFromAnsi(out.c_str()) + L"\\" + name}, folder.Path());
    EXPECT_EQ(0u, result.code) << result.output << result.errors;
  }
  const std::string value = LinesOf(ReadWholeFile(out + "\\policy-value.json")).at(0);
  const auto policyOf = [](const std::string& key) {
    return RegistryTextOf(HKEY_LOCAL_MACHINE, "Software\\Policies\\" + key, "AutoLaunchProtocolsFromOrigins");
  };
  EXPECT_EQ(value, policyOf("Microsoft\\Edge"));
  EXPECT_EQ(value, policyOf("Google\\Chrome"));
  EXPECT_EQ(value + "|", policyOf("Mozilla\\Firefox"));
  const std::string zones = "Software\\Policies\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMapKey";
  EXPECT_EQ("2", RegistryTextOf(HKEY_LOCAL_MACHINE, zones, "https://portal.example.com"));
  EXPECT_EQ("2", RegistryTextOf(HKEY_LOCAL_MACHINE, zones, "http://127.0.0.1"));
  EXPECT_EQ("none", RegistryTextOf(
                        HKEY_LOCAL_MACHINE, "Software\\Policies\\Microsoft\\Edge", "InternetExplorerIntegrationSiteList"));
}

}  // namespace
