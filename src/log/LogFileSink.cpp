#include "log/LogFileSink.h"

#include <cstring>
#include <utility>

#include "common/Handles.h"
#include "log/LogFile.h"
#include "log/LogPath.h"

namespace {

constexpr char kHead[] = "%s (%02d/%02d/%04d %02d:%02d:%02d) ";
constexpr char kDebugHead[] = "%s (%02d/%02d/%04d %02d:%02d:%02d) on line %d in file '%s' ";
constexpr char kResultCode[] = "Error (0x%08x)";
constexpr char kSeparator[] = "\r\n\t";
constexpr char kLineEnd[] = "\r\n";
constexpr char kCapNotice[] = "\r\nToo many errors. Logging stopped...\r\n";

// Nothing is appended to a file of this size or more.
constexpr DWORD kCapBytes = 0x10000;

LogFileSink logFile;

void WriteBytes(const FileHandle& file, const char* text, std::size_t length) {
  DWORD written = 0;
  WriteFile(file.Get(), text, static_cast<DWORD>(length), &written, nullptr);  // a lost line is nobody's failure
}

void WriteBytes(const FileHandle& file, const char* text) {
  WriteBytes(file, text, std::strlen(text));
}

bool SeekToEnd(const FileHandle& file) {
  return SetFilePointer(file.Get(), 0, nullptr, FILE_END) != INVALID_SET_FILE_POINTER;
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
      WriteBytes(file, start, static_cast<std::size_t>(position + 1 - start));
      WriteBytes(file, "\t");
      start = position + 1;
    }
  }
  WriteBytes(file, start);
}

void Format(char* buffer, int characters, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormatNarrow(buffer, characters, format, arguments);
  va_end(arguments);
}

void WriteHead(const FileHandle& file, const LogRecord& record) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  char head[kNarrowMessageBytes];
  Format(head, kNarrowMessageBytes, GetDebugLogging() ? kDebugHead : kHead, record.level, now.wMonth, now.wDay, now.wYear,
         now.wHour, now.wMinute, now.wSecond, record.line, record.file);
  WriteBytes(file, head);
}

void WriteResultCode(const FileHandle& file, HRESULT hr) {
  if (SUCCEEDED(hr))
    return;
  char code[sizeof(kResultCode) + 8];
  Format(code, sizeof(code), kResultCode, hr);
  WriteBytes(file, code);

  char* allocated = nullptr;
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
      static_cast<DWORD>(hr), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<char*>(&allocated), 0, nullptr);
  const LocalText systemText(allocated);
  if (length == 0 || !systemText)
    return;
  WriteBytes(file, " ");
  WriteBytes(file, systemText.Get(), length > 2 ? length - 2 : length);  // without the system's own line end
}

}  // namespace

LogFileSink& GetLogFile() {
  return logFile;
}

void LogFileSink::SetName(const wchar_t* name) {
  ChooseLogPath(name, path);
  isBegun = false;
  isNoticeWritten = false;
}

void LogFileSink::Continue(const wchar_t* name) {
  SetName(name);
  isBegun = true;
}

FileHandle LogFileSink::Open() {
  const DWORD disposition = isBegun ? OPEN_ALWAYS : CREATE_ALWAYS;
  isBegun = true;
  return FileHandle(CreateFileA(path, GENERIC_WRITE, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// The file, open and at its end; an invalid handle when the record cannot or must not be written.
FileHandle LogFileSink::OpenForOneRecord() {
  if (!path[0])
    SetName(nullptr);
  FileHandle file = Open();
  if (file && IsDevice(file)) {  // a manifest named nul.xml must not make its run one without a log
    SetName(nullptr);
    file = Open();
  }
  if (!file)
    return file;
  if (GetFileSize(file.Get(), nullptr) >= kCapBytes) {
    if (!isNoticeWritten) {
      isNoticeWritten = true;
      if (SeekToEnd(file))
        WriteBytes(file, kCapNotice);
    }
    return FileHandle();
  }
  return SeekToEnd(file) ? std::move(file) : FileHandle();
}

void LogFileSink::Write(const LogRecord& record) {
  const FileHandle file = OpenForOneRecord();
  if (!file)
    return;
  WriteHead(file, record);
  WriteResultCode(file, record.hr);
  if (record.HasMessage()) {
    WriteBytes(file, kSeparator);
    const LogMessage message(record);
    if (message.Get())
      WriteMessage(file, message.Get());
  }
  WriteBytes(file, kLineEnd);
}

void LogFileSink::WriteText(const char* text) {
  if (const FileHandle file = OpenForOneRecord())
    WriteBytes(file, text);
}
