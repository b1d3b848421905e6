#pragma once

#include <optional>
#include <string>

#include "host/ControlFixture.h"
#include "support/Program.h"

// A control whose server and documents mean harm. The log is shown with names in place of what differs from run to run:
// {server} is the server's URL without its last slash, {folder} the destination folder, {manifest} the manifest's URL or
// path, {cached} a file in the Internet cache, {module} the module's folder. At the end of each test, the run of a manifest
// that means no harm is right.
class HostileTest : public ControlTest {
 protected:
  HostileTest();
  void TearDown() override;

  // Runs what the server answers for the manifest's URL, or a manifest of these bytes beside the page.
  HRESULT RunAnswered(const Response& manifest);
  HRESULT RunLocal(const std::string& manifest);

  // What the program for administrators and authors says of such documents, from beside the module.
  ProgramResult RunTool(const std::vector<std::wstring>& arguments) const;

  // A command for a file of the server, with options behind its folder and behind its destination.
  std::string CopyOf(const std::string& name, const std::string& options = "", const std::string& rest = "") const;

  // The first lines of the messages of a log.
  Lines Told(const std::string& log = kRunLog) const;
  std::string Shown(std::string text) const;

  // What a file in the destination folder holds; nothing when it is not there.
  std::optional<std::string> Written(const std::string& name) const;

  // A manifest's or permission file's text with {server}, {folder} and {documents} filled in.
  std::string Filled(std::string text) const;

  const TemporaryFolder documents;
};

// A manifest as it should be, around its commands.
std::string ManifestOf(const std::string& commands);

// The last line of a run that fails before its commands, and of one with a failed command.
std::string RunFailed(const std::string& code);
constexpr char kCommandFailed[] = "ERROR At least one command failed during the 'Execute' or 'ExecuteNavigate' method.";
