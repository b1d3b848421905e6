#pragma once

#include "common/Windows.h"

// The log file: one file of text lines for each manifest, and the only place where the module tells what it does and what
// went wrong. Every line opens the file, appends and closes it again; a line that cannot be written is lost, and nothing
// here ever fails towards its caller or changes the thread's last error. The state is process-wide and has no lock.
//
// Every call passes a line and the name of a source file first: HERE. Formats are those of wvnsprintf; text from outside is
// an argument of "%s", never a format.

// How a source file signs its lines; each says it once, as `kSourceFile`. The log shows the name of the class or of the free
// functions, and several files may carry that code. The file of that name counts its lines from `lineBase` 0, each other one
// from a thousand of its own, so that a name and a line lead to one place (scripts/check-log-lines).
struct SourceFile {
  const char* name = nullptr;
  int lineBase = 0;
};

#define HERE_IN(sourceFile) (sourceFile).lineBase + __LINE__, (sourceFile).name
#define HERE HERE_IN(kSourceFile)

#define NORVIK_PRINTF(formatIndex, firstArgument) __attribute__((format(ms_printf, formatIndex, firstArgument)))

// Written always. A negative `hr` adds the code and the system's text for it.
void LogInfo(int line, const char* file, const char* format, ...) NORVIK_PRINTF(3, 4);
void LogInfoW(int line, const char* file, const wchar_t* format, ...);
void LogWarning(int line, const char* file, HRESULT hr, const char* format, ...) NORVIK_PRINTF(4, 5);
void LogWarningW(int line, const char* file, HRESULT hr, const wchar_t* format, ...);
void LogError(int line, const char* file, HRESULT hr, const char* format, ...) NORVIK_PRINTF(4, 5);
void LogErrorW(int line, const char* file, HRESULT hr, const wchar_t* format, ...);

// A line without a message, written only while debug logging is on.
void LogInfoTrace(int line, const char* file);
void LogWarningTrace(int line, const char* file, HRESULT hr);
void LogErrorTrace(int line, const char* file, HRESULT hr);

// Appends `text` as it is, always.
void LogText(const char* text);

// Chooses the log file: the final component of `name` (a file name, path or URL; may be null) with the extension .log, in
// the log folder. The first line written afterwards empties the file.
void SetLogFileName(const wchar_t* name);

// Debug logging adds source positions to every line, and trace lines. Any value but zero counts as on; it is on when the
// module is loaded. The value is kept as it is given.
void SetDebugLogging(LONG value);
LONG GetDebugLogging();

// A failure that is detected here: writes its message as an ERROR line and gives the code back.
HRESULT Reported(int line, const char* file, HRESULT hr, const char* format, ...) NORVIK_PRINTF(4, 5);
HRESULT ReportedW(int line, const char* file, HRESULT hr, const wchar_t* format, ...);

// A failure that is not worth a message, or was reported below: writes an ERROR trace line and gives the code back.
HRESULT Traced(int line, const char* file, HRESULT hr);
