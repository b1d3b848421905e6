#include "torture/Workplace.h"

#include <gtest/gtest.h>

#include "torture/Host.h"

namespace {

constexpr char kLogName[] = "torture-run";
const std::vector<std::string> kLogNames = {"ActiveX", "permit", "Norvik", kLogName};

void Replace(std::string& text, const std::string& name, const std::string& value) {
  for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size()))
    text.replace(at, name.size(), value);
}

// All files below a folder, by their names below it.
void ReadTree(const std::string& folder, const std::string& prefix, Files& files) {
  WIN32_FIND_DATAA found;
  const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE)
    return;
  do {
    const std::string name = found.cFileName;
    if (name == "." || name == "..")
      continue;
    if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
      ReadTree(folder + "\\" + name, prefix + name + "\\", files);
    else
      files[prefix + name] = ReadWholeFile(folder + "\\" + name);
  } while (FindNextFileA(search, &found));
  FindClose(search);
}

void DeleteLogs() {
  for (const std::string& name : kLogNames) {
    DeleteFileA(LogCapture::PathOf(name).c_str());
    DeleteFileA(("C:\\" + name + ".log").c_str());  // where it goes when its folder cannot be had
  }
}

std::string Document(const std::string& root, const std::string& content) {
  return "<?xml version=\"1.0\"?>\r\n<!DOCTYPE " + root + " SYSTEM \"any.dtd\">\r\n<" + root + " version=\"1.0\">\r\n" +
         content + "</" + root + ">\r\n";
}

}  // namespace

Workplace::Workplace(const Scenario& gone) : scenario(gone) {
  places.moduleFolder = installed.Folder();
  places.destinationFolder = destination.Path();
  places.sourceFolder = sources.Path();
  ServeManifest();
  places.manifestUrl = Fill(manifestUrl);
  WriteWholeFile(sources.File("long.txt"), LongContent());
  WriteWholeFile(sources.File("short.txt"), kShortContent);
  server.Answer("/long.txt", Response().Body(LongContent()));
  server.Answer("/short.txt", Response().Body(kShortContent));
  WriteWholeFile(installed.PermitPath(), PermitText());
  module = std::make_unique<LoadedModule>(installed.Path());
  system = std::make_unique<FailingSystem>(module->Handle(), counter, places);
}

Workplace::~Workplace() {
  system.reset();
  EXPECT_TRUE(module->Free());
  places.ClearCache();
  DeleteLogs();
}

std::string Workplace::Fill(std::string text) const {
  Replace(text, "$D", destination.Path());
  Replace(text, "$S", sources.Path());
  Replace(text, "$W", server.Url(""));
  Replace(text, "$M", installed.Folder());
  return text;
}

std::string Workplace::PermitText() const {
  if (!scenario.permit.empty())
    return Fill(scenario.permit);
  return Fill(Document("VantorPermissions",
                       "<Source><URL>$W/</URL><URL>$S\\</URL><Extension>exe</Extension><Extension>txt</Extension></Source>"
                       "<Destination><InternetCache/><Temp>other</Temp><Path>$D</Path></Destination>\r\n"));
}

void Workplace::ServeManifest() {
  const std::string text =
      Fill(scenario.manifest.empty() ? Document("VantorManifest", scenario.commands) : scenario.manifest);
  const std::string name = std::string(kLogName) + ".xml";
  manifestUrl = scenario.isManifestOnWeb ? "$W/" + name : "$S\\" + name;
  if (scenario.isManifestOnWeb)
    server.Answer("/" + name, Response().Body(text));
  else
    WriteWholeFile(sources.File(name), text);
}

void Workplace::Prepare() {
  DeleteLogs();
  places.ClearCache();
  RemoveTree(destination.Path());
  CreateDirectoryA(destination.Path().c_str(), nullptr);
  for (const auto& [name, content] : scenario.existing) {
    WriteWholeFile(destination.File(name), content);
    if (scenario.isProtected)
      SetFileAttributesA(destination.File(name).c_str(), FILE_ATTRIBUTE_READONLY);
  }
  system->started.clear();
}

Effects Workplace::Use() {
  Effects effects;
  UseModule(*module, scenario.use, ManifestUrl(), counter, effects);
  for (const std::string& file : system->started)
    effects.host.push_back("started " + file);
  Look(effects);
  return effects;
}

void Workplace::Look(Effects& effects) const {
  ReadTree(destination.Path(), "", effects.left);
  for (const auto& [path, file] : places.CacheFiles()) {
    if (!FileExistsAt(path))
      continue;
    if (!file.isCommitted)
      effects.uncommitted.push_back(file.place);
    else if (file.place != "source copy")
      effects.copies[file.place] = ReadWholeFile(path);
  }
  const std::string cached = places.CacheFileOf(server.Url("/long.txt"));
  if (!cached.empty() && FileExistsAt(cached))
    effects.left[kCachedFile] = ReadWholeFile(cached);
}

Effects Workplace::Expected() const {
  Effects expected{scenario.results, scenario.left, {}, {}, {}};
  for (const std::string& action : scenario.host)
    expected.host.push_back(Fill(action));
  return expected;
}

std::vector<LogEntry> Workplace::Log() const {
  std::vector<LogEntry> all;
  for (const std::string& name : kLogNames) {
    const std::string path = LogCapture::PathOf(name);
    if (!FileExistsAt(path))
      continue;
    const std::vector<LogEntry> entries = LogCapture::Parse(ReadWholeFile(path));
    all.insert(all.end(), entries.begin(), entries.end());
  }
  return all;
}
