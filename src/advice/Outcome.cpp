#include "advice/Outcome.h"

#include <new>

#include "advice/Document.h"
#include "advice/InvalidDocument.h"
#include "advice/KeptLog.h"
#include "advice/Outline.h"
#include "advice/PermitDocument.h"
#include "advice/Rehearsal.h"
#include "advice/Words.h"
#include "engine/CopyCommand.h"
#include "engine/Execute.h"
#include "log/LogFile.h"
#include "log/LogFileSink.h"

namespace {

Question FolderQuestion(const CDestinationFolder& folder) {
  const bool hasPath = folder.GetKind() != FolderKind::InternetCache && folder.GetKind() != FolderKind::Cookie;
  return hasPath ? Question{QuestionKind::Folder, WideFromAnsi(folder.GetPath()), FolderKind::Path}
                 : Question{QuestionKind::Folder, {}, folder.GetKind()};
}

// What a command asks of the permission file, in its order. A folder counts by its path, whatever its kind.
std::vector<Question> QuestionsOf(const CCopyCommand& command) {
  std::vector<Question> questions;
  if (command.GetSource())
    questions.push_back({QuestionKind::Source, WideFromAnsi(command.GetSource()->GetURL()), FolderKind::Path});
  if (command.GetDestination())
    questions.push_back(FolderQuestion(*command.GetDestination()));
  questions.push_back({QuestionKind::Extension, WideFromAnsi(command.GetCheckedExtension()), FolderKind::Path});
  return questions;
}

// Follows a run and writes down what it hears. It is called from the module, which passes no exceptions on: a failure of
// memory is kept until the run is over.
class Recorder final : public RunObserver, public TransferObserver {
 public:
  Recorder(RunOutcome& recordedOutcome, KeptLog& runLog, RunWatcher* runWatcher)
      : outcome(recordedOutcome), log(runLog), watcher(runWatcher) {}

  void CommandBegins(const CCommand& command) override {
    Keep([&] {
      const auto& copy = static_cast<const CCopyCommand&>(command);
      log.Forget();
      if (outcome.commands.empty())
        ReadLines();
      outcome.commands.emplace_back();
      CommandOutcome& current = outcome.commands.back();
      current.number = static_cast<int>(outcome.commands.size());
      if (outcome.commands.size() <= lines.size())
        current.line = lines[outcome.commands.size() - 1];
      current.command = copy.GetElementName();
      current.source = copy.GetSource() ? WithoutCredentials(Utf8FromAnsi(copy.GetSource()->GetURL())) : "";
      kind = copy.GetDestinationKind();
      if (watcher)
        watcher->CommandBegins(current);
    });
  }

  void DestinationChosen(const char* fileName) override {
    Keep([&] {
      CommandOutcome& current = outcome.commands.back();
      current.action = kind == FolderKind::Cookie          ? CommandAction::Cookie
                       : kind == FolderKind::InternetCache ? CommandAction::Cache
                                                           : CommandAction::Write;
      if (kind != FolderKind::Cookie && fileName && *fileName)
        current.destination = Utf8FromAnsi(fileName);
    });
  }

  void ExistingFileDecided(const FileDecision& decision) override {
    Keep([&] {
      CommandOutcome& current = outcome.commands.back();
      current.action = ActionOf(decision.action);
      if (decision.action == FileAction::MoveAside)
        current.movedTo = Utf8FromAnsi(decision.newName);
      if (decision.refusal == FileRefusal::Protected)  // the module says nothing of it
        current.reason = "The file is read-only or hidden, and the command does not force it.";
    });
  }

  void BytesArrived(const void* bytes, DWORD count) override {
    Keep([&] {
      if (outcome.commands.empty()) {
        manifest.append(static_cast<const char*>(bytes), count);
        return;
      }
      CommandOutcome& current = outcome.commands.back();
      current.bytes += count;
      if (watcher)
        watcher->BytesArrived(current);
    });
  }

  void CommandEnded(const CCommand& command, HRESULT result) override {
    Keep([&] {
      CommandOutcome& current = outcome.commands.back();
      current.result = result;
      if (result == E_ACCESSDENIED && !current.destination)
        current.questions = QuestionsOf(static_cast<const CCopyCommand&>(command));
      if (FAILED(result) && current.reason.empty())
        current.reason = log.FirstComplaint();
      if (FAILED(result) && current.reason.empty())
        current.reason = ReasonText(result);
      if (watcher)
        watcher->CommandEnded(current);
    });
  }

  // The manifest as it came; empty when the module did not get a byte of it.
  const std::string& Manifest() const { return manifest; }

  void Conclude() const {
    if (isOutOfMemory)
      throw std::bad_alloc();
  }

