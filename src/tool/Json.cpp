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

}  // namespace

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
  return {{"schema", kSchema}, {"permitFile", Utf8(permit.Path())}, {"questions", questions}};
}

Json ToJson(const RunOutcome& outcome) {
  Json commands = Json::array();
  for (const CommandOutcome& command : outcome.commands)
    commands.push_back(CommandJson(command));
  return {{"schema", kSchema},
          {"manifest", outcome.manifest},
          {"result", ResultName(outcome.result)},
          {"code", HexCode(outcome.result)},
          {"reason", OrNull(outcome.reason)},
          {"navigate", OrNull(outcome.navigate)},
          {"log", OrNull(outcome.log)},
          {"commands", commands}};
}

void PrintJson(const Json& document) {
  Print(document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}
