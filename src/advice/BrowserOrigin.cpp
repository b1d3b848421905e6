#include "advice/BrowserOrigin.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <vector>

#include "advice/Words.h"

namespace {

constexpr std::size_t kMaximumHost = 253;
constexpr std::size_t kMaximumLabel = 63;
constexpr long kMaximumPort = 65535;
constexpr char kSeparator[] = "://";
constexpr char kDigits[] = "0123456789";
constexpr char kSmallLetters[] = "abcdefghijklmnopqrstuvwxyz";
const std::string kHostCharacters = std::string(kSmallLetters) + kDigits + "._-";

bool Has(const std::string& text, const char* characters) {
  return text.find_first_of(characters) != std::string::npos;
}

// An empty text consists of anything.
bool ConsistsOf(const std::string& text, const std::string& characters) {
  return text.find_first_not_of(characters) == std::string::npos;
}

std::vector<std::string> Labels(const std::string& host) {
  std::vector<std::string> labels;
  std::istringstream stream(host + ".");
  for (std::string label; std::getline(stream, label, '.');)
    labels.push_back(label);
  return labels;
}

// Browsers take a host whose last label is a number for an address, however the others are written.
bool IsAddress(const std::vector<std::string>& labels) {
  return ConsistsOf(labels.back(), kDigits) || labels.back().rfind("0x", 0) == 0;
}

// A number that is too large for the type is read as the type's largest.
bool IsPlainNumber(const std::string& text, long maximum) {
  return !text.empty() && ConsistsOf(text, kDigits) && (text == "0" || text[0] != '0') &&
         std::strtol(text.c_str(), nullptr, 10) <= maximum;
}

bool IsPlainAddress(const std::vector<std::string>& labels) {
  return labels.size() == 4 &&
         std::all_of(labels.begin(), labels.end(), [](const std::string& label) { return IsPlainNumber(label, 255); });
}

bool IsLabel(const std::string& label) {
  return !label.empty() && label.size() <= kMaximumLabel && label.front() != '-' && label.back() != '-';
}

// What can be said of the text before its parts are told from each other.
std::string WhyNoText(const std::string& text) {
  if (text.empty())
    return "It is empty.";
  if (std::any_of(text.begin(), text.end(), [](unsigned char c) { return c <= ' ' || c >= 0x7F; }))
    return "It has a blank or a character that is not in ASCII. A host with other letters is written as browsers send it, "
           "with 'xn--'.";
  if (Has(text, "*"))
    return "A browser would ignore it, or take it for more than one site. Name each site.";
  if (Has(text, "ABCDEFGHIJKLMNOPQRSTUVWXYZ"))
    return "Write it in small letters, as browsers compare it.";
  return {};
}

std::string WhyNoScheme(const std::string& text) {
  const std::size_t end = text.find(kSeparator);
  if (end == std::string::npos)
    return "It has no scheme: Edge and Chrome would take it for every host below that name as well, and Firefox would "
           "ignore it. Write 'https://' in front of the host.";
  const std::string scheme = text.substr(0, end);
  if (scheme != "http" && scheme != "https")
    return "Only sites with 'https://' or 'http://' can be listed.";
  return {};
}

std::string WhyNoAuthority(const std::string& text) {
  const std::string authority = text.substr(text.find(kSeparator) + sizeof(kSeparator) - 1);
  if (Has(authority, "/\\?#"))
    return "An origin ends behind the host or the port: with a path, a query or a slash at the end browsers would ignore "
           "it.";
  if (Has(authority, "@"))
    return "An origin has no user name and no password.";
  if (Has(authority, "[]"))
    return "An address in brackets is not read alike by all browsers. Give the server a name.";
  return {};
}

std::string WhyNoHost(const std::string& host) {
  if (host.empty())
    return "It has no host.";
  if (host.front() == '.')
    return "A dot in front of a host means something else in every browser. Leave it out.";
  if (host.back() == '.')
    return "To browsers a host with a dot at the end is another one. Leave the dot out.";
  if (!ConsistsOf(host, kHostCharacters))
    return "Its host has a character that no host has.";
  const std::vector<std::string> labels = Labels(host);
  if (IsAddress(labels))
    return IsPlainAddress(labels) ? ""
                                  : "Browsers write this address in another way. Write it as four numbers, as in 10.0.0.1.";
  if (host.size() > kMaximumHost || !std::all_of(labels.begin(), labels.end(), IsLabel))
    return "Its host is no name that a host can have.";
  return {};
}

std::string WhyNoPort(const std::string& scheme, const std::string& port) {
  if (!IsPlainNumber(port, kMaximumPort) || port == "0")
    return "Its port is no number from 1 to 65535.";
  if (port == (scheme == "https" ? "443" : "80"))
    return "Browsers leave out the port that is the scheme's own. Leave it out, too.";
  return {};
}

std::string WhyNoHostOrPort(const std::string& text) {
  const BrowserOrigin origin(text);
  std::string why = WhyNoHost(origin.host);
  const bool hasPort = text.find(':', origin.scheme.size() + 1) != std::string::npos;
  if (why.empty() && hasPort)
    why = WhyNoPort(origin.scheme, origin.port);
  return why;
}

// Each looks at what the one before it has let pass.
std::string WhyNotWritten(const std::string& text) {
  std::string why;
  for (const auto judge : {WhyNoText, WhyNoScheme, WhyNoAuthority, WhyNoHostOrPort}) {
    if (why.empty())
      why = judge(text);
  }
  return why;
}

}  // namespace

BrowserOrigin::BrowserOrigin(const std::string& text) : scheme(text.substr(0, text.find(':'))) {
  const std::string authority = text.substr(scheme.size() + sizeof(kSeparator) - 1);
  const std::size_t colon = authority.find(':');
  host = authority.substr(0, colon);
  if (colon != std::string::npos)
    port = authority.substr(colon + 1);
}

std::string WhyNoOrigin(const std::string& text) {
  const std::string why = WhyNotWritten(text);
  return why.empty() ? "" : "'" + WithoutCredentials(text) + "' cannot be listed. " + why;
}
