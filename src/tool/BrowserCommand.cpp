#include "advice/BrowserLaunch.h"
#include "advice/ExitCode.h"
#include "advice/Words.h"
#include "tool/Commands.h"
#include "tool/Console.h"
#include "tool/Json.h"
#include "tool/Report.h"

namespace {

void PrintStatus(const Arguments& arguments, const BrowserLaunch& launch) {
  const DoctorCheck check = CheckBrowserLaunch(launch, LinkProgramPath());
  if (arguments.isJson)
    PrintJson(ToJson(launch, check));
  else
    Print(ReportOf(check));
}

std::string WhyNotSwitched(LONG error) {
  return error == ERROR_ACCESS_DENIED
             ? "Only an administrator can change what links in browsers start."
             : "The registration of links cannot be changed: " + CodeAndText(HRESULT_FROM_WIN32(error));
}

int Refuse(const std::string& sentence) {
  PrintError("norvik: " + sentence + " Nothing was changed.\n");
  return kNo;
}

int Conclude(const Arguments& arguments, LONG error) {
  if (error != ERROR_SUCCESS)
    return Refuse(WhyNotSwitched(error));
  PrintStatus(arguments, ReadBrowserLaunch());
  return kYes;
}

}  // namespace

int BrowserOnCommand(const Arguments& arguments) {
  const std::wstring program = LinkProgramPath();
  if (GetFileAttributesW(program.c_str()) == INVALID_FILE_ATTRIBUTES)
    return Refuse("'" + Utf8(program) + "' is not there, and links would start nothing.");
  return Conclude(arguments, SwitchBrowserLaunchOn(program));
}

int BrowserOffCommand(const Arguments& arguments) {
  return Conclude(arguments, SwitchBrowserLaunchOff());
}

int BrowserStatusCommand(const Arguments& arguments) {
  const BrowserLaunch launch = ReadBrowserLaunch();
  PrintStatus(arguments, launch);
  return launch.isOn ? kYes : kNo;
}
