#include "advice/BrowserKit.h"

#include <algorithm>
#include <cstdio>

#include "advice/BrowserOrigin.h"
#include "advice/KitGuide.h"
#include "advice/Words.h"
#include "common/identifiers.h"

namespace {

using Texts = std::vector<std::string>;

constexpr char kPolicy[] = "AutoLaunchProtocolsFromOrigins";
constexpr char kEdge[] = R"(SOFTWARE\Policies\Microsoft\Edge)";
constexpr char kChrome[] = R"(SOFTWARE\Policies\Google\Chrome)";
constexpr char kFirefox[] = R"(SOFTWARE\Policies\Mozilla\Firefox)";
constexpr char kInternetSettings[] = R"(SOFTWARE\Policies\Microsoft\Windows\CurrentVersion\Internet Settings)";
constexpr char kAddOns[] = R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Policies\Ext)";
constexpr char kByteOrderMark[] = "\xFF\xFE";
constexpr char kTrustedSites[] = "2";
constexpr std::size_t kRegistryColumns = 77;  // regedit begins a new line in bytes behind it

Texts WithoutDoubles(const Texts& texts) {
  Texts once;
  for (const std::string& text : texts) {
    if (std::find(once.begin(), once.end(), text) == once.end())
      once.push_back(text);
  }
  return once;
}

std::string Replaced(std::string text, const std::string& part, const std::string& other) {
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + other.size()))
    text.replace(at, part.size(), other);
  return text;
}

std::string Joined(const Texts& texts, const std::string& separator) {
  std::string joined;
  for (const std::string& text : texts)
    joined += (joined.empty() ? "" : separator) + text;
  return joined;
}

// The value of the policy. Browsers take only the first entry for a scheme, so all origins stand in one. An origin has no
// character that JSON, XML or the registry would want written in another way.
std::string PolicyValue(const Texts& origins) {
  return R"([{"protocol":"norvik","allowed_origins":[")" + Joined(origins, R"(",")") + R"("]}])";
}

std::string PolicyObject(const Texts& origins) {
  return std::string("{\"") + kPolicy + "\":" + PolicyValue(origins) + "}";
}

std::string WithWindowsLineEnds(const std::string& text) {
  return Replaced(text, "\n", "\r\n");
}

// The little-endian bytes of a text.
std::string Utf16Bytes(const std::string& text) {
  std::string bytes;
  for (const wchar_t unit : WideFromUtf8(text)) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}

std::string RegistryFile(const std::string& keys) {
  return kByteOrderMark + Utf16Bytes(WithWindowsLineEnds("Windows Registry Editor Version 5.00\n" + keys));
}

std::string Key(const std::string& name) {
  return "\n[HKEY_LOCAL_MACHINE\\" + name + "]\n";
}

std::string TextValue(const std::string& name, const std::string& text) {
  return "\"" + name + "\"=\"" + Replaced(Replaced(text, "\\", "\\\\"), "\"", "\\\"") + "\"\n";
}

std::string NumberValue(const std::string& name, unsigned number) {
  char digits[9];
  std::snprintf(digits, sizeof(digits), "%08x", number);
  return "\"" + name + "\"=dword:" + digits + "\n";
}

// A list of one text, in bytes, as the registry editor exports it.
std::string ListValue(const std::string& name, const std::string& text) {
  std::string lines;
  std::string line = "\"" + name + "\"=hex(7):";
  const std::string bytes = Utf16Bytes(text) + std::string(4, '\0');  // ends of the text and of the list
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    char digits[3];
    std::snprintf(digits, sizeof(digits), "%02x", static_cast<unsigned char>(bytes[i]));
    line += digits;
    if (i + 1 == bytes.size())
      break;
    line += ',';
    if (line.size() >= kRegistryColumns - 1) {
      lines += line + "\\\n";
      line = "  ";
    }
  }
  return lines + line + "\n";
}

