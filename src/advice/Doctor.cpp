#include "advice/Doctor.h"

#include <algorithm>
#include <iterator>

#include "advice/BrowserLaunch.h"
#include "advice/FolderCheck.h"
#include "advice/ModuleFile.h"
#include "advice/PlatformCheck.h"
#include "advice/RegistrationCheck.h"
#include "advice/ServerCheck.h"
#include "advice/Words.h"
#include "common/ModulePath.h"

namespace {

std::wstring DefaultModulePath() {
  return WideFromAnsi(GetModuleFolder()) + L"\\norvik.dll";
}

void Append(DoctorChecks& checks, DoctorChecks more) {
  checks.insert(checks.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

}  // namespace

const char* NameOf(DoctorStatus status) {
  switch (status) {
    case DoctorStatus::Ok:
      return "ok";
    case DoctorStatus::Warning:
      return "warning";
    case DoctorStatus::Failed:
      return "failed";
    default:
      return "skipped";
  }
}

DoctorChecks Examine(const DoctorOptions& options) {
  const ModuleFile module = ReadModuleFile(options.modulePath.empty() ? DefaultModulePath() : options.modulePath);
  DoctorChecks checks = {CheckModule(module, ThisProgram())};
  Append(checks, CheckRegistration(ReadRegistration(), module));
  checks.push_back(CheckParser());
  checks.push_back(CheckRegistrar());
  Append(checks, CheckPermit(options.permitPath.empty() ? DefaultPermitPath() : options.permitPath, options.findingsOf));
  checks.push_back(CheckLogFolder());
  Append(checks, CheckFolders());
  checks.push_back(CheckProxy(ReadProxySettings()));
  checks.push_back(CheckServer(options.url));
  checks.push_back(CheckBrowserLaunch(ReadBrowserLaunch(), LinkProgramPath()));
  return checks;
}

bool IsReady(const DoctorChecks& checks) {
  return std::none_of(
      checks.begin(), checks.end(), [](const DoctorCheck& check) { return check.status == DoctorStatus::Failed; });
}
