#include "names/NamesFixture.h"

#include <shlobj.h>
#include <wininet.h>

#include <algorithm>
#include <cstring>
#include <regex>

const char kForgedEntry[] = "ERROR (01/01/2001 00:00:00) Error (0x80004005) Forged";

namespace {

std::string SpecialFolder(int id) {
  char path[MAX_PATH] = "";
  SHGetFolderPathA(nullptr, id, nullptr, SHGFP_TYPE_CURRENT, path);
  return path;
}

std::string Escaped(std::string text) {
  text = Replaced(text, "<", "&lt;");
  return Replaced(text, "\"", "&quot;");
}

std::string FolderAbove(const std::string& path) {
  return path.substr(0, path.rfind('\\'));
}

bool BeginsWithLevel(const std::string& line) {
  return line.rfind("INFO", 0) == 0 || line.rfind("WARNING", 0) == 0 || line.rfind("ERROR", 0) == 0;
}

}  // namespace

void PrintTo(const NameRow& row, std::ostream* stream) {
  *stream << row.name;
}

NamesTest::NamesTest() : folder(area.File("permitted")), documents(area.File("documents")) {
  char current[MAX_PATH] = "";
  GetCurrentDirectoryA(MAX_PATH, current);
  currentBefore = current;
  for (const char* name : {"permitted", "documents", "current", "sibling"})
    CreateDirectoryA(area.File(name).c_str(), nullptr);
  for (const char* name : {"current\\canary.txt", "sibling\\canary.txt", "canary.txt", "documents\\a.txt"})
    WriteWholeFile(area.File(name), name);
  EXPECT_TRUE(SetCurrentDirectoryA(area.File("current").c_str()));
  installed.WritePermit(documents + "\\</URL><URL>" + server.Url("/"),
                        folder + "</Path><Temp>permitted</Temp><Personal>permitted</Personal><Path>" + folder);
  control = module.CreateControl();
  before = atStart = ListSurroundings();
}

NamesTest::~NamesTest() {
  SetCurrentDirectoryA(currentBefore.c_str());
}

void NamesTest::TearDown() {
  Clear();
  DeleteLogs();
  EXPECT_HRESULT(S_OK, RunCommand("{server}/next.txt", "<Path>{folder}</Path>"));
  EXPECT_EQ("next.txt", NamesIn(folder));
  EXPECT_EQ(kServed, ReadWholeFile(folder + "\\next.txt"));
  for (const char* name : {"current\\canary.txt", "sibling\\canary.txt", "canary.txt"})
    EXPECT_EQ(name, ReadWholeFile(area.File(name)));
  Clear();
  RemoveTree(documents);
  ControlTest::TearDown();
}

void NamesTest::Clear() {
  for (const std::string& path : {folder, Temporary() + "\\permitted", Personal() + "\\permitted", area.File("outside")})
    RemoveTree(path);
  CreateDirectoryA(folder.c_str(), nullptr);
  before = atStart;
}

HRESULT NamesTest::RunCommand(const std::string& source, const std::string& folderElement, const std::string& fileName) {
  DeleteFileA(LogCapture::PathOf(kRunLog).c_str());
  const std::string name = fileName.empty() ? "" : "<FileName>" + Escaped(fileName) + "</FileName>";
  return Execute("<Copy><Source>" + Escaped(Filled(source)) + "</Source><Destination>" + name + Filled(folderElement) +
                 "</Destination></Copy>\r\n");
}

void NamesTest::ExpectOutcome(const NameRow& row) {
  for (const VARIANT_BOOL debug : {VARIANT_FALSE, VARIANT_TRUE}) {
    control->SetEnableLogDebug(debug);
    EXPECT_HRESULT(row.failure.empty() ? S_OK : S_FALSE, RunCommand(row.source, row.folder));
    EXPECT_EQ(row.came, Changes());
    if (row.failure.empty()) {
      EXPECT_EQ(kServed, ReadWholeFile(Filled(row.came.back())));
    }
    EXPECT_EQ(Told(row.failure), Told());
    if (row.failure.empty() && !debug) {
      ExpectNoLog();
    } else {
      ExpectLogInOrder();
    }
    Clear();
  }
}

Lines NamesTest::Told(const std::string& failure) const {
  if (failure.empty())
    return {};
  return {"ERROR " + Shown(Filled(failure)), "ERROR " + failure.substr(0, 10) + " 'Copy' command failed.", kCommandFailed};
}

