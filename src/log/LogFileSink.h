#pragma once

#include "common/Windows.h"

#include "common/Handles.h"
#include "log/LogSink.h"

// The log file. Every entry opens the file, appends and closes it again; one that cannot be written is lost. Which file it
// is belongs to the process.
class LogFileSink final : public LogSink {
 public:
  constexpr LogFileSink() = default;
  LogFileSink(const LogFileSink&) = delete;
  LogFileSink& operator=(const LogFileSink&) = delete;

  void Write(const LogRecord& record) override;
  void WriteText(const char* text) override;
  void SetName(const wchar_t* name) override;

  // Chooses the file of that name as SetName does; its records stay.
  void Continue(const wchar_t* name);

  // The file, as it was chosen by the last name or the first record; empty before.
  const char* GetPath() const { return path; }

 private:
  FileHandle Open();
  FileHandle OpenForOneRecord();

  char path[MAX_PATH] = "";      // empty until a file was chosen
  bool isBegun = false;          // the first record of a file empties it
  bool isNoticeWritten = false;  // the cap notice, since the file was chosen
};

// The one that is used where there is no other sink.
LogFileSink& GetLogFile();
