#include "Host.h"

#include <wininet.h>

#include "Harness.h"
#include "common/Text.h"

using Microsoft::WRL::ComPtr;

namespace {

std::string CopyElement(const std::string& source, const std::string& folder, const std::string& policy) {
  const std::string element = policy.empty() ? "" : "<IfFileExists>" + policy + "</IfFileExists>";
  return "<Copy><Source>" + source + "</Source><Destination><Path>" + folder + "</Path>" + element +
         "</Destination></Copy>\r\n";
}

}  // namespace

void AddEntries(PermitFile& permit, int count) {
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    if (i % 4 == 0)
      permit.Extension("e" + number);
    else if (i % 4 == 2)
      permit.Folder("Path", "C:\\Applications\\" + number);
    else
      permit.URL("https://apps.example.com/tools/" + number + "/");
  }
}

Host::Host() : module(installed.Path()) {
  permit.URL(folder.Path() + "\\").Extension("bin").Folder("Path", destination.Path());
}

Host::~Host() {
  if (!lastManifest.empty())
    DeleteUrlCacheEntryA(lastManifest.c_str());
}

void Host::WritePermit() const {
  WriteWholeFile(installed.PermitPath(), permit.Content());
}

ComPtr<IAXNorvik> Host::MakeControl() const {
  return module.CreateControl();
}

IAXNorvik* Host::Control() {
  if (!control) {
    WritePermit();
    control = MakeControl();
  }
  return control.Get();
}

std::string Host::WriteManifest(int count, const std::string& source, const std::string& policy) {
  std::string commands;
  for (int i = 0; i < count; ++i)
    commands += CopyElement(source + std::to_string(i) + ".bin", destination.Path(), policy);
  return Write(commands, count);
}

std::string Host::WriteManifestOfOneSource(int count, const std::string& source, const std::string& policy) {
  const std::string command = CopyElement(source, destination.Path(), policy);
  std::string commands;
  for (int i = 0; i < count; ++i)
    commands += command;
  return Write(commands, count);
}

std::string Host::Write(const std::string& commands, int count) {
  const std::string path = folder.File("bench" + std::to_string(count) + ".xml");
  WriteWholeFile(path,
                 "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n"
                 "<VantorManifest version=\"1.0\">\r\n" +
                     commands + "</VantorManifest>\r\n");
  return path;
}

void Host::Run(const std::string& manifest) {
  lastManifest = manifest;
  const BString url = WideText(manifest.c_str());
  const HRESULT hr = Control()->Execute(url.Get());
  Require(hr == S_OK, "the run of " + manifest + " ended with " + std::to_string(hr));
}
