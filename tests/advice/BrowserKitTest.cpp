// What the files of the kit hold, byte for byte.

#include "advice/BrowserKit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "common/identifiers.h"

namespace {

const std::vector<std::string> kOne = {"https://portal.example.com"};
const std::vector<std::string> kTwo = {"https://portal.example.com", "http://127.0.0.1:8080"};
constexpr char kOneInPolicy[] = R"("https://portal.example.com")";
constexpr char kTwoInPolicy[] = R"("https://portal.example.com","http://127.0.0.1:8080")";

std::string BytesOf(const std::string& name, const std::vector<std::string>& origins) {
  for (const KitFile& file : BrowserKit(origins)) {
    if (file.name == name)
      return file.bytes;
  }
  ADD_FAILURE() << "there is no " << name;
  return {};
}

// A registry file's text, with line feeds; it is UTF-16 with its mark, has ends of lines as Windows writes them, and ASCII
// only.
std::string RegistryText(const std::string& bytes) {
  EXPECT_EQ("\xFF\xFE", bytes.substr(0, 2));
  EXPECT_EQ(0u, bytes.size() % 2);
  std::string text;
  for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
    EXPECT_EQ('\0', bytes[i + 1]) << i;
    text += bytes[i];
  }
  EXPECT_FALSE(std::regex_search(text, std::regex("[^\r]\n"))) << text;
  return std::regex_replace(text, std::regex("\r\n"), "\n");
}

std::string PolicyValue(const std::string& origins) {
  return R"([{"protocol":"norvik","allowed_origins":[)" + origins + "]}]";
}

TEST(BrowserKitTest, HasItsFilesInTheirOrder) {
  std::string names;
  for (const KitFile& file : BrowserKit(kOne)) {
    names += file.name + " ";
    EXPECT_EQ('.', file.purpose.back()) << file.name;
  }
  EXPECT_EQ(
      "README.txt edge.reg chrome.reg firefox.reg policy-value.json chromium-policy.json firefox-policies.json "
      "ie-mode-sites.xml ie-mode.reg ",
      names);
}

TEST(BrowserKitTest, TheTextsOfPolicies) {
  for (const auto& [origins, listed] : {std::pair(kOne, kOneInPolicy), std::pair(kTwo, kTwoInPolicy)}) {
    const std::string value = PolicyValue(listed);
    EXPECT_EQ(value + "\n", BytesOf("policy-value.json", origins));
    EXPECT_EQ("{\"AutoLaunchProtocolsFromOrigins\":" + value + "}\n", BytesOf("chromium-policy.json", origins));
    EXPECT_EQ(
        "{\"policies\":{\"AutoLaunchProtocolsFromOrigins\":" + value + "}}\n", BytesOf("firefox-policies.json", origins));
  }
}

