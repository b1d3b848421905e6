#include "advice/BrowserLaunch.h"

#include <gtest/gtest.h>
#include <shlwapi.h>

#include "advice/DoctorExpectations.h"
#include "support/Files.h"
#include "support/ImportPatch.h"
#include "support/RegistryAside.h"

namespace {

constexpr wchar_t kProgram[] = L"C:\\Program Files\\Norvik\\norvikopen.exe";
constexpr char kCommand[] = "\"C:\\Program Files\\Norvik\\norvikopen.exe\" \"%1\"";
constexpr char kScheme[] = "Software\\Classes\\norvik";
constexpr char kSchemeCommand[] = "Software\\Classes\\norvik\\shell\\open\\command";
constexpr char kChoice[] = "Software\\Microsoft\\Windows\\Shell\\Associations\\UrlAssociations\\norvik\\UserChoice";
constexpr char kEarlierCommand[] = "\"C:\\Earlier\\norvikopen.exe\" \"%1\"";

class BrowserLaunchTest : public testing::Test {
 protected:
  static std::string MachineText(const char* key, const char* value) {
    return RegistryTextOf(HKEY_LOCAL_MACHINE, key, value);
  }

  const LinkEntriesAside aside = {};
};

TEST_F(BrowserLaunchTest, WithoutEntriesItIsOff) {
  const BrowserLaunch launch = ReadBrowserLaunch();
  EXPECT_FALSE(launch.isOn);
  EXPECT_EQ(L"", launch.command);
  EXPECT_EQ(L"", launch.program);
  EXPECT_EQ(L"", launch.usersChoice);
}

TEST_F(BrowserLaunchTest, OnRegistersTheSchemeAndTheProgram) {
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOn(kProgram));
  EXPECT_EQ("URL:Norvik", MachineText(kScheme, nullptr));
  EXPECT_EQ("", MachineText(kScheme, "URL Protocol"));
  EXPECT_EQ(kCommand, MachineText(kSchemeCommand, nullptr));
  const BrowserLaunch launch = ReadBrowserLaunch();
  EXPECT_TRUE(launch.isOn);
  EXPECT_EQ(Wide(kCommand), launch.command);
  EXPECT_EQ(kProgram, launch.program);
}

TEST_F(BrowserLaunchTest, OnTakesTheLastProgram) {
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOn(L"C:\\Earlier\\norvikopen.exe"));
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOn(kProgram));
  EXPECT_EQ(kProgram, ReadBrowserLaunch().program);
}

TEST_F(BrowserLaunchTest, OffLeavesNothing) {
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOff());
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOn(kProgram));
  WriteRegistryText(HKEY_LOCAL_MACHINE, std::string(kScheme) + "\\DefaultIcon", nullptr, "of somebody else");
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOff());
  EXPECT_EQ("none", MachineText(kScheme, "URL Protocol"));
  EXPECT_EQ("none", MachineText("Software\\Classes\\norvik\\DefaultIcon", nullptr));
  EXPECT_FALSE(ReadBrowserLaunch().isOn);
}

// A scheme without a command starts nothing.
TEST_F(BrowserLaunchTest, ASchemeWithoutACommandIsOff) {
  WriteRegistryText(HKEY_LOCAL_MACHINE, kScheme, "URL Protocol", "");
  EXPECT_FALSE(ReadBrowserLaunch().isOn);
}

TEST_F(BrowserLaunchTest, TheUsersEntriesAndChoiceAreRead) {
  WriteRegistryText(HKEY_CURRENT_USER, kSchemeCommand, nullptr, "C:\\Mine\\a.exe %1");
  EXPECT_EQ(L"C:\\Mine\\a.exe %1", ReadBrowserLaunch().usersChoice);
  EXPECT_FALSE(ReadBrowserLaunch().isOn);
  WriteRegistryText(HKEY_CURRENT_USER, kChoice, "ProgId", "Mine.Links");
  EXPECT_EQ(L"Mine.Links", ReadBrowserLaunch().usersChoice);
}

// The two keys and the three texts that make the registration: what becomes of it when the system refuses one.
constexpr int kKeys = 2;
constexpr int kTexts = 3;

class RefusedStepTest : public BrowserLaunchTest, public testing::WithParamInterface<int> {
 protected:
  static LONG SwitchOnWithoutRights() {
    const auto denied = static_cast<LONG>(ERROR_ACCESS_DENIED);
    if (GetParam() < kKeys) {
      PATCH_IMPORT(noKey, RegCreateKeyExW, FailCall(GetParam() + 1, denied, ERROR_ACCESS_DENIED));
      return SwitchBrowserLaunchOn(kProgram);
    }
    PATCH_IMPORT(noValue, RegSetValueExW, FailCall(GetParam() - kKeys + 1, denied, ERROR_ACCESS_DENIED));
    return SwitchBrowserLaunchOn(kProgram);
  }
};

TEST_P(RefusedStepTest, LeavesNothingBehind) {
  EXPECT_EQ(ERROR_ACCESS_DENIED, SwitchOnWithoutRights());
  EXPECT_EQ("none", MachineText(kScheme, nullptr));
  EXPECT_EQ("none", MachineText(kScheme, "URL Protocol"));
  EXPECT_EQ("none", MachineText(kSchemeCommand, nullptr));
}

