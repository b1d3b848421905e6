#include "open/Launch.h"

#include "common/Windows.h"

#include <exception>
#include <new>
#include <utility>

#include "advice/Document.h"
#include "advice/ExitCode.h"
#include "advice/FailureReport.h"
#include "advice/Link.h"
#include "advice/Outcome.h"
#include "advice/Words.h"
#include "common/Apartment.h"
#include "common/Handles.h"
#include "common/ModulePath.h"
#include "open/Browser.h"
#include "open/FailureWindow.h"
#include "open/ProgressWindow.h"
#include "open/RunningManifest.h"

namespace {

// A run in a thread of its own, so that windows are served while it waits for a server.
class Run {
 public:
  explicit Run(std::wstring manifestURL) : url(std::move(manifestURL)) {}

  // Unanswered, or out of memory, as RunManifest.
  RunOutcome Finish(bool isShown) {
    const KernelHandle thread(CreateThread(nullptr, 0, &Run::Begin, this, 0, nullptr));
    if (!thread)
      Execute();
    else if (isShown)
      WaitWithProgress(thread.Get(), progress);
    else
      WaitForSingleObject(thread.Get(), INFINITE);
    if (failure)
      std::rethrow_exception(failure);
    return outcome;
  }

 private:
  static DWORD WINAPI Begin(void* run) {
    static_cast<Run*>(run)->Execute();
    return 0;
  }

  void Execute() {
    try {
      const Apartment apartment;
      outcome = RunManifest(url, {}, &progress);
    } catch (...) {
      failure = std::current_exception();
    }
  }

  std::wstring url;
  Progress progress;
  RunOutcome outcome;
  std::exception_ptr failure;
};

class Launcher {
 public:
  int Start(const std::wstring& commandLine) {
    const LinkCall call = ReadLinkCall(commandLine);
    isShown = !call.isQuiet;
    const std::wstring url = ManifestOfLink(call.link);
    const RunningManifest running(url);
    if (!running.IsTheOnlyOne()) {
      LogSecondStart(url);
      return kYes;
    }
    return Conclude(Run(url).Finish(isShown));
  }

  int Complain(const std::string& headline, const std::string& sentence, int code) const {
    Show({headline, {WithoutCredentials(sentence)}}, {});
    return code;
  }

 private:
  int Conclude(const RunOutcome& outcome) const {
    if (outcome.navigate && !OpenInBrowser(WideFromUtf8(*outcome.navigate)))
      Show({"The page cannot be opened.", {"There is no browser to open it in: " + *outcome.navigate}}, outcome.log);
    if (outcome.result == S_OK)
      return kYes;
    Show(ReportOfFailure(outcome, {}), outcome.log);
    return kNo;
  }

  void Show(const FailureReport& report, const std::string& log) const {
    if (isShown)
      ShowFailure(report, log);
  }

  bool isShown = true;
};

}  // namespace

int Launch(const std::wstring& commandLine) {
  constexpr char kNotRun[] = "Nothing was installed or opened.";
  Launcher launcher;
  try {
    const Apartment apartment;
    RecordModulePath(nullptr);  // the program stands beside the module, and counts as it
    return launcher.Start(commandLine);
  } catch (const LinkRefused& refused) {
    return launcher.Complain("This link cannot be used.", refused.what(), kWrongUsage);
  } catch (const Unanswered& unanswered) {
    return launcher.Complain(kNotRun, unanswered.what(), kUnanswered);
  } catch (const std::bad_alloc&) {
    return launcher.Complain(kNotRun, "There is not enough memory.", kUnanswered);
  } catch (const std::exception& failed) {
    return launcher.Complain(kNotRun, failed.what(), kUnanswered);
  }
}
