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

struct LogState {
  char path[MAX_PATH];   // empty until a file was chosen
  bool isBegun;          // the first entry of a file empties it
  bool isNoticeWritten;  // the cap notice, since the file was chosen
};

LogState state;
LogFileSink logFile;

void ChooseFile(const wchar_t* name) {
  ChooseLogPath(name, state.path);
  state.isBegun = false;
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
  const DWORD disposition = state.isBegun ? OPEN_ALWAYS : CREATE_ALWAYS;
  state.isBegun = true;
  return FileHandle(CreateFileA(state.path, GENERIC_WRITE, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// The file, open and at its end; an invalid handle when the entry cannot or must not be written.
FileHandle OpenForOneEntry() {
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

void Format(char* buffer, int characters, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  FormatNarrow(buffer, characters, format, arguments);
  va_end(arguments);
}

void WriteHead(const FileHandle& file, const LogRecord& entry) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  char head[kNarrowMessageBytes];
  Format(head, kNarrowMessageBytes, GetDebugLogging() ? kDebugHead : kHead, entry.level, now.wMonth, now.wDay, now.wYear,
         now.wHour, now.wMinute, now.wSecond, entry.line, entry.file);
  Write(file, head);
}

void WriteResultCode(const FileHandle& file, HRESULT hr) {
  if (SUCCEEDED(hr))
    return;
  char code[sizeof(kResultCode) + 8];
  Format(code, sizeof(code), kResultCode, hr);
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

}  // namespace

LogFileSink& GetLogFile() {
  return logFile;
}

const char* LogFileSink::GetPath() const {
  return state.path;
}

void LogFileSink::SetName(const wchar_t* name) {
  ChooseFile(name);
}

void LogFileSink::Write(const LogRecord& entry) {
  const FileHandle file = OpenForOneEntry();
  if (!file)
    return;
  WriteHead(file, entry);
  WriteResultCode(file, entry.hr);
  if (entry.HasMessage()) {
    ::Write(file, kSeparator);
    const LogMessage message(entry);
    if (message.Get())
      WriteMessage(file, message.Get());
  }
  ::Write(file, kLineEnd);
}

void LogFileSink::WriteText(const char* text) {
  if (const FileHandle file = OpenForOneEntry())
    ::Write(file, text);
}
