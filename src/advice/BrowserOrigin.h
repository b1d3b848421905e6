#pragma once

#include <string>

// Whether an origin ("https://portal.example.com:8443") may stand in a browser's policy. Browsers say nothing about an entry
// that they do not understand, and each understands others; so an origin has to be written as browsers write it themselves,
// which all of them read in the same way.
//
// Gives an empty text for one that may, else why not: a sentence or two for the reader, without user names and passwords.
std::string WhyNoOrigin(const std::string& text);

// The parts of an origin that may stand in a policy.
struct BrowserOrigin {
  explicit BrowserOrigin(const std::string& text);

  std::string scheme;  // "http" or "https"
  std::string host;
  std::string port;  // empty for the scheme's own
};