 private:
  template <class Work>
  void Keep(Work work) {
    try {
      if (!isOutOfMemory)
        work();
    } catch (const std::bad_alloc&) {
      isOutOfMemory = true;
    } catch (const Unanswered&) {
      // a system without the reader has no lines
    }
  }

  // The lines of the commands, in the order of the run.
  void ReadLines() {
    const Outline outline = OutlineOf(manifest);
    for (const char* const name : {"Copy", "Open"}) {
      for (const Element& element : outline.root.children) {
        if (element.name == name)
          lines.push_back(element.line);
      }
    }
  }

  static CommandAction ActionOf(FileAction action) {
    switch (action) {
      case FileAction::Replace:
        return CommandAction::Replace;
      case FileAction::LeaveAlone:
        return CommandAction::Leave;
      case FileAction::Cancel:
        return CommandAction::Cancel;
      case FileAction::MoveAside:
        return CommandAction::MoveAside;
      case FileAction::Refuse:
        break;
    }
    return CommandAction::Refuse;
  }

  RunOutcome& outcome;
  KeptLog& log;
  RunWatcher* watcher;
  FolderKind kind = FolderKind::Path;
  std::string manifest;
  std::vector<int> lines;
  bool isOutOfMemory = false;
};

// Why the run ended before its commands. Of a manifest that it could not use, the module names its own copy, which is of no
// use to anybody.
std::string ReasonOfFailure(const std::string& manifest, HRESULT hr, const std::string& complaint) {
  if (manifest.empty())
    return complaint;
  return SentenceOf(InvalidFinding({OutlineOf(manifest), manifest, kTransferManifest, hr, complaint}));
}

[[noreturn]] void RefusePermit(const std::wstring& permitFile, const std::string& complaint) {
  const PermitDocument permit(permitFile);
  throw Unanswered(
      "The permission file cannot be used: " + (permit.IsUsable() ? complaint : SentenceOf(WhyInvalid(permit))));
}

void Run(const std::wstring& url, const std::wstring& permitFile, Machine& machine, Recorder& recorder, KeptLog& log,
         RunOutcome& outcome) {
  const std::wstring asked = PlaceForModule(url);
  HRESULT hr = S_OK;
  CExecuter executer(0, &hr, permitFile.empty() ? nullptr : PathForModule(FullPath(permitFile)).c_str());
  if (hr == E_OUTOFMEMORY)
    throw std::bad_alloc();
  if (FAILED(hr))
    RefusePermit(permitFile.empty() ? DefaultPermitPath() : permitFile, log.FirstComplaint());
  log.Forget();
  BString navigate;
  outcome.manifest = WithoutCredentials(Utf8(url));
  outcome.result = executer.Run(asked.c_str(), navigate.Receive(), machine, &recorder);
  if (FAILED(outcome.result))
    outcome.reason = ReasonOfFailure(recorder.Manifest(), outcome.result, log.FirstComplaint());
  if (outcome.result == E_ACCESSDENIED && recorder.Manifest().empty())
    outcome.questions = {{QuestionKind::Manifest, asked, FolderKind::Path}};
  if (navigate)
    outcome.navigate = WithoutCredentials(Utf8(navigate.Get()));
  recorder.Conclude();
}

}  // namespace

const char* NameOf(CommandAction action) {
  switch (action) {
    case CommandAction::Write:
      return "write";
    case CommandAction::Replace:
      return "replace";
    case CommandAction::Leave:
      return "leave";
    case CommandAction::MoveAside:
      return "move-aside";
    case CommandAction::Cancel:
      return "cancel";
    case CommandAction::Refuse:
      return "refuse";
    case CommandAction::Cache:
      return "cache";
    case CommandAction::Cookie:
      break;
  }
  return "cookie";
}

RunOutcome RunManifest(const std::wstring& url, const std::wstring& permitFile, RunWatcher* watcher) {
  RunOutcome outcome;
  KeptLog log(KeptLog::Also::LogFile);
  Recorder recorder(outcome, log, watcher);
  WatchedMachine machine(&recorder);
  Run(url, permitFile, machine, recorder, log, outcome);
  outcome.log = Utf8FromAnsi(GetLogFile().GetPath());
  return outcome;
}

RunOutcome PlanManifest(const std::wstring& url, const std::wstring& permitFile) {
  RunOutcome outcome;
  KeptLog log;
  Recorder recorder(outcome, log, nullptr);
  RehearsedMachine machine(&recorder);
  Run(url, permitFile, machine, recorder, log, outcome);
  if (FAILED(outcome.result) && outcome.result != E_ACCESSDENIED && recorder.Manifest().empty())
    throw Unanswered("The manifest could not be read: " + outcome.reason);
  for (CommandOutcome& command : outcome.commands) {
    if (command.action != CommandAction::Cache)
      continue;
    command.destination.reset();  // the cache chooses the name
    if (command.command == "Open")
      outcome.navigate.reset();
  }
  return outcome;
}
