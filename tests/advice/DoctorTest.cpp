#include "advice/Doctor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "advice/DoctorExpectations.h"
#include "advice/ModuleFile.h"
#include "host/InstalledModule.h"
#include "host/RegistryKeys.h"
#include "support/HResult.h"
#include "support/Pages.h"
#include "support/PermitFile.h"
#include "support/WebServer.h"

namespace {

DoctorOptions OptionsFor(const InstalledModule& installed) {
  DoctorOptions options;
  options.modulePath = Wide(installed.Path());
  options.permitPath = Wide(installed.PermitPath());
  options.findingsOf = [](const PermitDocument&) { return Findings(); };
  return options;
}

TEST(DoctorTest, AMachineThatIsReadyPassesEveryCheck) {
  const ModuleEntriesAside aside;
  const InstalledModule installed;
  const LoadedModule module(installed.Path());
  ASSERT_HRESULT(S_OK, module.RegisterServer());
  WebServer server;
  server.Answer("/a.xml", Response().Body("x"));
  installed.WritePermit(server.Url("/"), "C:\\Tools");
  DoctorOptions options = OptionsFor(installed);
  options.url = Wide(server.Url("/a.xml"));
  const DoctorChecks checks = Examine(options);
  EXPECT_TRUE(IsReady(checks));
  for (const char* const name :
       {"module", "threading-model", "type-library", "kill-bit", "xml-parser", "registrar", "permit-valid", "permit-sound",
        "permit-safe", "log-folder", "folder-Temp", "proxy", "server"})
    EXPECT_EQ(DoctorStatus::Ok, CheckNamed(name, checks).status) << name << ": " << CheckNamed(name, checks).detail;
  EXPECT_EQ(1u, server.Asked().size());
}

TEST(DoctorTest, AMachineWithoutAnythingIsNotReady) {
  const ModuleEntriesAside aside;
  const TemporaryFolder folder;
  DoctorOptions options;
  options.modulePath = Wide(folder.File("norvik.dll"));
  options.permitPath = Wide(folder.File("permit.xml"));
  const DoctorChecks checks = Examine(options);
  EXPECT_FALSE(IsReady(checks));
  EXPECT_EQ(DoctorStatus::Failed, CheckNamed("module", checks).status);
  EXPECT_EQ(DoctorStatus::Failed, CheckNamed("permit-valid", checks).status);
  EXPECT_EQ(DoctorStatus::Skipped, CheckNamed("server", checks).status);
}

// As the module's path stands for the program's, so its folder does for what is not named.
TEST(DoctorTest, WhatIsNotNamedLiesInTheModulesFolder) {
  PermitFile permit;
  permit.URL("http://host/").Extension("txt").Write();
  const DoctorChecks checks = Examine({});
  const std::string problem = ReadModuleFile(Wide(permit.ModuleFolder() + "\\norvik.dll")).problem;
  EXPECT_NE(std::string::npos, problem.find(permit.ModuleFolder() + "\\norvik.dll")) << problem;
  ExpectCheck("module", DoctorStatus::Failed, problem + " Put norvik.dll beside norvik.exe.", CheckNamed("module", checks));
  ExpectCheck(
      "permit-valid", DoctorStatus::Ok, "'" + permit.Path() + "' has 2 entries.", CheckNamed("permit-valid", checks));
}

// A name in the order of the checks; the thirteen folders once.
void AddName(std::vector<std::string>& names, const std::string& name) {
  const std::string shown = name.rfind("folder-", 0) == 0 ? "folder-Path" : name;
  if (std::find(names.begin(), names.end(), shown) == names.end())
    names.push_back(shown);
}

// The names in the first columns of the page's tables of checks. A system of 32 bits has no view of 64.
std::vector<std::string> NamesOnThePage() {
  std::vector<std::string> names;
  const std::string page = ReadPage("docs/doctor.md");
  const std::regex row("\\| (`[^|]+) \\|[^\n]*");
  const std::regex name("`([^`]+)`");
  for (std::sregex_iterator found(page.begin() + page.find("## The module"), page.end(), row), none; found != none;
       ++found) {
    const std::string cell = (*found)[1];
    for (std::sregex_iterator part(cell.begin(), cell.end(), name); part != none; ++part)
      AddName(names, (*part)[1]);
  }
  if (sizeof(void*) == 4)
    names.erase(std::remove(names.begin(), names.end(), "registered-64"), names.end());
  return names;
}

TEST(DoctorTest, ThePageTellsOfEveryCheckInTheirOrder) {
  const InstalledModule installed;
  installed.WritePermit("http://host/", "C:\\Tools");
  std::vector<std::string> names;
  for (const DoctorCheck& check : Examine(OptionsFor(installed)))
    AddName(names, check.name);
  EXPECT_EQ(NamesOnThePage(), names);
}

TEST(DoctorTest, OnlyAFailureMakesAMachineUnready) {
  DoctorChecks checks = {{"a", DoctorStatus::Ok, ""}, {"b", DoctorStatus::Warning, ""}, {"c", DoctorStatus::Skipped, ""}};
  EXPECT_TRUE(IsReady(checks));
  checks.push_back({"d", DoctorStatus::Failed, ""});
  EXPECT_FALSE(IsReady(checks));
}

TEST(DoctorTest, StatusesHaveNames) {
  EXPECT_STREQ("ok", NameOf(DoctorStatus::Ok));
  EXPECT_STREQ("warning", NameOf(DoctorStatus::Warning));
  EXPECT_STREQ("failed", NameOf(DoctorStatus::Failed));
  EXPECT_STREQ("skipped", NameOf(DoctorStatus::Skipped));
}

}  // namespace
