#pragma once

#include "common/Windows.h"

// The log file: one file of text lines for each manifest, and the only place where the module tells what it does and what
// went wrong. Every line opens the file, appends and closes it again; a line that cannot be written is lost, and nothing
// here ever fails towards its caller or changes the thread's last error. The state is process-wide and has no lock.
//
// Every call passes the line and the name of its source file first. Each source file names itself once, as `kSourceFile`.
// Formats are those of wvnsprintf; text from outside is an argument of "%s", never a format.
#define HERE __LINE__, kSourceFile

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
HRESULT Failed(int line, const char* file, HRESULT hr, const char* format, ...) NORVIK_PRINTF(4, 5);
HRESULT FailedW(int line, const char* file, HRESULT hr, const wchar_t* format, ...);

// A failure that is not worth a message, or was reported below: writes an ERROR trace line and gives the code back.
HRESULT Traced(int line, const char* file, HRESULT hr);
