#include "advice/Doctor.h"

#include <gtest/gtest.h>

#include "advice/DoctorExpectations.h"
#include "host/InstalledModule.h"
#include "host/RegistryKeys.h"
#include "support/HResult.h"
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
  ExpectCheck("module", DoctorStatus::Failed, "'" + permit.ModuleFolder() + "\\norvik.dll'", CheckNamed("module", checks));
  ExpectCheck(
      "permit-valid", DoctorStatus::Ok, "'" + permit.Path() + "' has 2 entries.", CheckNamed("permit-valid", checks));
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
