#pragma once

#include "common/Windows.h"

#include <string>
#include <vector>

// One entry of the log, taken apart again.
struct LogEntry {
  std::string level;
  int line = 0;            // 0 without debug logging
  std::string file;        // empty without debug logging
  HRESULT code = S_OK;     // S_OK when the entry has no code
  std::string systemText;  // the system's text for the code
  std::string message;     // empty for a trace; line ends inside a message stay
};

// Sends the log to a file of its own name for the time of a test, with debug logging as it is asked for, and reads it back.
class LogCapture {
 public:
  explicit LogCapture(bool debug = true);
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The bytes of the log so far; empty when nothing was written.
  std::string Text() const;

  // The entries so far. Raw text, and lines that are no entry, belong to the message of the entry before them.
  std::vector<LogEntry> Entries() const;

  // The messages of all entries that have one, each as "LEVEL 0x80004005 message", or "LEVEL message" without a code.
  std::vector<std::string> Messages() const;

  // The codes of the ERROR traces (entries without a message), in order.
  std::vector<HRESULT> ErrorTraces() const;

  // The same for entries that come from elsewhere.
  static std::vector<std::string> MessagesOf(const std::vector<LogEntry>& entries);
  static std::vector<HRESULT> ErrorTracesOf(const std::vector<LogEntry>& entries);

  // Where the log named `name` (its final component without extension) stands.
  static std::string PathOf(const std::string& name);
  static std::vector<LogEntry> Parse(const std::string& text);

 private:
  std::string name;
  LONG debugBefore;
};
