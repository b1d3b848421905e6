#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/InstalledModule.h"
#include "support/Files.h"
#include "support/LogCapture.h"
#include "support/WebServer.h"
#include "torture/CallCounter.h"
#include "torture/FailingSystem.h"
#include "torture/Places.h"
#include "torture/Scenario.h"

// The folders, files and answers of a scenario, which it can go through again and again. The module is loaded when the
// workplace is made, and sees the system through the counter.
class Workplace {
 public:
  explicit Workplace(const Scenario& scenario);
  ~Workplace();
  Workplace(const Workplace&) = delete;
  Workplace& operator=(const Workplace&) = delete;

  // The destination folder as the scenario finds it, and no logs.
  void Prepare();

  // Goes through the scenario once.
  Effects Use();

  // What comes of it when nothing fails.
  Effects Expected() const;

  // What the module wrote into its logs since Prepare.
  std::vector<LogEntry> Log() const;

  CallCounter counter;

  bool CanUnload() const { return module->CanUnloadNow() == S_OK; }

  // Where things are, for a process that goes through the same scenario.
  std::string ManifestUrl() const { return Fill(manifestUrl); }
  std::string ModulePath() const { return installed.Path(); }
  const Places& Known() const { return places; }

 private:
  std::string Fill(std::string text) const;
  std::string PermitText() const;
  void ServeManifest();
  void Look(Effects& effects) const;

  const Scenario& scenario;
  InstalledModule installed;
  TemporaryFolder destination;
  TemporaryFolder sources;
  WebServer server;
  std::string manifestUrl;
  Places places;
  std::unique_ptr<LoadedModule> module;
  std::unique_ptr<FailingSystem> system;
};
