#include "log/LogFile.h"

#include <shlwapi.h>

#include <cstdarg>
#include <cstring>
#include <cwchar>

#include "common/Handles.h"
#include "common/Text.h"
#include "log/LogPath.h"

namespace {

constexpr char kInfo[] = "INFO";
constexpr char kWarning[] = "WARNING";
constexpr char kError[] = "ERROR";
constexpr char kHead[] = "%s (%02d/%02d/%04d %02d:%02d:%02d) ";
constexpr char kDebugHead[] = "%s (%02d/%02d/%04d %02d:%02d:%02d) on line %d in file '%s' ";
constexpr char kResultCode[] = "Error (0x%08x)";
constexpr char kSeparator[] = "\r\n\t";
constexpr char kLineEnd[] = "\r\n";
constexpr char kCapNotice[] = "\r\nToo many errors. Logging stopped...\r\n";

// Nothing is appended to a file of this size or more.
constexpr DWORD kCapBytes = 0x10000;
constexpr int kNarrowMessageBytes = 1024;
constexpr int kWideMessageCharacters = 2048;

struct LogState {
  char path[MAX_PATH] = "";           // empty until a file was chosen
  DWORD disposition = CREATE_ALWAYS;  // of the next open: the first line empties the file
  bool isNoticeWritten = false;       // the cap notice, since the file was chosen
};

LogState state;
LONG debugLogging = 1;

void ChooseFile(const wchar_t* name) {
  ChooseLogPath(name, state.path);
  state.disposition = CREATE_ALWAYS;
  state.isNoticeWritten = false;
}

void Write(const FileHandle& file, const char* text, std::size_t length) {
  DWORD written = 0;
  WriteFile(file.Get(), text, static_cast<DWORD>(length), &written, nullptr);  // a lost line is nobody's failure
}

void Write(const FileHandle& file, const char* text) {
  Write(file, text, std::strlen(text));
}

bool SeekToEnd(const FileHandle& file) {
  return SetFilePointer(file.Get(), 0, nullptr, FILE_END) != INVALID_SET_FILE_POINTER;
}

FileHandle OpenFile() {
  FileHandle file(CreateFileA(state.path, GENERIC_WRITE, 0, nullptr, state.disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
  state.disposition = OPEN_ALWAYS;
  return file;
}

// The file, open and at its end, for one line; an invalid handle when the line cannot or must not be written.
FileHandle OpenForOneLine() {
  if (!state.path[0])
    ChooseFile(nullptr);
  FileHandle file = OpenFile();
  if (file && IsDevice(file)) {  // a manifest named nul.xml must not make its run one without a log
    ChooseFile(nullptr);
    file = OpenFile();
  }
  if (!file)
    return file;
  if (GetFileSize(file.Get(), nullptr) >= kCapBytes) {
    if (!state.isNoticeWritten) {
      state.isNoticeWritten = true;
      if (SeekToEnd(file))
        Write(file, kCapNotice);
    }
    return FileHandle();
  }
  return SeekToEnd(file) ? std::move(file) : FileHandle();
}

bool BeginsWithLevel(const char* text) {
  const auto begins = [text](const char* level) { return !std::strncmp(text, level, std::strlen(level)); };
  return begins(kInfo) || begins(kWarning) || begins(kError);
}

// The texts in a message come from outside, with whatever line ends are in them. A line that they begin is indented when it
// could be taken for an entry of its own; everything else is written as it is.
void WriteMessage(const FileHandle& file, const char* message) {
  const char* start = message;
  for (const char* position = message; *position; ++position) {
    if ((*position == '\r' || *position == '\n') && BeginsWithLevel(position + 1)) {
      Write(file, start, static_cast<std::size_t>(position + 1 - start));
      Write(file, "\t");
      start = position + 1;
    }
  }
  Write(file, start);
}

// wvnsprintf writes at most `characters` - 1 characters and, on some systems, nothing behind a text that was cut.
void FormatNarrow(char* buffer, int characters, const char* format, va_list arguments) {
  wvnsprintfA(buffer, characters, format, arguments);
  buffer[characters - 1] = '\0';
}

void FormatNarrow(char* buffer, int characters, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormatNarrow(buffer, characters, format, arguments);
  va_end(arguments);
}

void WriteHead(const FileHandle& file, const char* level, int line, const char* sourceFile) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  char head[kNarrowMessageBytes];
  FormatNarrow(head, kNarrowMessageBytes, debugLogging ? kDebugHead : kHead, level, now.wMonth, now.wDay, now.wYear,
               now.wHour, now.wMinute, now.wSecond, line, sourceFile);
  Write(file, head);
}

void WriteResultCode(const FileHandle& file, HRESULT hr) {
  if (SUCCEEDED(hr))
    return;
  char code[sizeof(kResultCode) + 8];
  FormatNarrow(code, sizeof(code), kResultCode, hr);
  Write(file, code);

  char* allocated = nullptr;
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
      static_cast<DWORD>(hr), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<char*>(&allocated), 0, nullptr);
  const LocalText systemText(allocated);
  if (length == 0 || !systemText)
    return;
  Write(file, " ");
  Write(file, systemText.Get(), length > 2 ? length - 2 : length);  // without the system's own line end
}

void WriteLine(const char* level, int line, const char* sourceFile, HRESULT hr, const char* format, va_list arguments) {
  const DWORD error = GetLastError();
  if (const FileHandle file = OpenForOneLine()) {
    WriteHead(file, level, line, sourceFile);
    WriteResultCode(file, hr);
    if (format && *format) {
      char message[kNarrowMessageBytes];
      FormatNarrow(message, kNarrowMessageBytes, format, arguments);
      Write(file, kSeparator);
      WriteMessage(file, message);
    }
    Write(file, kLineEnd);
  }
  SetLastError(error);
}

void WriteWideMessage(const FileHandle& file, const wchar_t* format, va_list arguments) {
  wchar_t message[kWideMessageCharacters];
  wvnsprintfW(message, kWideMessageCharacters - 1, format, arguments);
  message[kWideMessageCharacters - 2] = L'\0';
  const int bytes = static_cast<int>(std::wcslen(message)) * 2 + 1;
  const OwnedText narrow = AllocateText(static_cast<std::size_t>(bytes));
  if (narrow && WideCharToMultiByte(CP_ACP, 0, message, -1, narrow.get(), bytes, nullptr, nullptr) > 0)
    WriteMessage(file, narrow.get());
}

void WriteLineW(const char* level, int line, const char* sourceFile, HRESULT hr, const wchar_t* format, va_list arguments) {
  const DWORD error = GetLastError();
  if (const FileHandle file = OpenForOneLine()) {
    WriteHead(file, level, line, sourceFile);
    WriteResultCode(file, hr);
    if (format && *format) {
      Write(file, kSeparator);
      WriteWideMessage(file, format, arguments);
    }
    Write(file, kLineEnd);
  }
  SetLastError(error);
}

void WriteTrace(const char* level, int line, const char* sourceFile, HRESULT hr, ...) {
  if (!debugLogging)
    return;
  va_list none;
  va_start(none, hr);
  WriteLine(level, line, sourceFile, hr, nullptr, none);
  va_end(none);
}

}  // namespace

// The nine calls differ in level, code and width only; each has to start its own argument list.
#define WRITE_LINE(writer, level, hr, format)       \
  va_list arguments;                                \
  va_start(arguments, format);                      \
  writer(level, line, file, hr, format, arguments); \
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
  if (text) {
    if (const FileHandle file = OpenForOneLine())
      Write(file, text);
  }
  SetLastError(error);
}

void SetLogFileName(const wchar_t* name) {
  const DWORD error = GetLastError();
  ChooseFile(name);
  SetLastError(error);
}

void SetDebugLogging(LONG value) {
  debugLogging = value;
}

LONG GetDebugLogging() {
  return debugLogging;
}
