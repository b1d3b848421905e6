#pragma once

#include "common/Windows.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Files.h"
#include "support/Program.h"
#include "tool/Json.h"

// The built program in a folder of its own, beside the module, with a permission file and a manifest:
//
// permit.xml permits the folder itself as a source, http://apps.example.com/tools/, the extensions txt and xml, and the
// folder `Destination`; manifest.xml copies a.txt there.
class ToolTest : public testing::Test {
 protected:
  ToolTest();

  ProgramResult Run(const std::vector<std::wstring>& arguments) const;

  // The same with --json: what was printed has to be one document that follows the schema.
  Json RunJson(std::vector<std::wstring> arguments, unsigned long expectedCode) const;

  std::string Destination() const { return folder.File("destination"); }
  std::string PermitText(const std::string& entries = "") const;
  static std::string ManifestText(const std::string& commands);
  std::string CopyOfA() const;

  const TemporaryFolder folder;
};

// The lines of an output, without their ends.
std::vector<std::string> LinesOf(const std::string& output);

std::string Repeated(const std::string& text, int times);
