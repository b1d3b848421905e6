#pragma once

#include <memory>
#include <string>

#include "permissions/Permissions.h"
#include "support/Files.h"
#include "support/HResult.h"

// A permission file "permit.xml" in a temporary folder of its own, which counts as the module's folder for the lifetime of
// the object. Entries are written as they are given, trailing separators included:
//
//   PermitFile permit;
//   permit.URL("http://host/apps/").Extension("exe").Folder("Temp").Folder("Path", "C:\\Apps");
//   const auto permissions = permit.Read();
//
// A valid file has at least one URL and one extension. Programs that use Read link `permissions`.
class PermitFile {
 public:
  PermitFile();
  ~PermitFile();
  PermitFile(const PermitFile&) = delete;
  PermitFile& operator=(const PermitFile&) = delete;

  PermitFile& URL(const std::string& text);
  PermitFile& Extension(const std::string& text);

  // `element` is the name of a destination folder kind.
  PermitFile& Folder(const std::string& element, const std::string& text = "");

  // The file so far, as a whole and in its parts.
  std::string Content() const;
  std::string Body() const;  // the root element, without XML declaration and document type
  std::string Source() const;
  std::string Destination() const;

  // Writes the file: its content so far, or the bytes given.
  void Write() const { Write(Content()); }
  void Write(const std::string& bytes) const;

  // Writes the content so far and reads it as the executer does; a failure to do so fails the test.
  std::unique_ptr<CPermissions> Read() const {
    Write();
    HRESULT hr = E_UNEXPECTED;
    auto permissions = std::make_unique<CPermissions>(0, L"permit.xml", &hr);
    EXPECT_HRESULT(S_OK, hr);
    return permissions;
  }

  // Where the file is, and the folder that counts as the module's.
  std::string Path() const { return folder.File("permit.xml"); }
  const std::string& ModuleFolder() const { return folder.Path(); }

 private:
  TemporaryFolder folder;
  std::string modulePathBefore;
  std::string source;
  std::string extensions;
  std::string destination;
};

// An element with text, whose markup characters are escaped; an empty element without text.
std::string XmlElement(const std::string& name, const std::string& text);
