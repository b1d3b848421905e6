#include "tool/Tool.h"

#include <new>

#include "advice/Document.h"
#include "advice/ExitCode.h"
#include "advice/Words.h"
#include "common/Apartment.h"
#include "common/ModulePath.h"
#include "tool/Commands.h"
#include "tool/Console.h"

namespace {

int Dispatch(const Arguments& arguments) {
  switch (arguments.command) {
    case Arguments::Command::Check:
      return CheckCommand(arguments);
    case Arguments::Command::Explain:
      return ExplainCommand(arguments);
    case Arguments::Command::Plan:
      return PlanCommand(arguments);
    case Arguments::Command::Run:
      return RunCommand(arguments);
    case Arguments::Command::BrowserKit:
      return BrowserKitCommand(arguments);
    case Arguments::Command::BrowserOn:
      return BrowserOnCommand(arguments);
    case Arguments::Command::BrowserOff:
      return BrowserOffCommand(arguments);
    case Arguments::Command::BrowserStatus:
      return BrowserStatusCommand(arguments);
    case Arguments::Command::Doctor:
      break;
  }
  return DoctorCommand(arguments);
}

int Complain(const std::string& sentence) {
  PrintError("norvik: " + WithoutCredentials(sentence) + "\n");
  return kUnanswered;
}

}  // namespace

int RunTool(const std::vector<std::wstring>& arguments) {
  try {
    const Apartment apartment;
    RecordModulePath(nullptr);  // the program stands beside the module, and counts as it
    return Dispatch(ReadArguments(arguments));
  } catch (const UsageText& usage) {
    if (usage.isWrong)
      PrintError("norvik: " + WithoutCredentials(usage.text));
    else
      Print(usage.text);
    return usage.isWrong ? kWrongUsage : kYes;
  } catch (const Unanswered& unanswered) {
    return Complain(unanswered.what());
  } catch (const std::bad_alloc&) {
    return Complain("There is not enough memory to answer.");
  } catch (const std::exception& failure) {
    return Complain(failure.what());
  }
}
