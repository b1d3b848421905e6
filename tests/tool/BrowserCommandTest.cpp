// `norvik browser on`, `off` and `status`, in the registry of this machine, which gets back what it had.

#include "support/RegistryAside.h"
#include "tool/ToolFixture.h"

namespace {

class BrowserCommandTest : public ToolTest {
 protected:
  BrowserCommandTest() { WriteWholeFile(Program(), ""); }

  std::string Program() const { return folder.File("norvikopen.exe"); }
  std::string Command() const { return "\"" + Program() + "\" \"%1\""; }
  static std::string Registered() {
    return RegistryTextOf(HKEY_LOCAL_MACHINE, "Software\\Classes\\norvik\\shell\\open\\command", nullptr);
  }

  const LinkEntriesAside aside = {};
};

constexpr char kOff[] = "Links in browsers start no manifests. 'norvik browser on' would switch that on for all users.";

TEST_F(BrowserCommandTest, StatusOfAMachineAsItComesIsOff) {
  const Json document = RunJson({L"browser", L"status"}, 1);
  EXPECT_EQ((Json{{"schema", 1},
                  {"browserLaunch", "off"},
                  {"command", nullptr},
                  {"usersChoice", nullptr},
                  {"status", "ok"},
                  {"detail", kOff}}),
            document);
  const ProgramResult result = Run({L"browser", L"status"});
  EXPECT_EQ(1u, result.code);
  EXPECT_EQ((std::vector<std::string>{"ok      browser-launch", std::string("    ") + kOff}), LinesOf(result.output));
  EXPECT_EQ("", result.errors);
}

TEST_F(BrowserCommandTest, OnRegistersTheProgramBesideThisOne) {
  const Json document = RunJson({L"browser", L"on"}, 0);
  EXPECT_EQ((Json{{"schema", 1},
                  {"browserLaunch", "on"},
                  {"command", Command()},
                  {"usersChoice", nullptr},
                  {"status", "ok"},
                  {"detail", "Links in browsers start manifests, with '" + Program() + "'."}}),
            document);
  EXPECT_EQ(Command(), Registered());
  EXPECT_EQ("", RegistryTextOf(HKEY_LOCAL_MACHINE, "Software\\Classes\\norvik", "URL Protocol"));
  EXPECT_EQ(document, RunJson({L"browser", L"status"}, 0));
}

TEST_F(BrowserCommandTest, OffTakesTheRegistrationAway) {
  EXPECT_EQ(0u, Run({L"browser", L"on"}).code);
  EXPECT_EQ("off", RunJson({L"browser", L"off"}, 0).at("browserLaunch"));
  EXPECT_EQ("none", Registered());
  EXPECT_EQ("none", RegistryTextOf(HKEY_LOCAL_MACHINE, "Software\\Classes\\norvik", "URL Protocol"));
  EXPECT_EQ(0u, Run({L"browser", L"off"}).code);
}

TEST_F(BrowserCommandTest, OnWithoutTheProgramForLinksIsRefused) {
  EXPECT_TRUE(DeleteFileA(Program().c_str()));
  const ProgramResult result = Run({L"browser", L"on"});
  EXPECT_EQ(1u, result.code);
  EXPECT_EQ("", result.output);
  EXPECT_EQ((std::vector<std::string>{
                "norvik: '" + Program() + "' is not there, and links would start nothing. Nothing was changed."}),
            LinesOf(result.errors));
  EXPECT_EQ("none", Registered());
}

TEST_F(BrowserCommandTest, AUsersChoiceIsShown) {
  EXPECT_EQ(0u, Run({L"browser", L"on"}).code);
  WriteRegistryText(HKEY_CURRENT_USER, "Software\\Classes\\norvik\\shell\\open\\command", nullptr, "mine.exe %1");
  const Json document = RunJson({L"browser", L"status"}, 0);
  EXPECT_EQ("on", document.at("browserLaunch"));
  EXPECT_EQ("mine.exe %1", document.at("usersChoice"));
  EXPECT_EQ("warning", document.at("status"));
}

// Doctor says the same of the machine.
TEST_F(BrowserCommandTest, DoctorTellsTheState) {
  for (const wchar_t* const state : {L"on", L"off"}) {
    const Json said = RunJson({L"browser", state}, 0);
    const Json checks = RunJson({L"doctor"}, 1).at("checks");
    EXPECT_EQ("browser-launch", checks.back().at("name"));
    EXPECT_EQ(said.at("status"), checks.back().at("status"));
    EXPECT_EQ(said.at("detail"), checks.back().at("detail"));
  }
}

}  // namespace
