#include "torture/Scenario.h"

#include <algorithm>
#include <cstdio>

namespace {

std::string Copy(const std::string& source, const std::string& destination, const std::string& rest = "") {
  return "<Copy><Source>" + source + "</Source><Destination>" + destination + "</Destination>" + rest + "</Copy>\r\n";
}

std::string Open(const std::string& source, const std::string& attribute = "") {
  return "<Open" + attribute + "><Source>" + source + "</Source><Destination><Path>$D</Path></Destination></Open>\r\n";
}

// A file that is there, met by a policy, and another command behind it.
std::string WithPolicy(const std::string& policy, const std::string& attributes = "") {
  return Copy("$S\\long.txt", "<Path>$D</Path>" + attributes + "<IfFileExists>" + policy + "</IfFileExists>") +
         Copy("$S\\short.txt", "<Path>$D</Path>");
}

const std::string kTime = "<FileTime>2002-06-25T15:45:00-08:00</FileTime>";

constexpr HRESULT kNoControl = E_UNEXPECTED;

std::vector<Scenario> MakeScenarios() {
  const std::string& content = LongContent();
  std::vector<Scenario> all;

  Scenario creation{"a control is created and destroyed"};
  creation.use = Use::CreateOnly;
  creation.results = {S_OK};
  all.push_back(creation);

  Scenario web{"copies from the web"};
  web.isManifestOnWeb = true;
  web.commands =
      Copy("$W/long.txt",
           "<FileName>long.txt</FileName><Path>$D\\sub\\folder</Path><Attributes><Normal/><ReadOnly/><Hidden/>" + kTime +
               "</Attributes><IfFileExists><Overwrite force=\"true\"/></IfFileExists>",
           "<NotFoundHTML>no such page</NotFoundHTML>") +
      Copy("$W/short.txt", "<Path>$D</Path>");
  web.left = {{"sub\\folder\\long.txt", content}, {"short.txt", kShortContent}};
  all.push_back(web);

  Scenario local{"copies of local files"};
  local.commands = Copy("$S\\long.txt", "<Path>$D\\sub</Path>") + Copy("$S\\short.txt", "<Path>$D</Path>");
  local.left = {{"sub\\long.txt", content}, {"short.txt", kShortContent}};
  all.push_back(local);

  Scenario overwrite{"an existing file is overwritten by force"};
  overwrite.commands = WithPolicy("<Overwrite force=\"true\"/>");
  overwrite.existing = {{"long.txt", kOldContent}};
  overwrite.isProtected = true;
  overwrite.left = {{"long.txt", content}, {"short.txt", kShortContent}};
  all.push_back(overwrite);

  Scenario skip{"an existing file is skipped"};
  skip.commands = WithPolicy("<Skip/>");
  skip.existing = {{"long.txt", kOldContent}};
  skip.left = {{"long.txt", kOldContent}, {"short.txt", kShortContent}};
  all.push_back(skip);

  Scenario cancel{"an existing file cancels its copy"};
  cancel.commands = WithPolicy("<Cancel/>");
  cancel.existing = skip.existing;
  cancel.left = skip.left;
  cancel.results = {S_OK, S_FALSE};
  all.push_back(cancel);

  Scenario rename{"an existing file is renamed"};
  rename.commands = WithPolicy("<Rename/>");
  rename.existing = {{"long.txt", kOldContent}, {"long.000", "an older one"}};
  rename.left = {
      {"long.txt", content}, {"long.000", "an older one"}, {"long.001", kOldContent}, {"short.txt", kShortContent}};
  all.push_back(rename);

  Scenario update{"an older existing file is updated"};
  update.commands = WithPolicy("<Update/>", "<Attributes><FileTime>2039-01-01T00:00:00Z</FileTime></Attributes>");
  update.existing = {{"long.txt", kOldContent}};
  update.left = overwrite.left;
  all.push_back(update);

  Scenario newer{"a newer existing file is left alone"};
  newer.commands = WithPolicy("<Update/>", "<Attributes>" + kTime + "</Attributes>");
  newer.existing = update.existing;
  newer.left = skip.left;
  all.push_back(newer);

  Scenario cache{"a copy into the Internet cache"};
  cache.isManifestOnWeb = true;
  cache.commands = Copy("$W/long.txt", "<InternetCache><ExpireTime>2039-01-01T00:00:00Z</ExpireTime></InternetCache>");
  cache.left = {{kCachedFile, content}};
  all.push_back(cache);

  Scenario browser{"a page opens in the browser"};
  browser.use = Use::ExecuteNavigate;
  browser.commands = Copy("$S\\long.txt", "<Path>$D</Path>") + Open("$S\\short.txt", " browser=\"true\"");
  browser.left = {{"long.txt", content}, {"short.txt", kShortContent}};
  browser.host = {"answered file://$D\\short.txt"};
  all.push_back(browser);

  Scenario started{"a file is started"};
  started.commands = Open("$S\\short.txt");
  started.left = {{"short.txt", kShortContent}};
  started.host = {"started $D\\short.txt"};
  all.push_back(started);

  Scenario page{"a page with parameters gets its site"};
  page.use = Use::Page;
  page.commands = Open("$S\\short.txt", " browser=\"true\"");
  page.left = started.left;
  page.results = {S_OK, S_OK, S_OK};
  page.host = {"navigated file://$D\\short.txt"};
  all.push_back(page);

  Scenario navigated{"a run sends the browser to its page"};
  navigated.isManifestOnWeb = true;
  navigated.use = Use::Execute;
  navigated.commands = page.commands;
  navigated.left = started.left;
  navigated.host = page.host;
  all.push_back(navigated);

  Scenario noPermit{"a broken permission file"};
  noPermit.permit =
      "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">\r\n"
      "<VantorPermissions version=\"1.0\"><Source><URL>$S\\</URL></Source></VantorPermissions>\r\n";
  noPermit.results = {S_OK, kNoControl};
  all.push_back(noPermit);

  Scenario noManifest{"a broken manifest"};
  noManifest.manifest =
      "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n"
      "<VantorManifest version=\"1.0\"><Copy></VantorManifest>\r\n";
  noManifest.results = {S_OK, E_FAIL};
  all.push_back(noManifest);

  Scenario forbidden{"a manifest with a forbidden destination"};
  forbidden.commands = Copy("$S\\short.txt", "<InternetCache/><Path>$D</Path>");
  forbidden.results = {S_OK, E_FAIL};
  all.push_back(forbidden);
  return all;
}

}  // namespace

