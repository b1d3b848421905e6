#pragma once

#include "common/Windows.h"

#include <cstdarg>

#include "common/Text.h"

// Where the log's records go. The module's are lines of the log file; a program that only wants to know what the module
// would say keeps them for itself.

constexpr char kInfo[] = "INFO";
constexpr char kWarning[] = "WARNING";
constexpr char kError[] = "ERROR";

constexpr int kNarrowMessageBytes = 1024;
constexpr int kWideMessageCharacters = 2048;

// One record, on its way to a sink: nothing of it outlives the call.
struct LogRecord {
  const char* level = kInfo;  // one of the three above
  int line = 0;
  const char* file = "";         // the name that signs the record
  HRESULT hr = S_OK;             // a negative one is shown
  const char* format = nullptr;  // of wvnsprintf; a trace line has none of the two
  const wchar_t* wideFormat = nullptr;
  va_list* arguments = nullptr;

  bool HasMessage() const { return (format && *format) || (wideFormat && *wideFormat); }
};

// The message of a record in the ANSI code page, cut where the log cuts it.
class LogMessage {
 public:
  explicit LogMessage(const LogRecord& record);
  LogMessage(const LogMessage&) = delete;
  LogMessage& operator=(const LogMessage&) = delete;

  // Null without a message, and for a wide one that could not be converted.
  const char* Get() const { return text; }

 private:
  void FormatWide(const LogRecord& record);

  char narrow[kNarrowMessageBytes];
  OwnedText converted;
  const char* text = nullptr;
};

// wvnsprintf into a buffer of `characters`; the text always ends.
void FormatNarrow(char* buffer, int characters, const char* format, va_list arguments);

class LogSink {
 public:
  virtual void Write(const LogRecord& record) = 0;

  // A text that belongs to the record before it.
  virtual void WriteText(const char* text) = 0;

  // The records from here on are about the file or URL of that name, which may be null.
  virtual void SetName(const wchar_t* name) = 0;

 protected:
  ~LogSink() = default;
};

// Sends the records to `sink`, which belongs to the caller and has to live until another one takes its place; with null to
// the log file, as in the beginning. Gives the one before. The thread's last error is kept whatever a sink does.
LogSink* SetLogSink(LogSink* sink);