TEST_P(RefusedStepTest, LeavesWhatAnEarlierRegistrationStarts) {
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOn(L"C:\\Earlier\\norvikopen.exe"));
  EXPECT_EQ(ERROR_ACCESS_DENIED, SwitchOnWithoutRights());
  EXPECT_EQ("URL:Norvik", MachineText(kScheme, nullptr));
  EXPECT_EQ("", MachineText(kScheme, "URL Protocol"));
  EXPECT_EQ(kEarlierCommand, MachineText(kSchemeCommand, nullptr));
}

INSTANTIATE_TEST_SUITE_P(, RefusedStepTest, testing::Range(0, kKeys + kTexts), [](const auto& step) {
  return step.param < kKeys ? "Key" + std::to_string(step.param + 1) : "Text" + std::to_string(step.param - kKeys + 1);
});

TEST_F(BrowserLaunchTest, ARefusedKeyChangesNothingOfSomebodyElses) {
  WriteRegistryText(HKEY_LOCAL_MACHINE, kScheme, nullptr, "URL:Other");
  const auto denied = static_cast<LONG>(ERROR_ACCESS_DENIED);
  PATCH_IMPORT(noKey, RegCreateKeyExW, FailCall(kKeys, denied, ERROR_ACCESS_DENIED));
  EXPECT_EQ(ERROR_ACCESS_DENIED, SwitchBrowserLaunchOn(kProgram));
  EXPECT_EQ("URL:Other", MachineText(kScheme, nullptr));
  EXPECT_EQ("none", MachineText(kScheme, "URL Protocol"));
}

TEST_F(BrowserLaunchTest, OffWithoutRightsChangesNothing) {
  EXPECT_EQ(ERROR_SUCCESS, SwitchBrowserLaunchOn(kProgram));
  {
    PATCH_IMPORT(denied, SHDeleteKeyW, FailWith(static_cast<LSTATUS>(ERROR_ACCESS_DENIED), ERROR_ACCESS_DENIED));
    EXPECT_EQ(ERROR_ACCESS_DENIED, SwitchBrowserLaunchOff());
  }
  EXPECT_EQ(kCommand, MachineText(kSchemeCommand, nullptr));
}

BrowserLaunch LaunchOf(const std::string& program) {
  BrowserLaunch launch;
  launch.isOn = true;
  launch.program = Wide(program);
  launch.command = L"\"" + launch.program + L"\" \"%1\"";
  return launch;
}

void ExpectState(DoctorStatus status, const std::string& text, const DoctorCheck& check) {
  ExpectCheck("browser-launch", status, text, check);
}

class BrowserLaunchCheckTest : public testing::Test {
 protected:
  BrowserLaunchCheckTest() {
    WriteWholeFile(program, "a");
    WriteWholeFile(other, "b");
  }

  const TemporaryFolder folder;
  const std::string program = folder.File("norvikopen.exe");
  const std::string other = folder.File("other.exe");
};

TEST_F(BrowserLaunchCheckTest, OffIsAsItShouldBe) {
  ExpectState(
      DoctorStatus::Ok, "Links in browsers start no manifests. 'norvik browser on' would switch that on for all users.",
      CheckBrowserLaunch({}, Wide(program)));
}

TEST_F(BrowserLaunchCheckTest, OnIsAsItShouldBeWithTheProgramBesideThisOne) {
  ExpectState(DoctorStatus::Ok, "Links in browsers start manifests, with '" + program + "'.",
              CheckBrowserLaunch(LaunchOf(program), Wide(program)));
}

// The same file by another text.
TEST_F(BrowserLaunchCheckTest, TheProgramIsComparedAsAFile) {
  const std::string longWay = folder.Path() + "\\.\\NORVIKOPEN.EXE";
  ExpectState(DoctorStatus::Ok, "Links in browsers start manifests, with '" + longWay + "'.",
              CheckBrowserLaunch(LaunchOf(longWay), Wide(program)));
}

TEST_F(BrowserLaunchCheckTest, AProgramThatIsNotThereIsAWarning) {
  const std::string missing = folder.File("missing.exe");
  ExpectState(DoctorStatus::Warning,
              "Links in browsers are to start '" + missing +
                  "', which is not there. Run 'norvik browser on' or 'norvik browser off' as an administrator.",
              CheckBrowserLaunch(LaunchOf(missing), Wide(program)));
}

TEST_F(BrowserLaunchCheckTest, AnotherProgramIsAWarning) {
  ExpectState(DoctorStatus::Warning, "Links in browsers start '" + other + "', which is not the program beside this one.",
              CheckBrowserLaunch(LaunchOf(other), Wide(program)));
}

TEST_F(BrowserLaunchCheckTest, TheUsersChoiceGoesBeforeAllElse) {
  for (BrowserLaunch launch : {LaunchOf(program), BrowserLaunch()}) {
    launch.usersChoice = L"Mine.Links";
    ExpectState(DoctorStatus::Warning,
                "This user has chosen 'Mine.Links' for links that begin with 'norvik:', whatever is set for the machine.",
                CheckBrowserLaunch(launch, Wide(program)));
  }
}

}  // namespace
