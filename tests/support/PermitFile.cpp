#include "support/PermitFile.h"

#include "common/Windows.h"

#include <wininet.h>

#include "common/ModulePath.h"

namespace {

constexpr char kHead[] = "<?xml version=\"1.0\"?>\r\n<!DOCTYPE VantorPermissions SYSTEM \"permit.dtd\">\r\n";

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char character : text) {
    if (character == '&')
      escaped += "&amp;";
    else if (character == '<')
      escaped += "&lt;";
    else if (character == '>')
      escaped += "&gt;";
    else
      escaped += character;
  }
  return escaped;
}

}  // namespace

std::string XmlElement(const std::string& name, const std::string& text) {
  if (text.empty())
    return "<" + name + "/>";
  return "<" + name + ">" + Escaped(text) + "</" + name + ">";
}

PermitFile::PermitFile() : modulePathBefore(GetModulePath()) {
  SetModulePath(folder.File("norvik.dll").c_str());
}

// What was read stays behind in the Internet cache, where nobody needs it any more.
PermitFile::~PermitFile() {
  SetModulePath(modulePathBefore.c_str());
  DeleteUrlCacheEntryA(Path().c_str());
}

PermitFile& PermitFile::URL(const std::string& text) {
  source += XmlElement("URL", text) + "\r\n";
  return *this;
}

PermitFile& PermitFile::Extension(const std::string& text) {
  extensions += XmlElement("Extension", text) + "\r\n";
  return *this;
}

PermitFile& PermitFile::Folder(const std::string& element, const std::string& text) {
  destination += XmlElement(element, text) + "\r\n";
  return *this;
}

std::string PermitFile::Source() const {
  return "<Source>\r\n" + source + extensions + "</Source>\r\n";
}

std::string PermitFile::Destination() const {
  return "<Destination>\r\n" + destination + "</Destination>\r\n";
}

std::string PermitFile::Body() const {
  return "<VantorPermissions version=\"1.0\">\r\n" + Source() + Destination() + "</VantorPermissions>\r\n";
}

std::string PermitFile::Content() const {
  return kHead + Body();
}

void PermitFile::Write(const std::string& bytes) const {
  WriteWholeFile(Path(), bytes);
}
