#pragma once

#include <string>

#include "advice/ManifestDocument.h"
#include "advice/Words.h"
#include "support/Files.h"

constexpr char kManifestHead[] = "<?xml version=\"1.0\"?>\n<!DOCTYPE VantorManifest\nSYSTEM \"manifest.dtd\">\n";

// A manifest of these commands; the first one stands on line 4.
inline std::string ManifestOf(const std::string& commands) {
  return kManifestHead + ("<VantorManifest version=\"1.0\">" + commands + "</VantorManifest>");
}

// A command, its destination's content as it is given.
inline std::string Copy(const std::string& source, const std::string& destination, const std::string& notFound = "x") {
  const std::string text = notFound.empty() ? "" : "<NotFoundHTML>" + notFound + "</NotFoundHTML>";
  return "<Copy><Source>" + source + "</Source><Destination>" + destination + "</Destination>" + text + "</Copy>\n";
}

// A manifest in a folder of its own, as the tool would read it.
class ManifestFile {
 public:
  explicit ManifestFile(const std::string& bytes, const std::string& name = "manifest.xml") : path(folder.File(name)) {
    WriteWholeFile(path, bytes);
  }

  std::wstring Path() const { return WideFromAnsi(path.c_str()); }

 private:
  TemporaryFolder folder;
  std::string path;
};
