#include "common/Windows.h"

#include <fmt/format.h>

#include "advice/ExitCode.h"
#include "advice/Outcome.h"
#include "tool/Commands.h"
#include "tool/Console.h"
#include "tool/Json.h"
#include "tool/Report.h"

namespace {

class Progress final : public RunWatcher {
 public:
  explicit Progress(bool isTextWanted) : isText(isTextWanted) {}

  void CommandBegins(const CommandOutcome& command) override {
    shownBytes = 0;
    Show(command);
  }

  void BytesArrived(const CommandOutcome& command) override {
    constexpr std::uint64_t kStep = 0x40000;
    if (command.bytes - shownBytes < kStep)
      return;
    shownBytes = command.bytes;
    Show(command);
  }

  void CommandEnded(const CommandOutcome& command) override {
    if (isText)
      Print(ReportOf(command));
  }

 private:
  static void Show(const CommandOutcome& command) {
    ShowProgress(fmt::format("{} {} {} ({} KiB)", command.number, command.command, command.source, command.bytes / 1024));
  }

  bool isText;
  std::uint64_t shownBytes = 0;
};

int Conclude(const Arguments& arguments, const RunOutcome& outcome) {
  if (arguments.isJson)
    PrintJson(ToJson(outcome));
  else
    Print(SummaryOf(outcome));
  return outcome.result == S_OK ? kYes : kNo;
}

}  // namespace

int PlanCommand(const Arguments& arguments) {
  const RunOutcome outcome = PlanManifest(arguments.url, arguments.permit);
  if (!arguments.isJson) {
    for (const CommandOutcome& command : outcome.commands)
      Print(ReportOf(command));
  }
  return Conclude(arguments, outcome);
}

int RunCommand(const Arguments& arguments) {
  Progress progress(!arguments.isJson);
  return Conclude(arguments, RunManifest(arguments.url, arguments.permit, &progress));
}