Lines NamesTest::Told() const {
  Lines heads = Heads(kRunLog);
  for (std::string& head : heads)
    head = Shown(head);
  return heads;
}

void NamesTest::ExpectNoLog() {
  EXPECT_FALSE(FileExistsAt(LogCapture::PathOf(kRunLog)));
}

void NamesTest::ExpectLogInOrder(const std::string& log) {
  static const std::regex head("(INFO|WARNING|ERROR) \\(\\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d\\) [^\t]*");
  const std::string text = ReadWholeFile(LogCapture::PathOf(log));
  EXPECT_NE("", text);
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find_first_of("\r\n", start), text.size());
    const std::string line = text.substr(start, end - start);
    if (BeginsWithLevel(line)) {
      EXPECT_TRUE(std::regex_match(line, head)) << "no entry: " << line;
      EXPECT_EQ(std::string::npos, line.find("01/01/2001")) << "forged: " << line;
    }
    start = end + 1;
  }
}

void NamesTest::List(const std::wstring& path, bool isDeep, Listing& listing) {
  for (const WIN32_FIND_DATAW& entry : EntriesOf(path)) {
    if (std::wstring(entry.cFileName) == L"control-run.log")
      continue;
    const std::wstring full = path + L"\\" + entry.cFileName;
    const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const FILETIME& time = entry.ftLastWriteTime;
    const unsigned long long written = (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    listing[Narrow(full)] = isFolder ? "folder" : std::to_string(entry.nFileSizeLow) + " " + std::to_string(written);
    if (isFolder && isDeep)
      List(full, isDeep, listing);
  }
}

NamesTest::Listing NamesTest::ListSurroundings() {
  Listing listing;
  List(WideOf(Temporary()), true, listing);
  List(WideOf(Personal()), true, listing);
  List(WideOf(SpecialFolder(CSIDL_LOCAL_APPDATA) + "\\Vantor"), true, listing);
  List(WideOf(SpecialFolder(CSIDL_LOCAL_APPDATA)), false, listing);
  List(WideOf(Temporary() + "\\.."), false, listing);
  List(L"C:", false, listing);
  List(L"C:\\users", false, listing);
  return listing;
}

Lines NamesTest::Changes() {
  const Listing now = ListSurroundings();
  Lines changes;
  for (const auto& [path, content] : now) {
    const auto was = before.find(path);
    if (was == before.end())
      changes.push_back(Shown(path));
    else if (was->second != content)
      changes.push_back("changed: " + Shown(path));
  }
  for (const auto& entry : before) {
    if (now.find(entry.first) == now.end())
      changes.push_back("went: " + Shown(entry.first));
  }
  before = now;
  return changes;
}

std::string NamesTest::Temporary() {
  char path[MAX_PATH] = "";
  GetTempPathA(MAX_PATH, path);
  return std::string(path, std::strlen(path) - 1);
}

std::string NamesTest::Personal() {
  return SpecialFolder(CSIDL_PERSONAL);
}

std::string NamesTest::Filled(std::string text) const {
  text = Replaced(text, "{server}", server.Url(""));
  text = Replaced(text, "{documents}", documents);
  text = Replaced(text, "{folder}", folder);
  text = Replaced(text, "{area}", area.Path());
  text = Replaced(text, "{personal}", Personal());
  text = Replaced(text, "{cache}", SpecialFolder(CSIDL_INTERNET_CACHE));
  text = Replaced(text, "{above temp}", FolderAbove(Temporary()));
  text = Replaced(text, "{above personal}", FolderAbove(Personal()));
  return Replaced(text, "{temp}", Temporary());
}

std::string NamesTest::Shown(std::string text) const {
  text = Replaced(text, server.Url(""), "{server}");
  text = Replaced(text, documents, "{documents}");
  text = Replaced(text, folder, "{folder}");
  text = Replaced(text, area.Path(), "{area}");
  text = Replaced(text, Temporary(), "{temp}");
  text = Replaced(text, SpecialFolder(CSIDL_INTERNET_CACHE), "{cache}");
  return Replaced(text, Personal(), "{personal}");
}

std::wstring WideOf(const std::string& text) {
  wchar_t wide[4 * MAX_PATH] = L"";
  MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide, 4 * MAX_PATH);
  return wide;
}

std::string Narrow(const std::wstring& text) {
  char narrow[8 * MAX_PATH] = "";
  WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, narrow, sizeof(narrow), nullptr, nullptr);
  return narrow;
}
