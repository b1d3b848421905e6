#pragma once

#include <string>
#include <vector>

// The files with which an administrator lets browsers start manifests from links without a question, for pages of a few
// origins and for no others; and with which Internet Explorer mode runs the control there.

struct KitFile {
  std::string name;
  std::string purpose;  // a sentence for the reader
  std::string bytes;    // as they are written
};

// The files for these origins: one at least, each of which may stand in a policy (advice/BrowserOrigin). One that is named
// twice counts once.
std::vector<KitFile> BrowserKit(const std::vector<std::string>& origins);
