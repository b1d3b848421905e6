#include "hostile/HostileFixture.h"

#include "common/Windows.h"

#include <wininet.h>

#include <regex>

HostileTest::HostileTest() {
  installed.WritePermit(documents.Path() + "\\</URL><URL>" + server.Url("/"), destination.Path());
  control = module.CreateControl();
  control->SetEnableLogDebug(VARIANT_FALSE);
}

void HostileTest::TearDown() {
  DeleteLogs();
  const Lines asked = server.Asked();
  EXPECT_HRESULT(S_OK, Execute(Copy("next.txt")));
  EXPECT_EQ("next.txt", Written("next.txt"));
  EXPECT_EQ(Lines{}, Messages(kRunLog));
  EXPECT_EQ(asked.size() + 2, server.Asked().size());
  DeleteUrlCacheEntryA(documents.File("control-run.xml").c_str());
  ControlTest::TearDown();
}

HRESULT HostileTest::RunAnswered(const Response& manifest) {
  server.Answer(kManifestPath, manifest);
  return control->Execute(Automation(server.Url(kManifestPath)).Get());
}

HRESULT HostileTest::RunLocal(const std::string& manifest) {
  const std::string path = documents.File("control-run.xml");
  WriteWholeFile(path, manifest);
  return control->Execute(Automation(path).Get());
}

ProgramResult HostileTest::RunTool(const std::vector<std::wstring>& arguments) const {
  CopyBuilt("norvik.exe", installed.Folder());
  return RunProgram(installed.Folder() + "\\norvik.exe", arguments, documents.Path());
}

std::string HostileTest::CopyOf(const std::string& name, const std::string& options, const std::string& rest) const {
  return "<Copy><Source>" + server.Url("/" + name) + "</Source><Destination><Path>" + destination.Path() + "</Path>" +
         options + "</Destination>" + rest + "</Copy>\r\n";
}

Lines HostileTest::Told(const std::string& log) const {
  Lines lines = Heads(log);
  for (std::string& line : lines)
    line = Shown(line);
  return lines;
}

std::string HostileTest::Shown(std::string text) const {
  static const std::regex cached("[A-Z]:\\\\[^']*\\\\(Content\\.IE5|INetCache)\\\\[^']*");
  const std::string local = documents.File("control-run.xml");
  for (const std::string& manifest : {server.Url(kManifestPath), "file://" + local, local})
    text = Replaced(text, manifest, "{manifest}");
  text = Replaced(text, server.Url(""), "{server}");
  text = Replaced(text, destination.Path(), "{folder}");
  text = Replaced(text, installed.Folder(), "{module}");
  return std::regex_replace(text, cached, "{cached}");
}

std::optional<std::string> HostileTest::Written(const std::string& name) const {
  const std::string path = destination.File(name);
  return FileExistsAt(path) ? std::optional<std::string>(ReadWholeFile(path)) : std::nullopt;
}

std::string HostileTest::Filled(std::string text) const {
  text = Replaced(text, "{server}", server.Url(""));
  text = Replaced(text, "{documents}", documents.Path());
  return Replaced(text, "{folder}", destination.Path());
}

std::string ManifestOf(const std::string& commands) {
  return "<?xml version=\"1.0\"?><!DOCTYPE VantorManifest><VantorManifest version=\"1.0\">" + commands + "</VantorManifest>";
}

std::string RunFailed(const std::string& code) {
  return "ERROR " + code + " The 'Execute' or 'ExecuteNavigate' method failed.";
}