TEST(BrowserKitTest, TheRegistryFilesOfEdgeAndChrome) {
  const std::pair<const char*, const char*> browsers[] = {{"edge.reg", "Microsoft\\Edge"}, {"chrome.reg", "Google\\Chrome"}};
  for (const auto& [name, key] : browsers) {
    const std::string head =
        std::string("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Policies\\") + key +
        "]\n\"AutoLaunchProtocolsFromOrigins\"=";
    EXPECT_EQ(head + R"("[{\"protocol\":\"norvik\",\"allowed_origins\":[\"https://portal.example.com\"]}]")" + "\n",
              RegistryText(BytesOf(name, kOne)));
    EXPECT_EQ(head +
                  R"("[{\"protocol\":\"norvik\",\"allowed_origins\":[\"https://portal.example.com\",)"
                  R"(\"http://127.0.0.1:8080\"]}]")" +
                  "\n",
              RegistryText(BytesOf(name, kTwo)));
  }
}

// The texts of a list in bytes: two for each character, and two ends.
std::string TextInBytes(const std::string& text) {
  const std::string start = "hex(7):";
  std::string bytes = std::regex_replace(text.substr(text.find(start) + start.size()), std::regex("\\\\\n  |\n$"), "");
  std::string decoded;
  for (std::size_t i = 0; i < bytes.size(); i += 6) {
    EXPECT_EQ(i + 5 == bytes.size() ? "00" : "00,", bytes.substr(i + 3, 3));
    decoded += static_cast<char>(std::stoi(bytes.substr(i, 2), nullptr, 16));
  }
  return decoded;
}

TEST(BrowserKitTest, TheRegistryFileOfFirefox) {
  const std::string head =
      "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Policies\\Mozilla\\Firefox]\n"
      "\"AutoLaunchProtocolsFromOrigins\"=hex(7):5b,00,7b,00,22,00,70,00,72,00,6f,00,\\\n  74,00,6f,00,";
  for (const auto& [origins, listed] : {std::pair(kOne, kOneInPolicy), std::pair(kTwo, kTwoInPolicy)}) {
    const std::string text = RegistryText(BytesOf("firefox.reg", origins));
    EXPECT_EQ(head, text.substr(0, head.size()));
    EXPECT_EQ(PolicyValue(listed) + std::string(2, '\0'), TextInBytes(text));
    EXPECT_FALSE(std::regex_search(text.substr(text.find("hex(7)")), std::regex("[^\n]{79}"))) << text;
  }
}

constexpr char kSiteListHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- Raise the version with every change: browsers keep a list until they see a higher one. -->\n"
    "<site-list version=\"1\">\n  <created-by>\n    <tool>norvik</tool>\n    <version>1</version>\n  </created-by>\n";

std::string SiteInList(const std::string& url) {
  return "  <site url=\"" + url + "\">\n    <compat-mode>Default</compat-mode>\n    <open-in>IE11</open-in>\n  </site>\n";
}

TEST(BrowserKitTest, TheSiteListHasHostsWithTheirPorts) {
  EXPECT_EQ(kSiteListHead + SiteInList("portal.example.com") + "</site-list>\n", BytesOf("ie-mode-sites.xml", kOne));
  EXPECT_EQ(kSiteListHead + SiteInList("portal.example.com") + SiteInList("127.0.0.1:8080") + "</site-list>\n",
            BytesOf("ie-mode-sites.xml", kTwo));
}

std::string ModeText(const std::string& zoned) {
  const std::string settings =
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Policies\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
  const std::string addOns = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\Ext";
  return "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Policies\\Microsoft\\Edge]\n"
         "\"InternetExplorerIntegrationLevel\"=dword:00000001\n"
         "; Put the address of the site list here, and take the semicolon away.\n"
         ";\"InternetExplorerIntegrationSiteList\"=\"https://intranet.example.com/ie-mode-sites.xml\"\n\n" +
         settings + "]\n\"ListBox_Support_ZoneMapKey\"=dword:00000001\n\n" + settings + "\\ZoneMapKey]\n" + zoned + "\n" +
         settings + "\\Zones\\2]\n\"1200\"=dword:00000000\n\"1208\"=dword:00000000\n\"1405\"=dword:00000000\n\n" + addOns +
         "]\n\"ListBox_Support_CLSID\"=dword:00000001\n\n" + addOns + "\\CLSID]\n\"" NORVIK_CLASS_ID "\"=\"1\"\n";
}

TEST(BrowserKitTest, ThePoliciesOfTheModeHaveSitesWithoutTheirPorts) {
  EXPECT_EQ(ModeText("\"https://portal.example.com\"=\"2\"\n"), RegistryText(BytesOf("ie-mode.reg", kOne)));
  EXPECT_EQ(ModeText("\"https://portal.example.com\"=\"2\"\n\"http://127.0.0.1\"=\"2\"\n"),
            RegistryText(BytesOf("ie-mode.reg", kTwo)));
}

TEST(BrowserKitTest, WhatIsNamedTwiceCountsOnce) {
  const std::vector<std::string> doubled = {"https://a:1", "https://a:2", "http://a:1", "https://a:1"};
  EXPECT_EQ(PolicyValue(R"("https://a:1","https://a:2","http://a:1")") + "\n", BytesOf("policy-value.json", doubled));
  EXPECT_EQ(kSiteListHead + SiteInList("a:1") + SiteInList("a:2") + "</site-list>\n", BytesOf("ie-mode-sites.xml", doubled));
  EXPECT_EQ(ModeText("\"https://a\"=\"2\"\n\"http://a\"=\"2\"\n"), RegistryText(BytesOf("ie-mode.reg", doubled)));
}

// A manual is read on any machine: ASCII, lines that fit, ends of lines that every editor knows.
TEST(BrowserKitTest, TheManualTellsOfEveryOriginAndFile) {
  const std::string manual = BytesOf("README.txt", kTwo);
  EXPECT_FALSE(std::regex_search(manual, std::regex("[^\r]\n|[^ -~\r\n]"))) << manual;
  std::size_t start = 0;
  for (std::size_t end = manual.find("\r\n"); end != std::string::npos; start = end + 2, end = manual.find("\r\n", start))
    EXPECT_GE(100u, end - start) << manual.substr(start, end - start);
  for (const std::string& origin : kTwo)
    EXPECT_NE(std::string::npos, manual.find("\r\n    " + origin + "\r\n"));
  for (const KitFile& file : BrowserKit(kTwo)) {
    const std::string entry = "\r\n" + file.name + "\r\n    " + file.purpose + "\r\n";
    EXPECT_EQ(file.name != "README.txt", manual.find(entry) != std::string::npos) << file.name;
  }
  for (const char* const duty : {"frame-ancestors 'none'", "open redirect", "uses https"})
    EXPECT_NE(std::string::npos, manual.find(duty)) << duty;
}

// What lets every page start manifests is named in the manual, as what not to do, and stands in no other file.
TEST(BrowserKitTest, NoFileAllowsTheSchemeFromEverywhere) {
  for (const KitFile& file : BrowserKit(kTwo)) {
    if (file.name == "README.txt")
      continue;
    std::string text = file.bytes;
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    for (const char* const wide : {"*", "URLAllowlist", "Handlers", "norvik:", "<all_urls>"})
      EXPECT_EQ(std::string::npos, text.find(wide)) << file.name << " has " << wide;
  }
}

}  // namespace
