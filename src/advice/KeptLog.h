#pragma once

#include "common/Windows.h"

#include <string>
#include <vector>

#include "log/LogFileSink.h"
#include "log/LogSink.h"

// One entry of the log, as it is kept. Texts are UTF-8.
struct KeptEntry {
  std::string level;
  HRESULT hr;
  std::string message;
};

// Keeps what the module says for as long as the object lives, without trace lines and without the lists behind entries. With
// `Also::LogFile` the log file is written too, as ever. Within the life of another such object it takes that one's place.
class KeptLog final : public LogSink {
 public:
  enum class Also { Nothing, LogFile };

  explicit KeptLog(Also also = Also::Nothing);
  ~KeptLog();
  KeptLog(const KeptLog&) = delete;
  KeptLog& operator=(const KeptLog&) = delete;

  const std::vector<KeptEntry>& Entries() const { return entries; }
  void Forget() { entries.clear(); }

  // The message of the first error; that of the first warning without one; empty without either.
  std::string FirstComplaint() const;

  void Write(const LogRecord& record) override;
  void WriteText(const char* text) override;
  void SetName(const wchar_t* name) override;

 private:
  bool isFileWritten;
  LogSink* sinkBefore;
  LONG debugLogging;
  std::vector<KeptEntry> entries;
};
