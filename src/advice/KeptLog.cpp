#include "advice/KeptLog.h"

#include "advice/Words.h"
#include "log/LogFile.h"

namespace {

// More than any reader reads; what comes behind is counted out.
constexpr std::size_t kMostEntries = 1000;

}  // namespace

KeptLog::KeptLog(Also also)
    : isFileWritten(also == Also::LogFile), sinkBefore(SetLogSink(this)), debugLogging(GetDebugLogging()) {
  SetDebugLogging(isFileWritten ? debugLogging : 0);
}

KeptLog::~KeptLog() {
  SetLogSink(sinkBefore);
  SetDebugLogging(debugLogging);
}

std::string KeptLog::FirstComplaint() const {
  for (const char* const level : {kError, kWarning}) {
    for (const KeptEntry& entry : entries) {
      if (entry.level == level)
        return entry.message;
    }
  }
  return {};
}

// A message is formatted twice when the file gets it too: its arguments are read anew.
void KeptLog::Write(const LogRecord& record) {
  if (record.HasMessage() && entries.size() < kMostEntries) {
    va_list arguments;
    va_copy(arguments, *record.arguments);
    LogRecord copy = record;
    copy.arguments = &arguments;
    const LogMessage message(copy);
    va_end(arguments);
    entries.push_back({record.level, record.hr, WithoutCredentials(Utf8FromAnsi(message.Get()))});
  }
  if (isFileWritten)
    GetLogFile().Write(record);
}

void KeptLog::WriteText(const char* text) {
  if (isFileWritten)
    GetLogFile().WriteText(text);
}

void KeptLog::SetName(const wchar_t* name) {
  if (isFileWritten)
    GetLogFile().SetName(name);
}