const std::vector<Scenario>& AllScenarios() {
  static const std::vector<Scenario> all = MakeScenarios();
  return all;
}

const std::string& LongContent() {
  static const std::string content = [] {
    std::string text;
    while (text.size() < 9000)
      text += "line " + std::to_string(text.size()) + "\r\n";
    return text;
  }();
  return content;
}

std::string Describe(const Effects& effects) {
  std::string text = "results";
  for (const HRESULT result : effects.results) {
    char code[16];
    std::snprintf(code, sizeof(code), " 0x%08lx", static_cast<unsigned long>(result));
    text += code;
  }
  for (const auto& [name, content] : effects.left)
    text += ", " + name + " (" + (content == kOldContent ? "old" : std::to_string(content.size()) + " bytes") + ")";
  for (const std::string& action : effects.host)
    text += ", " + action;
  for (const std::string& place : effects.uncommitted)
    text += ", an uncommitted " + place;
  return text;
}

namespace {

std::string DifferenceOfFiles(const Files& expected, const Files& files) {
  for (const auto& [name, content] : expected) {
    const auto found = files.find(name);
    if (found == files.end())
      return "no " + name;
    const std::string& bytes = found->second;
    if (bytes == content)
      continue;
    const auto first = std::mismatch(content.begin(), content.end(), bytes.begin(), bytes.end()).first;
    return name + ": " + std::to_string(bytes.size()) + " bytes for " + std::to_string(content.size()) +
           ", the first other one at " + std::to_string(first - content.begin());
  }
  for (const auto& [name, content] : files) {
    if (!expected.count(name))
      return name + " as well";
  }
  return std::string();
}

}  // namespace

std::string Difference(const Effects& expected, const Effects& effects) {
  if (Describe(expected) != Describe(effects))
    return Describe(effects) + " for " + Describe(expected);
  const std::string files = DifferenceOfFiles(expected.left, effects.left);
  return !files.empty() || expected.copies.empty() ? files : DifferenceOfFiles(expected.copies, effects.copies);
}
