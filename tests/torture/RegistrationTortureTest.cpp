// Registration and unregistration while the system fails: by the registrar's script, and by the module's own table.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "common/SystemError.h"
#include "host/ControlFixture.h"
#include "host/RegistryKeys.h"
#include "torture/FailingSystem.h"

namespace {

struct RegistrationCase {
  const char* name;
  bool hasRegistrar;
  bool isRegistration;  // else what was registered is taken away
};

// The entries of the class, and those of its type library.
struct Entries {
  Lines ofClass;
  Lines ofLibrary;

  bool operator==(const Entries& other) const { return ofClass == other.ofClass && ofLibrary == other.ofLibrary; }
  bool operator!=(const Entries& other) const { return !(*this == other); }
};

std::ostream& operator<<(std::ostream& out, const Entries& entries) {
  return out << testing::PrintToString(entries.ofClass) << testing::PrintToString(entries.ofLibrary);
}

Entries FindEntries() {
  return {DumpClassKeys(), DumpClassKey(LibraryKey())};
}

// What ends the script's way, with or without its entries; the table comes next.
const Lines kBeforeScript = {"GetModuleFileNameW", "CoCreateInstance", "AddReplacement", "ResourceRegister"};
const Lines kBehindScript = {"LoadTypeLib", "RegisterTypeLib"};

// What the table's way does behind its rows, which alone decide on its result.
const Lines kBehindTable = {"MultiByteToWideChar", "SysAllocStringLen", "LoadTypeLib", "RegisterTypeLib"};

bool Has(const Lines& functions, const char* function) {
  return std::find(functions.begin(), functions.end(), function) != functions.end();
}

class RegistrationTortureTest : public testing::TestWithParam<RegistrationCase> {
 protected:
  HRESULT Act() { return GetParam().isRegistration ? module.RegisterServer() : module.UnregisterServer(); }

  void Register(bool withRegistrar) {
    counter.LetAll();
    system.hasRegistrar = withRegistrar;
    EXPECT_HRESULT(S_OK, module.RegisterServer());
  }

  void Unregister() {
    counter.LetAll();
    system.hasRegistrar = true;
    EXPECT_HRESULT(S_OK, module.UnregisterServer());
  }

  // What each way writes when nothing fails, and what the table makes of the script's entries.
  void Learn() {
    Register(true);
    script = FindEntries();
    Register(false);
    tableOverScript = FindEntries();
    Unregister();
    Register(false);
    table = FindEntries();
    Unregister();
    ASSERT_NE(script, table);
    ASSERT_NE(script, tableOverScript);
    ASSERT_NE(table, tableOverScript);
    ASSERT_FALSE(script.ofLibrary.empty());
    ASSERT_EQ(script.ofLibrary, table.ofLibrary);
    ASSERT_EQ(none, FindEntries());
  }

  void Prepare() {
    if (!GetParam().isRegistration)
      Register(GetParam().hasRegistrar);
    counter.LetAll();
    system.hasRegistrar = GetParam().hasRegistrar;
  }

  // With nothing failing, the registration and its end work whatever was there before.
  void Recover(const std::string& where) {
    Register(true);
    EXPECT_EQ(script, FindEntries()) << where;
    Unregister();
    EXPECT_EQ(none, FindEntries()) << where;
  }

  void FailAt(std::size_t number, int way, bool andAllAfter) {
    const FallibleCall call = calls[number];
    Prepare();
    counter.Fail(number, way, andAllAfter);
    const HRESULT hr = Act();
    const std::string where = std::string(GetParam().name) + ": " + call.function + ", call " + std::to_string(number) +
                              ", way " + std::to_string(way) + (andAllAfter ? " and all after it" : "");
    EXPECT_EQ("", counter.Held()) << where;
    EXPECT_HRESULT(S_OK, module.CanUnloadNow()) << where;
    if (andAllAfter)
      JudgeAll(hr, where);
    else if (GetParam().isRegistration)
      JudgeRegistration(call, hr, where);
    else
      JudgeUnregistration(call, hr, where);
    failures += counter.Failures();
    Recover(where);
  }

  HRESULT CodeOfCall() const { return ResultFromError(static_cast<LONG>(counter.failedWith)); }

  // Success with the entries of the one way or of the other, or the row's own code and nothing left.
  void JudgeRegistration(const FallibleCall& call, HRESULT hr, const std::string& where) {
    const Entries found = FindEntries();
    if (call.function == std::string("RegCreateKeyA") || call.function == std::string("RegSetValueExA")) {
      EXPECT_HRESULT(CodeOfCall(), hr) << where;
      EXPECT_EQ(none, found) << where;
      return;
    }
    EXPECT_HRESULT(S_OK, hr) << where;
    if (!GetParam().hasRegistrar) {
      EXPECT_EQ(table.ofClass, found.ofClass) << where;
      EXPECT_EQ(Has(kBehindTable, call.function) ? Lines() : table.ofLibrary, found.ofLibrary) << where;
      return;
    }
    EXPECT_EQ(Has(kBeforeScript, call.function)   ? table
              : Has(kBehindScript, call.function) ? tableOverScript
                                                  : script,
              found)
        << where;
  }

  // Success with nothing left, but for a library that cannot be taken away behind the table's rows; or the code of the key
  // that cannot be deleted, which is left with those above it.
  void JudgeUnregistration(const FallibleCall& call, HRESULT hr, const std::string& where) {
    const Entries found = FindEntries();
    if (call.function == std::string("RegDeleteKeyA")) {
      EXPECT_HRESULT(CodeOfCall(), hr) << where;
      for (const std::string& line : found.ofClass)
        EXPECT_EQ(0u, call.name.find(line.substr(0, line.find_first_of(" =[")))) << where << ": left " << line;
      EXPECT_EQ(Lines(), found.ofLibrary) << where;
      return;
    }
    EXPECT_HRESULT(S_OK, hr) << where;
    EXPECT_EQ(Lines(), found.ofClass) << where;
    const bool isLibraryLeft = !GetParam().hasRegistrar && call.function == std::string("UnRegisterTypeLib");
    EXPECT_EQ(isLibraryLeft ? table.ofLibrary : Lines(), found.ofLibrary) << where;
  }

  // A success is one, whatever failed; a failure has the code of the registry's refusal, and leaves nothing of the table.
  void JudgeAll(HRESULT hr, const std::string& where) {
    const Entries found = FindEntries();
    if (FAILED(hr)) {
      EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED), hr) << where;
      if (GetParam().isRegistration && !counter.HasFailed("RegDeleteKeyA")) {
        EXPECT_TRUE(found.ofClass.empty() || found.ofClass == script.ofClass) << where << ": left " << found;
      }
    } else if (GetParam().isRegistration) {
      EXPECT_TRUE(found.ofClass == script.ofClass || found.ofClass == table.ofClass ||
                  found.ofClass == tableOverScript.ofClass)
          << where << ": " << found;
    } else {
      EXPECT_EQ(Lines(), found.ofClass) << where;
    }
  }

  ModuleEntriesAside aside;
  InstalledModule installed;
  LoadedModule module{installed.Path()};
  CallCounter counter;
  Places places;
  FailingSystem system{module.Handle(), counter, places};
  const Entries none = {};
  Entries script;
  Entries table;
  Entries tableOverScript;
  std::vector<FallibleCall> calls;
  int failures = 0;
};

TEST_P(RegistrationTortureTest, EveryCallFails) {
  Learn();
  Prepare();
  ASSERT_HRESULT(S_OK, Act());
  calls = counter.Calls();
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
