#pragma once

#include "common/Windows.h"

#include <wrl/client.h>

#include <string>

#include "host/InstalledModule.h"
#include "support/Files.h"
#include "support/PermitFile.h"

// Half of the entries are URLs, and a quarter each extensions and folders.
void AddEntries(PermitFile& permit, int count);

// The built DLL in the hands of a host: installed in a folder of its own, loaded, with a control of it once one was made.
class Host {
 public:
  Host();
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // Entries of the permission file that controls made afterwards read. What Host needs itself is permitted already: the
  // extension bin, and its folder as source and destination.
  PermitFile& Permit() { return permit; }
  void WritePermit() const;

  Microsoft::WRL::ComPtr<IAXNorvik> MakeControl() const;

  // The control that runs manifests, made when it is first needed. Making one turns debug logging on.
  IAXNorvik* Control();

  // A manifest of `count` Copy commands, from <source>0.bin, <source>1.bin, ... to the destination folder; its path.
  // `policy` is an element such as "<Skip/>", or empty.
  std::string WriteManifest(int count, const std::string& source, const std::string& policy = "");

  // The same with one source for all commands.
  std::string WriteManifestOfOneSource(int count, const std::string& source, const std::string& policy);

  // Runs the manifest of that path or URL; ends the program unless the result is S_OK.
  void Run(const std::string& manifest);

  // The files that commands write.
  std::string Destination(int index) const { return destination.File(std::to_string(index) + ".bin"); }
  const TemporaryFolder& Folder() const { return folder; }

 private:
  std::string Write(const std::string& commands, int count);

  TemporaryFolder folder;
  TemporaryFolder destination;
  InstalledModule installed;
  LoadedModule module;
  PermitFile permit;
  Microsoft::WRL::ComPtr<IAXNorvik> control;
  std::string lastManifest;
};
