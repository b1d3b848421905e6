#include "torture/Judgement.h"

#include <algorithm>

#include "common/SystemError.h"
#include "torture/Outcomes.h"

namespace {

// How many lines of the log, notes aside, have the code.
std::ptrdiff_t CountCode(const std::vector<LogEntry>& log, HRESULT code) {
  return std::count_if(
      log.begin(), log.end(), [code](const LogEntry& entry) { return entry.level != "INFO" && entry.code == code; });
}

std::ptrdiff_t CountMessage(const std::vector<LogEntry>& log, const std::string& begin) {
  return std::count_if(log.begin(), log.end(), [&](const LogEntry& entry) {
    return entry.level == "ERROR" && entry.message.compare(0, begin.size(), begin) == 0;
  });
}

// Does the log say so more often than when nothing fails?
bool IsTold(const Trial& trial, HRESULT code) {
  return CountCode(trial.log, code) > CountCode(trial.usual->log, code);
}

bool HasMessage(const Trial& trial, const char* begin) {
  return CountMessage(trial.log, begin) > 0;
}

// The result of the run; of the creation where there was no run.
HRESULT RunResult(const Effects& effects) {
  return effects.results.size() > 1 ? effects.results[1] : effects.results[0];
}

HRESULT CodeOfCall(const Trial& trial) {
  return ResultFromError(static_cast<LONG>(trial.counter->failedWith));
}

bool IsUsualFile(const Trial& trial, const std::string& name) {
  const auto usual = trial.usual->effects.left.find(name);
  const auto found = trial.effects.left.find(name);
  return (usual == trial.usual->effects.left.end()) == (found == trial.effects.left.end()) &&
         (found == trial.effects.left.end() || found->second == usual->second);
}

// The scenarios have two commands at most, one of which writes this file; whatever else there is, is the other one's.
constexpr char kFileOfOneCommand[] = "short.txt";

bool IsOneCommandUsual(const Trial& trial) {
  if (IsUsualFile(trial, kFileOfOneCommand))
    return true;
  for (const auto& [name, content] : trial.usual->effects.left) {
    if (name != kFileOfOneCommand && !IsUsualFile(trial, name))
      return false;
  }
  return true;
}

// Was the existing file replaced although it usually stays, under its own name or another one?
bool IsReplaced(const Trial& trial) {
  const auto& usual = trial.usual->effects.left;
  const auto& left = trial.effects.left;
  const auto hasOld = [](const Files& files) {
    return std::any_of(files.begin(), files.end(), [](const auto& file) { return file.second == kOldContent; });
  };
  return hasOld(usual) && !hasOld(left);
}

unsigned OutcomesOfFailure(const Trial& trial, HRESULT result, HRESULT code) {
  unsigned outcomes = result == code ? kRunFails : 0u;
  if (result == code && trial.usual->situations[trial.number].element == "Open")
    outcomes |= kUnread;
  if (result == E_UNEXPECTED && (HasMessage(trial, "ActiveX control missing executer.") ||
                                 HasMessage(trial, "ActiveX control missing command executer.")))
    outcomes |= kNoEngine;
  if (result == E_UNEXPECTED && HasMessage(trial, "Missing permitted URL list."))
    outcomes |= kNoList;
  if (result == E_ACCESSDENIED)
    outcomes |= kDenied;
  if (result == E_FAIL)
    outcomes |= kRefused;
  return outcomes;
}

unsigned OutcomesOfCreation(const Trial& trial) {
  return HasMessage(trial, "ActiveX control failed to create command executer.") ||
                 HasMessage(trial, "An error occured while the ActiveX control was creating executer.")
             ? kNoEngine
             : kUsual;
}

// What the effects may be taken for, when `code` is the code that the log tells.
unsigned OutcomesOf(const Trial& trial, HRESULT code) {
  const HRESULT result = RunResult(trial.effects);
  if (FAILED(trial.effects.results[0]))
    return trial.effects.results[0] == code ? kNotMade : 0u;
  if (trial.scenario->use == Use::CreateOnly)
    return OutcomesOfCreation(trial);
  unsigned outcomes = trial.effects == trial.usual->effects ? kUsual : 0u;
  if (outcomes && FAILED(result))
    outcomes |= kRefusedAnyway;
  if (FAILED(result))
    return outcomes | OutcomesOfFailure(trial, result, code);
  if (result == S_FALSE) {
    outcomes |= kCommands | (IsOneCommandUsual(trial) ? kCommand : 0u);
    outcomes |= trial.usual->situations[trial.number].element == "Copy" ? kUnread : 0u;
  }
  if (!(outcomes & kUsual) && (result == S_OK || result == RunResult(trial.usual->effects)))
    outcomes |= IsReplaced(trial) ? kReplaced : kLess;
  return outcomes;
}

// Every file has the bytes that it has when nothing fails, or those that were there before. What is replaced against its
// policy is replaced by the whole new file, and what goes into the Internet cache is whole as well.
std::string JudgeFile(const Trial& trial, unsigned outcomes, const std::string& name, const std::string& content) {
  const auto isOf = [&](const Files& files) {
    const auto found = files.find(name);
    return found != files.end() && found->second == content;
  };
  if (isOf(trial.usual->effects.left) || isOf(trial.scenario->existing))
    return std::string();
  if (trial.scenario->existing.count(name) && IsReplaced(trial) && content == LongContent())
    return std::string();
  if ((outcomes & kLess) && name == kCachedFile && content == LongContent())
    return std::string();
  return "a file that is neither the usual nor the existing one: " + name;
}

// What is left of a file that cannot be taken away is not looked at.
std::string JudgeContents(const Trial& trial, unsigned outcomes) {
  if (trial.counter->HasFailed("DeleteFileA"))
    return std::string();
  for (const auto& [name, content] : trial.effects.left) {
    const std::string wrong = JudgeFile(trial, outcomes, name, content);
    if (!wrong.empty())
      return wrong;
  }
  return trial.effects.uncommitted.empty() ? std::string() : "nobody committed the " + trial.effects.uncommitted[0];
}

std::string JudgeFiles(const Trial& trial, unsigned outcomes) {
  if (IsReplaced(trial) && !(outcomes & kReplaced))
    return "the existing file is gone";
  for (const auto& [name, content] : trial.scenario->existing) {
    if (content != kOldContent && !trial.effects.left.count(name))
      return "another existing file is gone: " + name;
  }
  return JudgeContents(trial, outcomes);
}

// A copy is whole, unless the document went on without its declaration.
std::string JudgeCopies(const Trial& trial) {
  if (trial.Call().function == std::string("WriteFile"))
    return std::string();
  for (const auto& [name, content] : trial.effects.copies) {
    const auto usual = trial.usual->effects.copies.find(name);
    if (usual != trial.usual->effects.copies.end() && usual->second != content)
      return "not the usual " + name;
  }
  return std::string();
}

// The messages that belong to what happened.
std::string JudgeMessages(const Trial& trial, unsigned outcomes) {
  if ((outcomes & (kCommand | kCommands | kUnread)) && RunResult(trial.effects) == S_FALSE &&
      !HasMessage(trial, "At least one command failed"))
    return "S_FALSE without its message";
  if (FAILED(RunResult(trial.effects)) && trial.effects.results.size() > 1 &&
      CountCode(trial.log, RunResult(trial.effects)) == 0)
    return "the log does not have the result";
  return std::string();
}

struct Verdict {
  bool isRight = false;
  unsigned outcomes = 0;  // of the row that is right
};

Verdict Compare(const Trial& trial) {
  const FallibleCall& call = trial.Call();
  const Situation& situation = trial.usual->situations[trial.number];
  for (const ToldRow* const row : ToldRowsOf(call, situation)) {
    const HRESULT code = row->code == kItsOwn ? CodeOfCall(trial) : row->code;
    if ((row->outcomes & OutcomesOf(trial, code)) && IsTold(trial, code))
      return {true, row->outcomes};
  }
  for (const UntoldRow* const row : UntoldRowsOf(call, situation)) {
    if (row->outcomes & OutcomesOf(trial, CodeOfCall(trial)))
      return {true, row->outcomes};
  }
  return {};
}

std::string JudgeOne(const Trial& trial) {
  if (trial.Call().object == "log")
    return trial.effects == trial.usual->effects ? std::string() : "a failure of the log shows";
  const Verdict verdict = Compare(trial);
  if (!verdict.isRight) {
    return ToldRowsOf(trial.Call(), trial.usual->situations[trial.number]).empty() &&
                   UntoldRowsOf(trial.Call(), trial.usual->situations[trial.number]).empty()
               ? "no row says what comes of it"
               : "no row allows this, or the log does not tell";
  }
  for (const std::string& wrong :
       {JudgeFiles(trial, verdict.outcomes), JudgeCopies(trial), JudgeMessages(trial, verdict.outcomes)}) {
    if (!wrong.empty())
      return wrong;
  }
  return std::string();
}

// May the use go on as usual when this call fails?
bool MayGoUnnoticed(const FallibleCall& call, const Situation& situation) {
  if (call.object == "log")
    return true;
  const auto isUsual = [](const auto* row) { return (row->outcomes & kUsual) != 0; };
  const auto told = ToldRowsOf(call, situation);
  const auto untold = UntoldRowsOf(call, situation);
  return std::any_of(told.begin(), told.end(), isUsual) || std::any_of(untold.begin(), untold.end(), isUsual);
}

// Where everything fails from some call on, the log is lost as well: nothing may look like a success that is none.
std::string JudgeAll(const Trial& trial) {
  if (trial.scenario->use == Use::CreateOnly || RunResult(trial.effects) != S_OK)
    return JudgeFiles(trial, kReplaced | kLess);
  if (!(trial.effects == trial.usual->effects))
    return "success, but not the usual one";
  for (std::size_t number = trial.number; number < trial.usual->calls.size(); ++number) {
    const FallibleCall& call = trial.usual->calls[number];
    if (!MayGoUnnoticed(call, trial.usual->situations[number]))
      return "success without " + std::string(call.function);
  }
  return JudgeFiles(trial, 0);
}

}  // namespace

std::string Judge(const Trial& trial) {
  const std::string held = trial.counter->Held();
  if (!held.empty())
    return "not given back: " + held;
  return trial.andAllAfter ? JudgeAll(trial) : JudgeOne(trial);
}
