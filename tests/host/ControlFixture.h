#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/Text.h"
#include "host/InstalledModule.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "support/Replaced.h"
#include "support/WebServer.h"

using Lines = std::vector<std::string>;

// The codes of entries that carry a line without a message.
using Codes = std::vector<HRESULT>;

// The module, installed and loaded, without a permission file. The logs that it writes are removed before and after the
// test, and at the end of the test nothing may keep the module loaded.
class ModuleTest : public testing::Test {
 protected:
  ModuleTest();
  void TearDown() override;

  // What the module wrote into the log of a name, as LogCapture shows it.
  static std::vector<LogEntry> Entries(const std::string& log);
  static Lines Messages(const std::string& log);

  // The last of them; an empty one of a log without any.
  static LogEntry LastEntry(const std::string& log);
  static std::string LastMessage(const std::string& log);

  // The first lines of the messages: debug logging adds lists to some of them.
  static Lines Heads(const std::string& log);
  static Codes ErrorTraces(const std::string& log);
  static void DeleteLogs();

  InstalledModule installed;
  LoadedModule module;
};

// A control of a module that permits everything of the web server, and one destination folder. The log of its runs is
// named kRunLog.
class ControlTest : public ModuleTest {
 protected:
  ControlTest();
  void TearDown() override;

  template <class Interface>
  Microsoft::WRL::ComPtr<Interface> As() {
    Microsoft::WRL::ComPtr<Interface> object;
    EXPECT_HRESULT(S_OK, control.As(&object));
    return object;
  }

  // Puts a manifest with these commands on the server; its URL.
  BString Serve(const std::string& commands);

  // A command for a file of the server (the content is the name), or of a name whose extension is not permitted.
  std::string Copy(const std::string& name);
  std::string OpenInBrowser(const std::string& name);
  static std::string CopyRefused() { return Command("Copy", "http://127.0.0.1/not-permitted.txt", "C:\\"); }
  static std::string Command(const std::string& element, const std::string& source, const std::string& folder);

  // The URL that a browser is sent to for a file in the destination folder.
  std::string FileUrl(const std::string& name) const { return "file://" + destination.File(name); }

  HRESULT Execute(const std::string& commands) { return control->Execute(Serve(commands).Get()); }

  WebServer server;
  TemporaryFolder destination;
  Microsoft::WRL::ComPtr<IAXNorvik> control;
};

constexpr char kRunLog[] = "control-run";
constexpr char kManifestPath[] = "/control-run.xml";

BString Automation(const std::string& text);

// What a string that the control handed out holds, as narrow text; "(null)" without one.
std::string Narrow(BSTR text);
inline std::string Narrow(const BString& text) {
  return Narrow(text.Get());
}
