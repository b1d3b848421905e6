// Registration and unregistration while the system fails: by the registrar's script, and by the module's own table.

#include <gtest/gtest.h>

#include <cstdio>

#include "host/ControlFixture.h"
#include "host/RegistryKeys.h"
#include "torture/FailingSystem.h"

namespace {

struct RegistrationCase {
  const char* name;
  bool hasRegistrar;
  bool isRegistration;  // else what was registered is taken away
};

class RegistrationTortureTest : public testing::TestWithParam<RegistrationCase> {
 protected:
  HRESULT Act() { return GetParam().isRegistration ? module.RegisterServer() : module.UnregisterServer(); }

  void Prepare() {
    counter.LetAll();
    system.hasRegistrar = GetParam().hasRegistrar;
    if (!GetParam().isRegistration) {
      EXPECT_HRESULT(S_OK, module.RegisterServer());
    }
  }

  // With nothing failing, the registration and its end work whatever was there before.
  void Recover(const std::string& where) {
    counter.LetAll();
    system.hasRegistrar = true;
    EXPECT_HRESULT(S_OK, module.RegisterServer()) << where;
    EXPECT_EQ(registered, DumpClassKeys()) << where;
    EXPECT_HRESULT(S_OK, module.UnregisterServer()) << where;
    EXPECT_EQ(Lines(), DumpClassKeys()) << where;
  }

  void FailAt(std::size_t number, int way, bool andAllAfter) {
    Prepare();
    counter.Fail(number, way, andAllAfter);
    const HRESULT hr = Act();
    const std::string where = std::string(counter.Calls()[number].function) + ", call " + std::to_string(number) +
                              (andAllAfter ? " and all after it" : "");
    EXPECT_EQ("", counter.Held()) << where;
    EXPECT_HRESULT(S_OK, module.CanUnloadNow()) << where;
    const Lines entries = DumpClassKeys();
    if (GetParam().isRegistration && SUCCEEDED(hr)) {
      EXPECT_LE(registered.size() - 1, entries.size()) << where;  // the table has no value for the module's path
    }
    if (GetParam().isRegistration && FAILED(hr) && !counter.HasFailed("RegDeleteKeyA")) {
      for (const std::string& entry : entries)
        EXPECT_EQ(std::string::npos, entry.find("Quorvane")) << where << ": the table left " << entry;
    }
    failures += counter.Failures();
    Recover(where);
  }

  ModuleEntriesAside aside;
  InstalledModule installed;
  LoadedModule module{installed.Path()};
  CallCounter counter;
  Places places;
  FailingSystem system{module.Handle(), counter, places};
  Lines registered;
  int failures = 0;
};

TEST_P(RegistrationTortureTest, EveryCallFails) {
  counter.LetAll();
  ASSERT_HRESULT(S_OK, module.RegisterServer());
  registered = DumpClassKeys();
  ASSERT_HRESULT(S_OK, module.UnregisterServer());
  Prepare();
  counter.LetAll();
  ASSERT_HRESULT(S_OK, Act());
  const std::vector<FallibleCall> calls = counter.Calls();
  ASSERT_GT(calls.size(), 3u);
  Recover("undisturbed");
  for (std::size_t number = 0; number < calls.size(); ++number) {
    for (int way = 0; way < calls[number].errors; ++way)
      FailAt(number, way, false);
    FailAt(number, 0, true);
  }
  std::printf("%s: %d calls failed\n", GetParam().name, failures);
}

INSTANTIATE_TEST_SUITE_P(
    Ways, RegistrationTortureTest,
    testing::Values(RegistrationCase{"Script", true, true}, RegistrationCase{"Table", false, true},
                    RegistrationCase{"ScriptTakenAway", true, false}, RegistrationCase{"TableTakenAway", false, false}),
    [](const auto& one) { return one.param.name; });

}  // namespace
