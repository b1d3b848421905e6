#include "tool/Json.h"

#include "advice/Words.h"
#include "tool/Console.h"

namespace {

constexpr int kSchema = 1;

Json OrNull(const std::optional<std::string>& text) {
  return text ? Json(*text) : Json(nullptr);
}

Json OrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

Json EntryJson(const PermitEntry& entry) {
  return {{"entry", WithoutCredentials(entry.text)}, {"line", entry.line}};
}

Json NearestJson(const Nearest& nearest) {
  Json json = EntryJson(*nearest.entry);
  json["reason"] = NameOf(nearest.reason);
  json["message"] = nearest.message;
  return json;
}

Json CommandJson(const CommandOutcome& command) {
  return {{"number", command.number},
          {"line", command.line},
          {"command", command.command},
          {"source", command.source},
          {"destination", OrNull(command.destination)},
          {"action", NameOf(command.action)},
          {"movedTo", OrNull(command.movedTo)},
          {"result", ResultName(command.result)},
          {"code", HexCode(command.result)},
          {"reason", OrNull(command.reason)}};
}

Json CommandsJson(const RunOutcome& outcome) {
  Json commands = Json::array();
  for (const CommandOutcome& command : outcome.commands)
    commands.push_back(CommandJson(command));
  return commands;
}

Json FindingsJson(const Findings& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) {
    list.push_back({{"level", NameOf(finding.level)},
                    {"code", finding.code},
                    {"line", finding.line},
                    {"entry", WithoutCredentials(finding.entry)},
                    {"message", finding.message}});
  }
  return list;
}

}  // namespace

Json ToJson(const std::vector<CheckedFile>& files) {
  Json list = Json::array();
  for (const CheckedFile& file : files) {
    Json json = {{"file", file.file},
                 {"kind", file.isManifest ? "manifest" : "permit"},
                 {"valid", file.isValid},
                 {"findings", FindingsJson(file.findings)}};
    if (file.plan)
      json["commands"] = CommandsJson(*file.plan);
    list.push_back(json);
  }
  return {{"schema", kSchema}, {"files", list}};
}

Json ToJson(const DoctorChecks& checks) {
  Json list = Json::array();
  for (const DoctorCheck& check : checks)
    list.push_back({{"name", check.name}, {"status", NameOf(check.status)}, {"detail", check.detail}});
  return {{"schema", kSchema}, {"checks", list}};
}

Json ToJson(const PermitDocument& permit, const std::vector<Answer>& answers) {
  Json questions = Json::array();
  for (const Answer& answer : answers) {
    questions.push_back(
        {{"kind", NameOf(answer.question.kind)},
         {"asked", answer.asked},
         {"understood", answer.understood},
         {"permitted", answer.isPermitted},
         {"by", answer.by ? EntryJson(*answer.by) : Json(nullptr)},
         {"nearest", answer.nearest ? NearestJson(*answer.nearest) : Json(nullptr)}});
  }
  return {{"schema", kSchema}, {"permitFile", Utf8(permit.Location())}, {"questions", questions}};
}

Json ToJson(const RunOutcome& outcome) {
  return {{"schema", kSchema},
          {"manifest", outcome.manifest},
          {"result", ResultName(outcome.result)},
          {"code", HexCode(outcome.result)},
          {"reason", OrNull(outcome.reason)},
          {"navigate", OrNull(outcome.navigate)},
          {"log", OrNull(outcome.log)},
          {"commands", CommandsJson(outcome)}};
}

Json ToJson(const BrowserLaunch& launch, const DoctorCheck& check) {
  return {{"schema", kSchema},
          {"browserLaunch", launch.isOn ? "on" : "off"},
          {"command", OrNull(Utf8(launch.command))},
          {"usersChoice", OrNull(Utf8(launch.usersChoice))},
          {"status", NameOf(check.status)},
          {"detail", check.detail}};
}

Json ToJson(const std::wstring& folder, const std::vector<KitFile>& files) {
  Json list = Json::array();
  for (const KitFile& file : files)
    list.push_back({{"file", Utf8(folder) + "\\" + file.name}, {"purpose", file.purpose}});
  return {{"schema", kSchema}, {"files", list}};
}

void PrintJson(const Json& document) {
  Print(document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}
