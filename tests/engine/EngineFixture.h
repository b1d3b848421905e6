#pragma once

#include <memory>
#include <string>
#include <vector>

#include "common/ListItem.h"
#include "permissions/Permissions.h"
#include "support/Files.h"
#include "support/InternetCache.h"
#include "support/LogCapture.h"
#include "support/PermitFile.h"
#include "support/XmlDocuments.h"

// What the tests of commands share: elements of a manifest, and a source and a destination that are permitted.

constexpr char kWebSource[] = "http://server/d/setup.exe";

// The text of a `Copy` element; `destination` is what stands inside its `Destination`, `rest` what follows that.
std::string CopyElement(const std::string& source, const std::string& destination, const std::string& rest = std::string());

// The same for `Open`; `attributes` such as "browser=\"true\"".
std::string OpenElement(const std::string& attributes, const std::string& source, const std::string& destination);

// A manifest as it stands on a server: with a declaration and a document type of its own.
std::string ManifestText(const std::string& commands);

// A source folder and a destination folder, both permitted together with the extensions txt, exe and htm and the
// Internet cache.
class CopyFixture {
 public:
  CopyFixture();

  std::string Source(const std::string& name) const { return source.File(name); }
  std::string Destination(const std::string& name) const { return destination.File(name); }
  std::string WriteSource(const std::string& name, const std::string& content) const;
  std::string WriteDestination(const std::string& name, const std::string& content) const;

  // A `Path` element that names the destination folder.
  std::string PathElement() const { return "<Path>" + destination.Path() + "</Path>"; }

  PermitFile permit;
  TemporaryFolder source;
  TemporaryFolder destination;
  std::unique_ptr<CPermissions> permissions;
};

// The text, or "(null)" for none.
std::string TextOf(const char* text);

// What the chain's items write into the log, one text each. Not for use beside another LogCapture.
std::vector<std::string> DumpChain(const CListItem* chain);

FILETIME FileTimeOf(WORD year, WORD month, WORD day, WORD hour = 0, WORD minute = 0, WORD second = 0);
bool operator==(const FILETIME& a, const FILETIME& b);

// As an owner of a string that code under test hands out.
class ReceivedText {
 public:
  ReceivedText() = default;
  ~ReceivedText() { SysFreeString(text); }
  ReceivedText(const ReceivedText&) = delete;
  ReceivedText& operator=(const ReceivedText&) = delete;
  BSTR* Receive() { return &text; }
  BSTR Get() const { return text; }
  std::wstring Text() const { return text ? std::wstring(text, SysStringLen(text)) : std::wstring(L"(null)"); }

 private:
  BSTR text = nullptr;
};
