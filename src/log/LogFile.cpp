#include "log/LogFile.h"

#include <shlwapi.h>

#include <cwchar>

#include "log/LogFileSink.h"

namespace {

struct LogChannel {
  LogSink* sink = nullptr;  // null: the log file
  LONG debugLogging = 1;
};

LogChannel channel;

LogSink& Sink() {
  if (channel.sink)
    return *channel.sink;
  return GetLogFile();
}

void Write(const LogRecord& record) {
  const DWORD error = GetLastError();
  Sink().Write(record);
  SetLastError(error);
}

void WriteLine(const char* level, int line, const char* file, HRESULT hr, const char* format, va_list* arguments) {
  Write({level, line, file, hr, format, nullptr, arguments});
}

void WriteLineW(const char* level, int line, const char* file, HRESULT hr, const wchar_t* format, va_list* arguments) {
  Write({level, line, file, hr, nullptr, format, arguments});
}

void WriteTrace(const char* level, int line, const char* file, HRESULT hr) {
  if (channel.debugLogging)
    Write({level, line, file, hr});
}

}  // namespace

LogMessage::LogMessage(const LogRecord& record) {
  if (record.format) {
    FormatNarrow(narrow, kNarrowMessageBytes, record.format, *record.arguments);
    text = narrow;
  } else if (record.wideFormat) {
    FormatWide(record);
  }
}

void LogMessage::FormatWide(const LogRecord& record) {
  wchar_t message[kWideMessageCharacters];
  wvnsprintfW(message, kWideMessageCharacters - 1, record.wideFormat, *record.arguments);
  message[kWideMessageCharacters - 2] = L'\0';
  const int bytes = static_cast<int>(std::wcslen(message)) * 2 + 1;
  converted = AllocateText(static_cast<std::size_t>(bytes));
  if (converted && WideCharToMultiByte(CP_ACP, 0, message, -1, converted.get(), bytes, nullptr, nullptr) > 0)
    text = converted.get();
}

// wvnsprintf writes at most `characters` - 1 characters and, on some systems, nothing behind a text that was cut.
void FormatNarrow(char* buffer, int characters, const char* format, va_list arguments) {
  wvnsprintfA(buffer, characters, format, arguments);
  buffer[characters - 1] = '\0';
}

LogSink* SetLogSink(LogSink* sink) {
  LogSink* const before = channel.sink;
  channel.sink = sink;
  return before;
}

// The nine calls differ in level, code and width only; each has to start its own argument list.
#define WRITE_LINE(writer, level, hr, format)        \
  va_list arguments;                                 \
  va_start(arguments, format);                       \
  writer(level, line, file, hr, format, &arguments); \
  va_end(arguments)

void LogInfo(int line, const char* file, const char* format, ...) {
  WRITE_LINE(WriteLine, kInfo, S_OK, format);
}

void LogInfoW(int line, const char* file, const wchar_t* format, ...) {
  WRITE_LINE(WriteLineW, kInfo, S_OK, format);
}

void LogWarning(int line, const char* file, HRESULT hr, const char* format, ...) {
  WRITE_LINE(WriteLine, kWarning, hr, format);
}

void LogWarningW(int line, const char* file, HRESULT hr, const wchar_t* format, ...) {
  WRITE_LINE(WriteLineW, kWarning, hr, format);
}

void LogError(int line, const char* file, HRESULT hr, const char* format, ...) {
  WRITE_LINE(WriteLine, kError, hr, format);
}

void LogErrorW(int line, const char* file, HRESULT hr, const wchar_t* format, ...) {
  WRITE_LINE(WriteLineW, kError, hr, format);
}

HRESULT Reported(int line, const char* file, HRESULT hr, const char* format, ...) {
  WRITE_LINE(WriteLine, kError, hr, format);
  return hr;
}

HRESULT ReportedW(int line, const char* file, HRESULT hr, const wchar_t* format, ...) {
  WRITE_LINE(WriteLineW, kError, hr, format);
  return hr;
}

#undef WRITE_LINE

void LogInfoTrace(int line, const char* file) {
  WriteTrace(kInfo, line, file, S_OK);
}

void LogWarningTrace(int line, const char* file, HRESULT hr) {
  WriteTrace(kWarning, line, file, hr);
}

void LogErrorTrace(int line, const char* file, HRESULT hr) {
  WriteTrace(kError, line, file, hr);
}

HRESULT Traced(int line, const char* file, HRESULT hr) {
  WriteTrace(kError, line, file, hr);
  return hr;
}

void LogText(const char* text) {
  const DWORD error = GetLastError();
  if (text)
    Sink().WriteText(text);
  SetLastError(error);
}

void SetLogFileName(const wchar_t* name) {
  const DWORD error = GetLastError();
  Sink().SetName(name);
  SetLastError(error);
}

void SetDebugLogging(LONG value) {
  channel.debugLogging = value;
}

LONG GetDebugLogging() {
  return channel.debugLogging;
}
