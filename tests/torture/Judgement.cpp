#include "torture/Judgement.h"

#include <cstring>

#include "common/SystemError.h"

namespace {

// What may come of a failing call.
enum Outcome : unsigned {
  kNotMade = 1,     // there is no control
  kNoEngine = 2,    // the control has no permissions, and every run is E_UNEXPECTED
  kRunFails = 4,    // the run fails, with the code of the failing call where that has one
  kCommand = 8,     // a command fails, the run is S_FALSE, and the commands behind it are carried out
  kUsual = 16,      // everything is as if nothing had failed, and the log tells
  kUntold = 32,     // everything is as if nothing had failed, and the log says nothing
  kOtherwise = 64,  // success, but not the usual one
};

struct Row {
  const char* function;
  const char* object;  // null for every one
  unsigned outcomes;
};

// Where a failure is allowed to go by:
//  - Reading optional elements of a manifest, and the entries of a permission file: what cannot be read is as good as
//  absent,
//    so a file may go elsewhere or be replaced, and a list may be shorter. It is told by traces.
//  - Collecting the Copy elements: what was collected before is carried out.
//  - The first item of a document (its XML declaration): it is told, and the document goes on without it.
//  - Existence of a file: what the system does not tell is as good as absent.
//  - What serves only the log, a time, a length to compare with, or what was to be read and is complete.
constexpr unsigned kReading = kNoEngine | kRunFails | kCommand | kUsual | kOtherwise;
constexpr Row kRows[] = {
    {"HeapAlloc", nullptr, kNotMade | kReading | kUntold},
    {"LocalAlloc", nullptr, kUntold},
    {"SysAllocString", nullptr, kNotMade | kReading},
    {"SysAllocStringLen", nullptr, kReading},
    {"VariantChangeType", nullptr, kRunFails},
    {"MultiByteToWideChar", nullptr, kReading},
    {"WideCharToMultiByte", nullptr, kReading | kUntold},
    {"FileTimeToSystemTime", nullptr, kUsual},
    {"SystemTimeToFileTime", nullptr, kUsual | kUntold | kOtherwise},
    {"LocalFileTimeToFileTime", nullptr, kUntold},
    {"GetTempPathA", nullptr, kUsual},
    {"SHGetFolderPathA", "folder", kReading},
    {"CoInitialize", nullptr, kUntold},
    {"CoCreateInstance", "document", kNoEngine | kRunFails},

    {"CreateUrlCacheEntryA", "permit copy", kNoEngine},
    {"CreateFileA", "permit", kNoEngine},
    {"CreateFileA", "permit copy", kNoEngine},
    {"ReadFile", "permit", kNoEngine | kUsual},
    {"WriteFile", "permit copy", kNoEngine | kUsual},
    {"CloseHandle", "permit", kUntold},
    {"CloseHandle", "permit copy", kNoEngine},
    {"CommitUrlCacheEntryA", "permit copy", kNoEngine},

    {"CreateUrlCacheEntryA", "manifest copy", kRunFails},
    {"CreateFileA", "manifest", kRunFails},
    {"CreateFileA", "manifest copy", kRunFails},
    {"ReadFile", "manifest", kRunFails | kUsual},
    {"InternetReadFile", "manifest", kRunFails | kUsual},
    {"WriteFile", "manifest copy", kRunFails | kUsual},
    {"CloseHandle", "manifest", kUntold},
    {"CloseHandle", "manifest copy", kRunFails},
    {"CommitUrlCacheEntryA", "manifest copy", kRunFails},

    {"InternetOpenA", "session", kRunFails | kCommand},
    {"InternetOpenUrlA", "manifest", kRunFails},
    {"InternetOpenUrlA", "source", kCommand},
    {"InternetReadFile", "source", kCommand},
    {"HttpQueryInfoA", nullptr, kUntold},
    {"InternetCloseHandle", nullptr, kUntold},
    {"CreateUrlCacheEntryA", "source copy", kCommand},
    {"CommitUrlCacheEntryA", "source copy", kCommand},

    {"CreateFileA", "source", kCommand | kUsual},  // also read for its time, which is nothing without it
    {"GetFileTime", "source", kUsual},
    {"ReadFile", "source", kCommand},
    {"CloseHandle", "source", kUntold},
    {"CreateFileA", "source copy", kCommand},
    {"WriteFile", "source copy", kCommand},
    {"SetFileTime", "source copy", kCommand},
    {"CloseHandle", "source copy", kCommand},

    {"GetFullPathNameA", "destination", kCommand},
    {"CreateDirectoryA", "destination", kCommand},
    {"GetFileAttributesA", nullptr, kCommand | kUsual | kUntold | kOtherwise},
    {"SetFileAttributesA", "destination", kUsual},
    {"MoveFileA", "destination", kCommand},
    {"CreateFileA", "destination", kCommand},
    {"GetFileTime", "destination", kCommand},
    {"WriteFile", "destination", kCommand},
    {"SetFileTime", "destination", kCommand},
    {"CloseHandle", "destination", kCommand | kUntold},  // one that was only read for its time is complete
    {"ShellExecuteExA", nullptr, kCommand},

    {"load", "xml", kNoEngine | kRunFails},
    {"put_async", "xml", kNoEngine | kRunFails},
    {"put_validateOnParse", "xml", kNoEngine | kRunFails},
    {"put_resolveExternals", "xml", kNoEngine | kRunFails},
    {"put_preserveWhiteSpace", "xml", kNoEngine | kRunFails},
    {"validate", "xml", kNoEngine | kRunFails},
    {"get_doctype", "xml", kNoEngine | kRunFails},
    {"get_parseError", "xml", kUsual},
    {"get_line", "xml", kUsual},
    {"get_reason", "xml", kUsual},
    {"get_firstChild", "xml", kNoEngine | kRunFails},
    {"get_nextSibling", "xml", kNoEngine | kRunFails},
    {"get_nodeName", "xml", kNoEngine | kRunFails},
    {"get_nodeType", "xml", kNoEngine | kRunFails},
    {"get_documentElement", "xml", kNoEngine | kRunFails},
    {"get_attributes", "xml", kRunFails | kCommand | kUsual},
    {"getNamedItem", "xml", kRunFails | kCommand | kUsual},
    {"getAttribute", "xml", kRunFails | kUsual},
    {"getElementsByTagName", "xml", kReading},
    {"selectNodes", "xml", kReading},
    {"selectSingleNode", "xml", kReading},
    {"get_text", "xml", kReading},
    {"get_item", "xml", kReading},
    {"get_length", "xml", kReading},
    {"reset", "xml", kReading},
};

const Row* FindRow(const FallibleCall& call) {
  for (const Row& row : kRows) {
    if (!std::strcmp(row.function, call.function) && (!row.object || call.object == row.object))
      return &row;
  }
  return nullptr;
}

bool IsTold(const std::vector<LogEntry>& log, HRESULT code) {
  for (const LogEntry& entry : log) {
    if (entry.level != "INFO" && (code == S_OK || entry.code == code))
      return true;
  }
  return false;
}

bool HasMessage(const std::vector<LogEntry>& log, const char* begin) {
  for (const LogEntry& entry : log) {
    if (entry.level == "ERROR" && entry.message.find(begin) == 0)
      return true;
  }
  return false;
}

// The result of the run; of the creation where there was no run.
HRESULT RunResult(const Effects& effects) {
  return effects.results.size() > 1 ? effects.results[1] : effects.results[0];
}

bool IsOnlyCreated(const Trial& trial) {
  return trial.scenario->use == Use::CreateOnly;
}

Outcome OutcomeOf(const Trial& trial) {
  const HRESULT result = RunResult(trial.effects);
  if (FAILED(trial.effects.results[0]))
    return kNotMade;
  if (IsOnlyCreated(trial) && (HasMessage(trial.log, "ActiveX control failed to create command executer.") ||
                               HasMessage(trial.log, "An error occured while the ActiveX control was creating executer.")))
    return kNoEngine;
  if (trial.effects == trial.usual)
    return IsTold(trial.log, S_OK) || trial.scenario->results.back() != S_OK ? kUsual : kUntold;
  if (result == E_UNEXPECTED)
    return kNoEngine;
  if (FAILED(result))
    return kRunFails;
  return result == S_FALSE ? kCommand : kOtherwise;
}

// Whose failure has a code of its own that the run has to hand on.
bool HandsOnItsCode(const FallibleCall& call) {
  return call.object == "manifest" || call.object == "manifest copy";
}

std::string JudgeLog(const Trial& trial, Outcome outcome) {
  const HRESULT result = RunResult(trial.effects);
  switch (outcome) {
    case kNoEngine:
      // Of the missing engine, or of an empty list of permissions, which is refused in the same way.
      if (!HasMessage(trial.log, "ActiveX control missing executer.") &&
          !HasMessage(trial.log, "ActiveX control missing command executer.") &&
          !HasMessage(trial.log, "Missing permitted URL list.") && !IsOnlyCreated(trial))
        return "E_UNEXPECTED without its message";
      break;
    case kUsual:
    case kUntold:
      break;
    case kRunFails:
      if (!IsTold(trial.log, result))
        return "the log does not have the result";
      break;
    case kCommand:
      if (!HasMessage(trial.log, "At least one command failed"))
        return "S_FALSE without its message";
      if (!IsTold(trial.log, S_OK))
        return "nothing tells which command failed";
      break;
    default:
      break;
  }
  return std::string();
}

bool IsWhole(const std::string& content) {
  return content == LongContent() || content == kShortContent || content == kOldContent || content == "an older one";
}

// The bytes of what was there before are still there under some name.
bool IsOldKept(const Trial& trial) {
  for (const auto& [name, content] : trial.effects.left) {
    if (content == kOldContent)
      return true;
  }
  return false;
}

std::string JudgeFiles(const Trial& trial, Outcome outcome) {
  if (!trial.counter->HasFailed("DeleteFileA")) {
    for (const auto& [name, content] : trial.effects.left) {
      if (!IsWhole(content))
        return "the partial file " + name;
    }
  }
  const bool isOldUsuallyKept = [&] {
    for (const auto& [name, content] : trial.usual.left) {
      if (content == kOldContent)
        return true;
    }
    return false;
  }();
  if (isOldUsuallyKept && outcome != kOtherwise && !IsOldKept(trial))
    return "the existing file is gone";
  return std::string();
}

std::string JudgeOne(const Trial& trial, Outcome outcome) {
  if (trial.call.object == "log")
    return trial.effects == trial.usual ? std::string() : "a failure of the log shows";
  const Row* const row = FindRow(trial.call);
  if (!row)
    return "no row says what comes of it";
  // What fails by itself has its usual outcome beside those of the row.
  const unsigned outcomes = row->outcomes | (trial.scenario->results.back() != S_OK && outcome == kUsual ? kUsual : 0u);
  if (!(outcomes & outcome))
    return "not one of the outcomes in its row";
  if (outcome == kRunFails && HandsOnItsCode(trial.call) && trial.scenario->results.back() == S_OK &&
      RunResult(trial.effects) != ResultFromError(static_cast<LONG>(trial.counter->failedWith)) &&
      RunResult(trial.effects) != E_FAIL)
    return "not the code of the call that failed";
  return JudgeLog(trial, outcome);
}

}  // namespace

std::string Judge(const Trial& trial) {
  const std::string held = trial.counter->Held();
  if (!held.empty())
    return "not given back: " + held;
  const Outcome outcome = OutcomeOf(trial);
  const std::string files = JudgeFiles(trial, outcome);
  if (!files.empty())
    return files;
  if (!trial.andAllAfter)
    return JudgeOne(trial, outcome);
  // Where everything fails from some call on, nothing may look like a success that is none.
  return outcome == kOtherwise ? "success, but not the usual one" : std::string();
}
