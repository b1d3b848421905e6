#include "selfcheck/Kit.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

using Json = nlohmann::json;

RuleKind KindOf(const std::string& name) {
  static const std::map<std::string, RuleKind> kinds = {
      {"registration", RuleKind::NeedsRegistration},
      {"certificates", RuleKind::NeedsCertificates},
      {"wine", RuleKind::StatesWine}};
  return kinds.at(name);
}

Rule RuleOf(const Json& json) {
  return {KindOf(json.at("kind")), json.at("suite"), json.at("cases"), json.at("reason")};
}

}  // namespace

Kit ReadKit(const std::filesystem::path& root) {
  Kit kit;
  kit.root = root;
  const std::filesystem::path path = root / "suites.json";
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw std::runtime_error("There is no suites.json beside selfcheck.cmd. Unpack the whole zip file into one folder.");
  try {
    const Json json = Json::parse(file);
    kit.version = json.at("version");
    kit.suites = json.at("suites").get<std::map<std::string, std::vector<std::string>>>();
    for (const Json& rule : json.at("rules"))
      kit.rules.push_back(RuleOf(rule));
  } catch (const std::exception& error) {
    throw std::runtime_error(std::string("suites.json cannot be used: ") + error.what());
  }
  return kit;
}
