#include "advice/Doctor.h"
#include "advice/ExitCode.h"
#include "advice/PermitFindings.h"
#include "tool/Commands.h"
#include "tool/Console.h"
#include "tool/Json.h"
#include "tool/Report.h"

int DoctorCommand(const Arguments& arguments) {
  DoctorOptions options;
  options.url = arguments.url;
  options.findingsOf = [](const PermitDocument& permit) { return FindingsOf(permit); };
  const DoctorChecks checks = Examine(options);
  if (arguments.isJson) {
    PrintJson(ToJson(checks));
  } else {
    for (const DoctorCheck& check : checks)
      Print(ReportOf(check));
  }
  return IsReady(checks) ? kYes : kNo;
}
