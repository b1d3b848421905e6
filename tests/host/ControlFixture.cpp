#include "host/ControlFixture.h"

#include "common/Windows.h"

#include <wininet.h>

#include "support/FirstLines.h"

ModuleTest::ModuleTest() : module(installed.Path()) {
  DeleteLogs();
}

void ModuleTest::TearDown() {
  if (module.Handle()) {
    EXPECT_HRESULT(S_OK, module.CanUnloadNow()) << "something still keeps the module loaded";
  }
  EXPECT_TRUE(module.Free());
  DeleteLogs();
}

std::vector<LogEntry> ModuleTest::Entries(const std::string& log) {
  const std::string path = LogCapture::PathOf(log);
  return LogCapture::Parse(FileExistsAt(path) ? ReadWholeFile(path) : std::string());
}

Lines ModuleTest::Messages(const std::string& log) {
  return LogCapture::MessagesOf(Entries(log));
}

LogEntry ModuleTest::LastEntry(const std::string& log) {
  const std::vector<LogEntry> entries = Entries(log);
  return entries.empty() ? LogEntry() : entries.back();
}

std::string ModuleTest::LastMessage(const std::string& log) {
  const Lines messages = Messages(log);
  return messages.empty() ? std::string() : messages.back();
}

Lines ModuleTest::Heads(const std::string& log) {
  return FirstLines(Messages(log));
}

Codes ModuleTest::ErrorTraces(const std::string& log) {
  return LogCapture::ErrorTracesOf(Entries(log));
}

void ModuleTest::DeleteLogs() {
  for (const char* name : {"ActiveX", "permit", "Norvik", kRunLog})
    DeleteFileA(LogCapture::PathOf(name).c_str());
}

ControlTest::ControlTest() {
  installed.WritePermit(server.Url("/"), destination.Path() + "\\");
  control = module.CreateControl();
}

void ControlTest::TearDown() {
  control.Reset();
  DeleteUrlCacheEntryA(server.Url(kManifestPath).c_str());
  ModuleTest::TearDown();
}

BString ControlTest::Serve(const std::string& commands) {
  server.Answer(kManifestPath, Response().Body("<?xml version=\"1.0\"?>\r\n"
                                               "<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n"
                                               "<VantorManifest version=\"1.0\">\r\n" +
                                               commands + "</VantorManifest>\r\n"));
  return Automation(server.Url(kManifestPath));
}

std::string ControlTest::Copy(const std::string& name) {
  server.Answer("/" + name, Response().Body(name));
  return Command("Copy", server.Url("/" + name), destination.Path());
}

std::string ControlTest::OpenInBrowser(const std::string& name) {
  server.Answer("/" + name, Response().Body(name));
  std::string command = Command("Open", server.Url("/" + name), destination.Path());
  return command.replace(0, 5, "<Open browser=\"true\"");
}

std::string ControlTest::Command(const std::string& element, const std::string& source, const std::string& folder) {
  return "<" + element + "><Source>" + source + "</Source><Destination><Path>" + folder + "</Path></Destination></" +
         element + ">\r\n";
}

BString Automation(const std::string& text) {
  return WideText(text.c_str());
}

std::string Narrow(BSTR text) {
  if (!text)
    return "(null)";
  const OwnedText narrow = NarrowText(text);
  return narrow.get();
}
