#include "support/LogCapture.h"

#include <shlobj.h>

#include <regex>

#include "log/LogFile.h"
#include "support/Files.h"

LogCapture::LogCapture(bool debug) : debugBefore(GetDebugLogging()) {
  static int count = 0;
  name = "capture-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
  SetDebugLogging(debug ? 1 : 0);
  SetLogFileName(Wide(name).c_str());
}

LogCapture::~LogCapture() {
  SetDebugLogging(debugBefore);
  SetLogFileName(nullptr);
  DeleteFileA(PathOf(name).c_str());
}

std::string LogCapture::PathOf(const std::string& name) {
  char folder[MAX_PATH];
  SHGetFolderPathA(nullptr, CSIDL_LOCAL_APPDATA, nullptr, 0, folder);
  return std::string(folder) + "\\Vantor\\Logs\\Norvik\\" + name + ".log";
}

std::string LogCapture::Text() const {
  const std::string path = PathOf(name);
  return FileExistsAt(path) ? ReadWholeFile(path) : std::string();
}

std::vector<LogEntry> LogCapture::Parse(const std::string& text) {
  static const std::regex head(
      "(INFO|WARNING|ERROR) \\(\\d\\d/\\d\\d/\\d{4} \\d\\d:\\d\\d:\\d\\d\\) "
      "(on line (\\d+) in file '([^']*)' )?(Error \\(0x([0-9a-f]{8})\\) ?(.*))?");
  std::vector<LogEntry> entries;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find("\r\n", start);
    const std::string line = text.substr(start, end == std::string::npos ? end : end - start);
    std::smatch match;
    if (std::regex_match(line, match, head)) {
      LogEntry entry;
      entry.level = match[1];
      entry.line = match[3].matched ? std::stoi(match[3]) : 0;
      entry.file = match[4];
      if (match[6].matched)
        entry.code = static_cast<HRESULT>(std::stoul(match[6], nullptr, 16));
      entry.systemText = match[7];
      entries.push_back(entry);
    } else if (!entries.empty()) {
      std::string& message = entries.back().message;
      if (message.empty() && !line.empty() && line[0] == '\t')
        message = line.substr(1);
      else
        message += (message.empty() ? "" : "\r\n") + line;
    }
    if (end == std::string::npos)
      break;
    start = end + 2;
  }
  return entries;
}

std::vector<LogEntry> LogCapture::Entries() const {
  return Parse(Text());
}

std::vector<std::string> LogCapture::Messages() const {
  return MessagesOf(Entries());
}

std::vector<HRESULT> LogCapture::ErrorTraces() const {
  return ErrorTracesOf(Entries());
}

std::vector<std::string> LogCapture::MessagesOf(const std::vector<LogEntry>& entries) {
  std::vector<std::string> messages;
  for (const LogEntry& entry : entries) {
    if (entry.message.empty())
      continue;
    char code[16] = "";
    if (entry.code != S_OK)
      wsprintfA(code, "0x%08x ", entry.code);
    messages.push_back(entry.level + " " + code + entry.message);
  }
  return messages;
}

std::vector<HRESULT> LogCapture::ErrorTracesOf(const std::vector<LogEntry>& entries) {
  std::vector<HRESULT> codes;
  for (const LogEntry& entry : entries) {
    if (entry.level == "ERROR" && entry.message.empty())
      codes.push_back(entry.code);
  }
  return codes;
}
