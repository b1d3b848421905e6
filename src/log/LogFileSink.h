#pragma once

#include "common/Windows.h"

#include "log/LogSink.h"

// The log file. Every entry opens the file, appends and closes it again; one that cannot be written is lost. Which file it
// is belongs to the process.
class LogFileSink final : public LogSink {
 public:
  constexpr LogFileSink() = default;
  LogFileSink(const LogFileSink&) = delete;
  LogFileSink& operator=(const LogFileSink&) = delete;

  void Write(const LogRecord& entry) override;
  void WriteText(const char* text) override;
  void SetName(const wchar_t* name) override;

  // The file, as it was chosen by the last name or the first entry; empty before.
  const char* GetPath() const;
};

// The one that is used where there is no other sink.
LogFileSink& GetLogFile();
