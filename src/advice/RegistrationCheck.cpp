#include "advice/RegistrationCheck.h"

#include <shlwapi.h>

#include <algorithm>
#include <cwchar>

#include "advice/RegistryValue.h"
#include "advice/Words.h"
#include "common/Text.h"
#include "common/identifiers.h"

namespace {

constexpr wchar_t kClassKey[] = L"Software\\Classes\\CLSID\\" NORVIK_CLASS_ID;
constexpr wchar_t kServerKey[] = L"Software\\Classes\\CLSID\\" NORVIK_CLASS_ID L"\\InprocServer32";
constexpr wchar_t kKillKey[] = L"SOFTWARE\\Microsoft\\Internet Explorer\\ActiveX Compatibility\\" NORVIK_CLASS_ID;
constexpr DWORD kKillBit = 0x400;
constexpr wchar_t kThreadingModel[] = L"Apartment";
constexpr WORD kLibraryMajor = 1;
constexpr WORD kLibraryMinor = 0;
constexpr char kRegister[] = " Run regsvr32 of that width with the module's path, as an administrator.";

constexpr char kElsewhere[] = ". It lies on another machine, which is not asked; install the module on this one.";

// The user's own keys stand before those of the machine.
void ReadClass(RegisteredView& view) {
  view.isRegistered = OpenKey(HKEY_CURRENT_USER, kClassKey, view.bits) || OpenKey(HKEY_LOCAL_MACHINE, kClassKey, view.bits);
  RegistryKey server = OpenKey(HKEY_CURRENT_USER, kServerKey, view.bits);
  view.isForUserOnly = static_cast<bool>(server);
  if (!server)
    server = OpenKey(HKEY_LOCAL_MACHINE, kServerKey, view.bits);
  if (!server)
    return;
  view.server = ReadText(server, nullptr);
  view.threadingModel = ReadText(server, L"ThreadingModel");
}

RegisteredView ReadView(int bits) {
  RegisteredView view;
  view.bits = bits;
  ReadClass(view);
  if (const RegistryKey key = OpenKey(HKEY_LOCAL_MACHINE, kKillKey, bits))
    view.isKilled = (ReadNumber(key, L"Compatibility Flags") & kKillBit) != 0;
  return view;
}

bool IsSystem64Bit() {
  BOOL isBelow64Bit = FALSE;
  return sizeof(void*) == 8 || (IsWow64Process(GetCurrentProcess(), &isBelow64Bit) && isBelow64Bit);
}

std::wstring ReadLibraryPath() {
  GUID library;
  BString path;
  if (FAILED(CLSIDFromString(L"" NORVIK_LIBRARY_ID, &library)) ||
      FAILED(QueryPathOfRegTypeLib(library, kLibraryMajor, kLibraryMinor, LOCALE_NEUTRAL, path.Receive())))
    return {};
  return path.Get() ? path.Get() : L"";
}

std::string WidthOf(const RegisteredView& view) {
  return std::to_string(view.bits) + "-bit";
}

// What is wrong with the server of a view, as a sentence; empty when nothing is. `own` is whether the view is for programs
// of the module's width.
std::string ProblemWithServer(const RegisteredView& view, const ModuleFile& module, bool isOwn) {
  const std::string programs = WidthOf(view) + " programs";
  if (view.server.empty())
    return "The control is registered for " + programs + " without the path of a module.";
  const std::string server = "'" + Utf8(view.server) + "'";
  if (PathIsRelativeW(view.server.c_str()))
    return "For " + programs + " " + server + " is registered, which is no full path.";
  const ModuleFile found = ReadModuleFile(view.server);
  if (!found.problem.empty())
    return "For " + programs + " a module is registered that cannot be loaded. " + found.problem;
  if (found.bits != view.bits)
    return "For " + programs + " " + server + " is registered, which is not a " + WidthOf(view) + " module.";
  if (isOwn && !IsSameFile(view.server, module.path))
    return "For " + programs + " " + server + " is registered, not the module that is examined here.";
  return {};
}

DoctorCheck CheckView(const RegisteredView& view, const ModuleFile& module, bool isOwn) {
  const std::string name = "registered-" + std::to_string(view.bits);
  const std::string programs = WidthOf(view) + " programs";
  if (!view.isRegistered && !isOwn) {
    return {name, DoctorStatus::Skipped,
            "No module is registered for " + programs + ". It is needed only where such hosts are in use."};
  }
  if (!view.isRegistered)
    return {name, DoctorStatus::Failed, "The module is not registered for " + programs + "." + kRegister};
  const std::string server = "'" + Utf8(view.server) + "' is registered for " + programs;
  if (PathIsNetworkPathW(view.server.c_str()))
    return {name, DoctorStatus::Warning, server + kElsewhere};
  const std::string problem = ProblemWithServer(view, module, isOwn);
  if (!problem.empty())
    return {name, DoctorStatus::Failed, problem + kRegister};
  if (view.isForUserOnly) {
    return {name, DoctorStatus::Warning,
            server + " of this user only, who can change that. Register it for the machine, as an administrator."};
  }
  return {name, DoctorStatus::Ok, server + "."};
}

std::string Join(const std::vector<std::string>& texts) {
  std::string joined;
  for (const std::string& text : texts)
    joined += (joined.empty() ? "" : " and ") + text;
  return joined;
}

bool IsAnyRegistered(const Registration& registration) {
  return std::any_of(
      registration.views.begin(), registration.views.end(), [](const RegisteredView& view) { return view.isRegistered; });
}

DoctorCheck CheckThreadingModel(const Registration& registration) {
  constexpr char kName[] = "threading-model";
  if (!IsAnyRegistered(registration))
    return {kName, DoctorStatus::Skipped, "The control is not registered."};
  std::vector<std::string> others;
  for (const RegisteredView& view : registration.views) {
    if (view.isRegistered && _wcsicmp(view.threadingModel.c_str(), kThreadingModel) != 0)
      others.push_back("'" + Utf8(view.threadingModel) + "' for " + WidthOf(view) + " programs");
  }
  if (others.empty())
    return {kName, DoctorStatus::Ok, "Apartment."};
  return {kName, DoctorStatus::Failed, "It is " + Join(others) + " and must be Apartment." + kRegister};
}

DoctorCheck CheckTypeLibrary(const Registration& registration, const ModuleFile& module) {
  constexpr char kName[] = "type-library";
  const std::string path = "'" + Utf8(registration.libraryPath) + "'";
  if (!IsAnyRegistered(registration))
    return {kName, DoctorStatus::Skipped, "The control is not registered."};
  if (registration.libraryPath.empty()) {
    return {kName, DoctorStatus::Warning,
            std::string("It is not registered. Scripts run, but hosts that ask for the control's types fail.") + kRegister};
  }
  if (PathIsNetworkPathW(registration.libraryPath.c_str()))
    return {kName, DoctorStatus::Warning, path + " is registered" + kElsewhere};
  if (!IsSameFile(registration.libraryPath, module.path)) {
    return {kName, DoctorStatus::Warning, path + " is registered, not the module that is examined here." + kRegister};
  }
  return {kName, DoctorStatus::Ok, path + " is registered."};
}

DoctorCheck CheckKillBit(const Registration& registration) {
  constexpr char kName[] = "kill-bit";
  std::vector<std::string> killed;
  for (const RegisteredView& view : registration.views) {
    if (view.isKilled)
      killed.push_back(WidthOf(view));
  }
  if (killed.empty())
    return {kName, DoctorStatus::Ok, "It is not set."};
  return {kName, DoctorStatus::Failed,
          "It is set for " + Join(killed) +
              " hosts: they do not create the control. Ask who set it before you clear the control's Compatibility Flags."};
}

}  // namespace

Registration ReadRegistration() {
  Registration registration;
  if (IsSystem64Bit())
    registration.views.push_back(ReadView(64));
  registration.views.push_back(ReadView(32));
  registration.libraryPath = ReadLibraryPath();
  return registration;
}

DoctorChecks CheckRegistration(const Registration& registration, const ModuleFile& module) {
  const int ownBits = module.bits ? module.bits : ThisProgram().bits;
  DoctorChecks checks;
  for (const RegisteredView& view : registration.views)
    checks.push_back(CheckView(view, module, view.bits == ownBits));
  checks.push_back(CheckThreadingModel(registration));
  checks.push_back(CheckTypeLibrary(registration, module));
  checks.push_back(CheckKillBit(registration));
  return checks;
}