// Zones know no ports, and site lists no schemes.
Texts Zoned(const Texts& origins) {
  Texts sites;
  for (const std::string& text : origins) {
    const BrowserOrigin origin(text);
    sites.push_back(origin.scheme + "://" + origin.host);
  }
  return WithoutDoubles(sites);
}

Texts Listed(const Texts& origins) {
  Texts sites;
  for (const std::string& text : origins) {
    const BrowserOrigin origin(text);
    sites.push_back(origin.host + (origin.port.empty() ? "" : ":" + origin.port));
  }
  return WithoutDoubles(sites);
}

std::string SiteList(const Texts& origins) {
  std::string list =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!-- Raise the version with every change: browsers keep a list until they see a higher one. -->\n"
      "<site-list version=\"1\">\n"
      "  <created-by>\n"
      "    <tool>norvik</tool>\n"
      "    <version>1</version>\n"
      "  </created-by>\n";
  for (const std::string& site : Listed(origins)) {
    list += "  <site url=\"" + site +
            "\">\n"
            "    <compat-mode>Default</compat-mode>\n"
            "    <open-in>IE11</open-in>\n"
            "  </site>\n";
  }
  return list + "</site-list>\n";
}

// The browser's mode; the zone of the sites; and what controls may do in that zone: run (1200), be scripted when they
// say that this is safe (1405), and run for the first time without a question (1208).
std::string ModePolicies(const Texts& origins) {
  constexpr unsigned kAllowed = 0;
  const std::string settings = kInternetSettings;
  std::string keys =
      Key(kEdge) + NumberValue("InternetExplorerIntegrationLevel", 1) +
      "; Put the address of the site list here, and take the semicolon away.\n;" +
      TextValue("InternetExplorerIntegrationSiteList", std::string("https://intranet.example.com/") + kSiteListName) +
      Key(settings) + NumberValue("ListBox_Support_ZoneMapKey", 1) + Key(settings + "\\ZoneMapKey");
  for (const std::string& site : Zoned(origins))
    keys += TextValue(site, kTrustedSites);
  keys += Key(settings + "\\Zones\\" + kTrustedSites) + NumberValue("1200", kAllowed) + NumberValue("1208", kAllowed) +
          NumberValue("1405", kAllowed);
  return keys + Key(kAddOns) + NumberValue("ListBox_Support_CLSID", 1) + Key(std::string(kAddOns) + "\\CLSID") +
         TextValue(NORVIK_CLASS_ID, "1");
}

}  // namespace

std::vector<KitFile> BrowserKit(const std::vector<std::string>& origins) {
  const Texts once = WithoutDoubles(origins);
  const std::string value = PolicyValue(once);
  const auto policy = [&](const char* key) { return RegistryFile(Key(key) + TextValue(kPolicy, value)); };
  std::vector<KitFile> files = {
      {"edge.reg", "Edge on Windows: the policy for the registry.", policy(kEdge)},
      {"chrome.reg", "Chrome on Windows: the policy for the registry.", policy(kChrome)},
      {"firefox.reg", "Firefox on Windows: the policy for the registry.",
       RegistryFile(Key(kFirefox) + ListValue(kPolicy, value))},
      {"policy-value.json", "Edge, Chrome and Firefox: the text to paste into the policy where it is managed.",
       value + "\n"},
      {"chromium-policy.json", "Chromium and Chrome on Linux: a file for the folder of managed policies.",
       PolicyObject(once) + "\n"},
      {"firefox-policies.json", "Firefox on Linux, or beside firefox.exe: policies.json.",
       "{\"policies\":" + PolicyObject(once) + "}\n"},
      {kSiteListName, "Internet Explorer mode of Edge: the site list.", SiteList(once)},
      {"ie-mode.reg", "Internet Explorer mode of Edge: the mode, the zone of the sites and the control in it.",
       RegistryFile(ModePolicies(once))}};
  files.insert(files.begin(), {"README.txt", "What each file is, where it goes, and what a listed site must do.",
                               WithWindowsLineEnds(KitGuide(once, files))});
  return files;
}
