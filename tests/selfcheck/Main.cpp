// The self-check: runs the test programs on a machine to which nothing but their zip file was brought, and writes one
// report.

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "advice/Words.h"
#include "host/RegistryKeys.h"
#include "selfcheck/Kit.h"
#include "selfcheck/Process.h"
#include "selfcheck/Report.h"
#include "selfcheck/Suite.h"

namespace {

namespace fs = std::filesystem;

constexpr int kUsage = 2;

struct Options {
  std::vector<std::string> widths;  // of the programs that are to run
  std::vector<std::string> possible;
  std::vector<std::string> suites;
  std::string report;
  std::string certificates;
  unsigned limitSeconds = 900;
  bool mayRegister = false;
  bool isUndoing = false;
};

void Tell(const std::string& text) {
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

void AddOptions(CLI::App& app, Options& options) {
  app.allow_windows_style_options();
  app.add_flag(
      "--register", options.mayRegister, "Run what needs the module's entries in the registry too; they are undone");
  app.add_option("--suites", options.suites, "These suites only, separated by commas")->delimiter(',');
  app.add_option("--width", options.widths, "x64 or x86: this width only")->delimiter(',');
  app.add_option("--limit", options.limitSeconds, "Seconds for one start of one program")->check(CLI::Range(1, 86400));
  app.add_option("--certificates", options.certificates, "The folder of the web server's certificates");
  app.add_option("--report", options.report, "The folder for the report, in place of 'report' beside selfcheck.cmd");
  app.add_option("--has", options.possible, "The widths that run on this machine")->delimiter(',')->group("");
  app.add_flag("--undo", options.isUndoing, "Put back what an interrupted run left in the registry")->group("");
}

// The folder above <width>\tests\selfcheck.exe. The test programs speak to the system in its code page, and so must the
// name.
fs::path RootFolder() {
  wchar_t path[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const fs::path root = fs::path(path).parent_path().parent_path().parent_path();
  if (!AnsiFromWide(root.wstring()))
    throw std::runtime_error(
        "The folder's name has characters outside of this machine's code page. Unpack into another one.");
  return root;
}

std::string Now() {
  SYSTEMTIME now = {};
  GetSystemTime(&now);
  char text[32];
  std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02uZ", now.wYear, now.wMonth, now.wDay, now.wHour,
                now.wMinute, now.wSecond);
  return text;
}

bool IsAmong(const std::string& name, const std::vector<std::string>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void CheckNames(const Kit& kit, const Options& options) {
  for (const std::string& width : options.widths) {
    if (!kit.suites.count(width))
      throw std::runtime_error("There is no width " + width + ".");
    for (const std::string& suite : options.suites) {
      if (!IsAmong(suite, kit.suites.at(width)))
        throw std::runtime_error("There is no suite " + suite + ".");
    }
  }
}

// What the test programs are told by their surroundings. A web server that runs already is used.
std::unique_ptr<ServerProcess> PrepareSurroundings(const Kit& kit, const Options& options) {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);  // inherited: no program stops at a question
  SetEnvironmentVariableW(L"NORVIK_PROJECT_FOLDER", (kit.root / "project").c_str());
  SetEnvironmentVariableA("NORVIK_KEEP_REGISTRY", options.mayRegister ? nullptr : "1");
  if (GetEnvironmentVariableW(L"NORVIK_TEST_SERVER", nullptr, 0) > 0)
    return nullptr;
  auto server = std::make_unique<ServerProcess>(kit.root / "server" / "webserver.py", options.certificates);
  SetEnvironmentVariableA("NORVIK_TEST_SERVER", server->Ports().c_str());
  return server;
}

// Where the report goes: into the folder that was asked for or, where nothing can be written there, into the temporary
// folder.
fs::path ReportFolder(const fs::path& wanted, Report& report) {
  std::error_code error;
  fs::create_directories(wanted, error);
  std::ofstream trial(wanted / "report.txt");
  if (trial)
    return wanted;
  const fs::path other = fs::temp_directory_path() / "norvik-selfcheck";
  fs::create_directories(other);
  report.problems.push_back(
      "Nothing can be written to " + Utf8(wanted.wstring()) + ", so the report is in " + Utf8(other.wstring()) + ".");
  return other;
}

void Write(const fs::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file)
    throw std::runtime_error("Cannot write " + Utf8(path.wstring()) + ".");
}

// Each width has a view of the registry of its own, and a program for it.
void UndoRegistration(const Kit& kit, const Options& options, const fs::path& folder, Report& report) {
  for (const std::string& width : options.widths) {
    const Ending ending = RunToFile(kit.Program(width, "selfcheck"), {L"--undo"}, folder / (width + "-undo.txt"), 60);
    if (ending.isOverLimit || ending.code != 0)
      report.problems.push_back("The registry could not be put back as it was; " + width + "-undo.txt says why.");
  }
}

void RunSuites(const Kit& kit, const Options& options, const fs::path& folder, Report& report) {
  SuiteSettings settings;
  settings.mayRegister = options.mayRegister;
  settings.hasCertificates = !options.certificates.empty();
  settings.limitSeconds = options.limitSeconds;
  settings.outputFolder = folder;
  for (const std::string& width : options.widths) {
    for (const std::string& suite : kit.suites.at(width)) {
      if (!options.suites.empty() && !IsAmong(suite, options.suites))
        continue;
      report.suites.push_back(RunSuite(kit, width, suite, settings));
      Tell(width + " " + suite + ": " + CountsOf(report.suites.back()));
    }
  }
}

int Check(const Kit& kit, const Options& options) {
  Report report;
  report.version = kit.version;
  report.began = Now();
  report.hasRegistered = options.mayRegister;
  report.machine = ReadMachine();
  if (options.mayRegister && !report.machine.isElevated)
    throw std::runtime_error("/register needs an administrator's prompt.");
  const auto server = PrepareSurroundings(kit, options);
  const fs::path folder = ReportFolder(options.report.empty() ? kit.root / "report" : fs::path(options.report), report);
  RunSuites(kit, options, folder, report);
  if (options.mayRegister)
    UndoRegistration(kit, options, folder, report);
  Write(folder / "report.json", JsonOf(report).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
  Write(folder / "report.txt", TextOf(report));
  for (const std::string& problem : report.problems)
    Tell(problem);
  Tell(CountsOf(report));
  Tell("The report is " + Utf8((folder / "report.txt").wstring()));
  return report.IsGood() ? 0 : 1;
}

// Taking the entries aside finds those of an interrupted test, and puts them back.
int Undo() {
  { const ModuleEntriesAside aside; }
  return testing::Test::HasFailure() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app("Runs Norvik's tests on this machine and writes a report.", "selfcheck");
  AddOptions(app, options);
  try {
    app.parse(argc, argv);
    if (options.isUndoing)
      return Undo();
    const Kit kit = ReadKit(RootFolder());
    if (options.widths.empty())
      options.widths = options.possible;
    CheckNames(kit, options);
    return Check(kit, options);
  } catch (const CLI::ParseError& error) {
    const int code = app.exit(error);
    return code == 0 ? 0 : kUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return kUsage;
  }
}
