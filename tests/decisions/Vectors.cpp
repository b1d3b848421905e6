#include "decisions/Vectors.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "support/Files.h"
#include "support/Replaced.h"

namespace {

using Json = nlohmann::json;

Json Load(const std::string& name) {
  std::ifstream file(ProjectFile("tests/decisions/" + name), std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return Json::parse(text.str());
}

std::optional<std::string> OptionalText(const Json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end() || found->is_null())
    return std::nullopt;
  return found->get<std::string>();
}

HRESULT Code(const Json& json) {
  return static_cast<HRESULT>(std::strtoul(json.get<std::string>().c_str(), nullptr, 16));
}

FolderElement ElementOf(const std::string& kind, const Json& entry) {
  if (kind == "folder")
    return entry.get<FolderElement>();
  return {kind == "extension" ? "Extension" : "URL", entry.get<std::string>()};
}

PermissionQuestion PermissionQuestionOf(const Json& json) {
  PermissionQuestion question;
  question.name = json.at("name");
  question.kind = json.at("kind");
  if (question.kind == "folder")
    question.folder = json.at("asked").get<FolderElement>();
  else
    question.asked = json.at("asked");
  question.isPermitted = json.at("permitted");
  if (json.contains("by"))
    question.by = ElementOf(question.kind, json.at("by"));
  question.fileName = OptionalText(json, "fileName");
  question.understood = OptionalText(json, "understood");
  question.nearest = OptionalText(json, "nearest");
  question.reason = OptionalText(json, "reason");
  question.isUnresolved = json.value("unresolved", false);
  question.isForRun = json.value("withRun", true);
  return question;
}

template <class List>
std::optional<List> OptionalList(const Json& json, const char* key) {
  return json.contains(key) ? std::optional<List>(json.at(key).get<List>()) : std::nullopt;
}

PermissionGroup PermissionGroupOf(const Json& json) {
  PermissionGroup group;
  group.name = json.at("name");
  const Json& permit = json.at("permit");
  group.urls = OptionalList<std::vector<std::string>>(permit, "urls");
  group.extensions = OptionalList<std::vector<std::string>>(permit, "extensions");
  group.folders = OptionalList<std::vector<FolderElement>>(permit, "folders");
  for (const Json& question : json.at("questions"))
    group.questions.push_back(PermissionQuestionOf(question));
  return group;
}

FileQuestion FileQuestionOf(const Json& json) {
  FileQuestion question;
  question.name = json.at("name");
  question.file = json.at("file");
  question.policy = json.at("policy");
  question.force = json.at("force");
  question.attributes = json.at("attributes").get<std::vector<std::string>>();
  question.fileTime = json.at("fileTime");
  question.commandTime = OptionalText(json, "commandTime");
  question.sourceTime = OptionalText(json, "sourceTime");
  question.taken = json.at("taken").get<std::vector<std::string>>();
  question.action = json.at("action");
  question.result = Code(json.at("result"));
  question.movedTo = OptionalText(json, "movedTo");
  question.run = json.contains("run") ? Code(json.at("run")) : question.result;
  return question;
}

template <class Item>
std::vector<Item> ItemsOf(const Json& list, Item (*make)(const Json&)) {
  std::vector<Item> items;
  for (const Json& json : list)
    items.push_back(make(json));
  return items;
}

std::string SystemFolder(int id) {
  char path[MAX_PATH] = "";
  SHGetFolderPathA(nullptr, id, nullptr, SHGFP_TYPE_CURRENT, path);
  return path;
}

std::string TemporaryPath() {
  char path[MAX_PATH] = "";
  GetTempPathA(MAX_PATH, path);
  const std::string text = path;
  return text.substr(0, text.size() - 1);
}

std::string InCapitals(std::string text) {
  CharUpperA(&text[0]);
  return text;
}

// "{x*20}": as many of that character.
std::string WithRepetitions(std::string text) {
  static const std::regex pattern("\\{(.)\\*([0-9]+)\\}");
  for (std::smatch match; std::regex_search(text, match, pattern);) {
    const std::string repeated(std::stoul(match[2]), match.str(1)[0]);
    text = match.prefix().str() + repeated + match.suffix().str();
  }
  return text;
}

// "{to 256}": as many x as make a whole text of that length.
std::string WithFilling(const std::string& text) {
  static const std::regex pattern("\\{to ([0-9]+)\\}");
  std::smatch match;
  if (!std::regex_search(text, match, pattern))
    return text;
  const std::size_t rest = text.size() - match.str().size();
  const std::size_t wanted = std::stoul(match[1]);
  if (wanted <= rest) {
    ADD_FAILURE() << "the test's folder is too long for " << text;
    return text;
  }
  return match.prefix().str() + std::string(wanted - rest, 'x') + match.suffix().str();
}

DWORD AttributeOf(const std::string& name) {
  static const std::map<std::string, DWORD> values = {
      {"read-only", FILE_ATTRIBUTE_READONLY},
      {"hidden", FILE_ATTRIBUTE_HIDDEN},
      {"archive", FILE_ATTRIBUTE_ARCHIVE},
      {"folder", FILE_ATTRIBUTE_DIRECTORY}};
  return values.at(name);
}

constexpr int kFirstEntryLine = 5;  // behind the head, the root and Source

}  // namespace

