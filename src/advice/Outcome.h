#pragma once

#include "common/Windows.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "advice/Question.h"

// What a run of a manifest did, or would do, command by command.

enum class CommandAction {
  Write,      // a new file
  Replace,    // the existing file's content
  Leave,      // the existing file stays as it is
  MoveAside,  // the existing file gets another name, then a new file
  Cancel,     // the existing file ends the command
  Refuse,     // the command ends before it gets to a file
  Cache,      // a file of the Internet cache
  Cookie,
};

// "write", "replace", "leave", ...
const char* NameOf(CommandAction action);

struct CommandOutcome {
  int number = 0;                          // from 1, in the order of the run
  int line = 0;                            // of the element in the manifest; 0 when the platform cannot tell
  std::string command;                     // "Copy" or "Open"
  std::string source;                      // the corrected URL, without user name and password
  std::optional<std::string> destination;  // the full name of the file; nothing for a cookie, or before a name was chosen
  CommandAction action = CommandAction::Refuse;
  std::optional<std::string> movedTo;
  HRESULT result = E_UNEXPECTED;
  std::string reason;  // of a failure, the first thing that the module says; else empty
  std::uint64_t bytes = 0;

  // Of one that was refused before a name was chosen: what the permission file was asked, in that order.
  std::vector<Question> questions;
};

struct RunOutcome {
  std::string manifest;  // as it was asked for, without user name and password
  HRESULT result = E_UNEXPECTED;
  std::string reason;                   // of a failure before the commands
  std::optional<std::string> navigate;  // the URL for a browser
  std::string log;                      // the path of the log file; empty when nothing was written
  std::vector<CommandOutcome> commands;
  std::vector<Question> questions;  // of a manifest that was refused: what the permission file was asked
};

// Hears of a run while it goes on.
class RunWatcher {
 public:
  virtual ~RunWatcher() = default;
  virtual void CommandBegins(const CommandOutcome& command) = 0;
  virtual void BytesArrived(const CommandOutcome& command) = 0;
  virtual void CommandEnded(const CommandOutcome& command) = 0;
};

// Runs the manifest as a control does, and writes its log. `permitFile` is empty for the one beside the program. `watcher`
// may be null. Unanswered when the permission file cannot be used.
RunOutcome RunManifest(const std::wstring& url, const std::wstring& permitFile, RunWatcher* watcher);

// What RunManifest would do if every transfer succeeded. Nothing is written but the manifest and the permission file in the
// Internet cache. Unanswered, beside the above, when the manifest could not be fetched.
RunOutcome PlanManifest(const std::wstring& url, const std::wstring& permitFile);
