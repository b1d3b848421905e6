#include "engine/EngineFixture.h"

#include "common/Windows.h"

#include <gtest/gtest.h>

#include "support/HResult.h"
#include "support/LogCapture.h"

std::string CopyElement(const std::string& source, const std::string& destination, const std::string& rest) {
  return "<Copy><Source>" + source + "</Source><Destination>" + destination + "</Destination>" + rest + "</Copy>";
}

std::string OpenElement(const std::string& attributes, const std::string& source, const std::string& destination) {
  const std::string tag = attributes.empty() ? "Open" : "Open " + attributes;
  return "<" + tag + "><Source>" + source + "</Source><Destination>" + destination + "</Destination></Open>";
}

std::string ManifestText(const std::string& commands) {
  return "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorManifest SYSTEM \"manifest.dtd\">\r\n<VantorManifest version=\"1.0\">" +
         commands + "</VantorManifest>";
}

CopyFixture::CopyFixture() {
  permit.URL(source.Path() + "\\").URL("http://server/d/").Extension("txt").Extension("exe").Extension("htm");
  permit.Folder("InternetCache").Folder("Path", destination.Path());
  permissions = permit.Read();
}

std::string CopyFixture::WriteSource(const std::string& name, const std::string& content) const {
  WriteWholeFile(Source(name), content);
  return Source(name);
}

std::string CopyFixture::WriteDestination(const std::string& name, const std::string& content) const {
  WriteWholeFile(Destination(name), content);
  return Destination(name);
}

std::string TextOf(const char* text) {
  return text ? text : "(null)";
}

std::vector<std::string> DumpChain(const CListItem* chain) {
  std::vector<std::string> texts;
  for (const CListItem* item = chain; item; item = item->Next()) {
    const LogCapture log;
    item->Dump();
    texts.push_back(log.Text());
  }
  return texts;
}

FILETIME FileTimeOf(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second) {
  const SYSTEMTIME time = {year, month, 0, day, hour, minute, second, 0};
  FILETIME fileTime = {};
  EXPECT_TRUE(SystemTimeToFileTime(&time, &fileTime));
  return fileTime;
}

bool operator==(const FILETIME& a, const FILETIME& b) {
  return CompareFileTime(&a, &b) == 0;
}