bool FileQuestion::IsFolder() const {
  return (Attributes() & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

DWORD FileQuestion::Attributes() const {
  DWORD all = 0;
  for (const std::string& attribute : attributes)
    all |= AttributeOf(attribute);
  return all ? all : FILE_ATTRIBUTE_NORMAL;
}

const std::vector<PermissionGroup>& PermissionGroups() {
  static const auto groups = ItemsOf(Load("permissions.json").at("groups"), PermissionGroupOf);
  return groups;
}

const std::vector<FileQuestion>& FileQuestions() {
  static const auto questions = ItemsOf(Load("existing-files.json").at("questions"), FileQuestionOf);
  return questions;
}

Places::Places()
    : paths({{"temp", TemporaryPath()},
             {"personal", SystemFolder(CSIDL_PERSONAL)},
             {"documents", SystemFolder(CSIDL_COMMON_DOCUMENTS)},
             {"localAppData", SystemFolder(CSIDL_LOCAL_APPDATA)},
             {"appData", SystemFolder(CSIDL_APPDATA)},
             {"commonAppData", SystemFolder(CSIDL_COMMON_APPDATA)},
             {"cache", SystemFolder(CSIDL_INTERNET_CACHE)}}) {}

std::string Places::Fill(std::string text) const {
  for (const auto& [name, path] : paths) {
    text = Replaced(text, "{" + name + "}", path);
    text = Replaced(text, "{" + InCapitals(name) + "}", InCapitals(path));
  }
  return WithFilling(WithRepetitions(text));
}

std::vector<std::string> Places::FillAll(const std::string& text) const {
  static const std::regex pattern("\\[([0-9]{3})-([0-9]{3})\\]");
  std::smatch match;
  if (!std::regex_search(text, match, pattern))
    return {Fill(text)};
  std::vector<std::string> names;
  for (int number = std::stoi(match[1]); number <= std::stoi(match[2]); ++number) {
    char digits[8];
    std::snprintf(digits, sizeof(digits), "%03d", number);
    names.push_back(Fill(match.prefix().str() + digits + match.suffix().str()));
  }
  return names;
}

GroupEntries::GroupEntries(const PermissionGroup& group, const Places& places, Beside beside) {
  const std::string runFolder = places.Fill(kRunFolder) + "\\";
  for (const std::string& url : group.urls.value_or(std::vector<std::string>{}))
    sources.emplace_back("URL", places.Fill(url));
  if (!group.urls || beside == Beside::AndWhatRunsNeed)
    sources.emplace_back("URL", runFolder);
  for (const std::string& extension : group.extensions.value_or(std::vector<std::string>{"txt"}))
    sources.emplace_back("Extension", places.Fill(extension));
  for (const auto& [kind, text] : group.folders.value_or(std::vector<FolderElement>{{"Path", kTarget}}))
    destinations.emplace_back(kind, places.Fill(text));
}

void GroupEntries::AddTo(PermitFile& permit) const {
  for (const auto& [element, text] : sources) {
    if (element == "URL")
      permit.URL(text);
    else
      permit.Extension(text);
  }
  for (const auto& [element, text] : destinations)
    permit.Folder(element, text);
}

int GroupEntries::LineOf(const FolderElement& entry) const {
  int line = kFirstEntryLine;
  for (const FolderElement& source : sources) {
    if (source == entry)
      return line;
    ++line;
  }
  line += 2;  // the end of Source and the beginning of Destination
  for (const FolderElement& destination : destinations) {
    if (destination == entry)
      return line;
    ++line;
  }
  return 0;
}

FILETIME TimeOf(const std::string& text) {
  SYSTEMTIME time = {};
  unsigned fraction = 0;
  std::sscanf(text.c_str(), "%4hu-%2hu-%2huT%2hu:%2hu:%2hu.%7u", &time.wYear, &time.wMonth, &time.wDay, &time.wHour,
              &time.wMinute, &time.wSecond, &fraction);
  FILETIME fileTime = {};
  EXPECT_TRUE(SystemTimeToFileTime(&time, &fileTime)) << text;
  const ULONGLONG ticks = ((static_cast<ULONGLONG>(fileTime.dwHighDateTime) << 32) | fileTime.dwLowDateTime) + fraction;
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}
