#pragma once

// Stands in for the system's header in the native build of the fuzz targets: the types, constants and functions that the
// fuzzed files of src/ use, and no others. Values, and what the functions do, are those of the Windows API, except that
//   - wchar_t has the width of the machine; targets put nothing above 0xFFFF into it,
//   - the ANSI code page is one of two (CodePage.cpp): single-byte like 1252, or double-byte with the lead bytes of 932,
//   - files take every byte and keep none (Files.cpp); a target that looks at a file patches the calls,
//   - paths are taken for full paths without "." and ".." (Paths.cpp),
//   - the user's locale has English names (Times.cpp).
// Functions that targets patch (support/ImportPatch.h) are marked PATCHABLE where they are defined.
#define _WINDOWS_

#include <cstdarg>
#include <cstddef>
#include <cstdint>

#define WINAPI
#define TRUE 1
#define FALSE 0
#define MAX_PATH 260

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using SIZE_T = std::size_t;
using INT_PTR = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using HRESULT = LONG;
using HANDLE = void*;
using HMODULE = struct Module*;
using HWND = struct Window*;
using HINTERNET = void*;
using BSTR = wchar_t*;
using INTERNET_PORT = WORD;

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct SYSTEMTIME {
  WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

// Result codes and errors.
#define S_OK (static_cast<HRESULT>(0))
#define S_FALSE (static_cast<HRESULT>(1))
#define E_UNEXPECTED (static_cast<HRESULT>(0x8000FFFFu))
#define E_FAIL (static_cast<HRESULT>(0x80004005u))
#define E_ACCESSDENIED (static_cast<HRESULT>(0x80070005u))
#define E_OUTOFMEMORY (static_cast<HRESULT>(0x8007000Eu))
#define E_INVALIDARG (static_cast<HRESULT>(0x80070057u))
#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)
#define HRESULT_FROM_WIN32(error) (static_cast<HRESULT>(0x80070000u | ((error)&0xFFFFu)))
#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_OUTOFMEMORY 14u
#define ERROR_WRITE_FAULT 29u
#define ERROR_NETNAME_DELETED 64u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_DISK_FULL 112u
#define ERROR_INSUFFICIENT_BUFFER 122u
#define ERROR_INVALID_NAME 123u
#define ERROR_ALREADY_EXISTS 183u
#define ERROR_FILENAME_EXCED_RANGE 206u
#define ERROR_INTERNET_CONNECTION_ABORTED 12030u
#define ERROR_HTTP_HEADER_NOT_FOUND 12150u
DWORD GetLastError();
void SetLastError(DWORD error);

// Text.
#define CP_ACP 0u
BOOL IsDBCSLeadByte(BYTE byte);
char* CharUpperA(char* text);
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int characters, char* narrow, int bytes,
                        const char* defaultCharacter, BOOL* isDefaultUsed);
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int bytes, wchar_t* wide, int characters);
char* lstrcpynA(char* copy, const char* text, int bytes);
char* StrStrA(const char* text, const char* sought);
int wsprintfA(char* buffer, const char* format, ...);
int wnsprintfA(char* buffer, int bytes, const char* format, ...);
int wvnsprintfA(char* buffer, int bytes, const char* format, va_list arguments);
int wvnsprintfW(wchar_t* buffer, int characters, const wchar_t* format, va_list arguments);
BSTR SysAllocStringLen(const wchar_t* text, UINT characters);
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);
#define LPTR 0x40u
void* LocalAlloc(UINT flags, SIZE_T bytes);
void* LocalFree(void* memory);
#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x100u
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x200u
#define FORMAT_MESSAGE_FROM_SYSTEM 0x1000u
#define LANG_NEUTRAL 0u
#define SUBLANG_DEFAULT 1u
#define MAKELANGID(primary, sub) (((sub) << 10) | (primary))
DWORD FormatMessageA(DWORD flags, const void* source, DWORD message, DWORD language, char* buffer, DWORD bytes,
                     va_list* arguments);

// Times.
#define LOCALE_USER_DEFAULT 0x400u
BOOL SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime);
BOOL FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime);
LONG CompareFileTime(const FILETIME* time, const FILETIME* other);
void GetLocalTime(SYSTEMTIME* time);
int GetDateFormatA(DWORD locale, DWORD flags, const SYSTEMTIME* time, const char* picture, char* text, int bytes);
int GetTimeFormatA(DWORD locale, DWORD flags, const SYSTEMTIME* time, const char* picture, char* text, int bytes);

// Files and folders.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<INT_PTR>(-1)))
#define INVALID_FILE_ATTRIBUTES (~DWORD{0})
#define INVALID_SET_FILE_POINTER (~DWORD{0})
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define FILE_END 2u
#define FILE_ATTRIBUTE_READONLY 0x01u
#define FILE_ATTRIBUTE_HIDDEN 0x02u
#define FILE_ATTRIBUTE_DIRECTORY 0x10u
#define FILE_ATTRIBUTE_ARCHIVE 0x20u
#define FILE_ATTRIBUTE_NORMAL 0x80u
HANDLE CreateFileA(const char* name, DWORD access, DWORD sharing, void* security, DWORD disposition, DWORD attributes,
                   HANDLE model);
BOOL CloseHandle(HANDLE file);
BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* count, void* overlapped);
BOOL WriteFile(HANDLE file, const void* bytes, DWORD size, DWORD* count, void* overlapped);
DWORD GetFileSize(HANDLE file, DWORD* high);
#define FILE_TYPE_DISK 1u
#define FILE_TYPE_CHAR 2u
DWORD GetFileType(HANDLE file);
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* high, DWORD method);
BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* access, FILETIME* write);
BOOL SetFileTime(HANDLE file, const FILETIME* creation, const FILETIME* access, const FILETIME* write);
DWORD GetFileAttributesA(const char* name);
BOOL SetFileAttributesA(const char* name, DWORD attributes);
BOOL DeleteFileA(const char* name);
BOOL MoveFileA(const char* name, const char* newName);
BOOL CreateDirectoryA(const char* name, void* security);

// Paths.
#define CSIDL_LOCAL_APPDATA 0x1C
#define SHGFP_TYPE_CURRENT 0u
HRESULT SHGetFolderPathA(HWND owner, int folder, HANDLE token, DWORD flags, char* path);
DWORD GetModuleFileNameA(HMODULE module, char* path, DWORD bytes);
DWORD GetFullPathNameA(const char* name, DWORD bytes, char* path, char** fileName);
char* PathFindFileNameA(const char* path);
BOOL PathAppendA(char* path, const char* component);
char* PathAddBackslashA(char* path);
void PathRemoveExtensionA(char* path);

// The Internet.
#define INTERNET_OPEN_TYPE_PRECONFIG 0u
#define INTERNET_FLAG_RELOAD 0x80000000u
#define INTERNET_FLAG_NO_CACHE_WRITE 0x04000000u
#define HTTP_QUERY_CONTENT_LENGTH 5u
#define HTTP_QUERY_STATUS_CODE 19u
#define HTTP_QUERY_CONTENT_ENCODING 29u
#define HTTP_QUERY_TRANSFER_ENCODING 63u
HINTERNET InternetOpenA(const char* agent, DWORD access, const char* proxy, const char* bypass, DWORD flags);
HINTERNET InternetOpenUrlA(HINTERNET session, const char* url, const char* headers, DWORD length, DWORD flags,
                           DWORD_PTR context);
BOOL InternetReadFile(HINTERNET connection, void* buffer, DWORD size, DWORD* count);
BOOL InternetCloseHandle(HINTERNET handle);
BOOL HttpQueryInfoA(HINTERNET connection, DWORD header, void* buffer, DWORD* size, DWORD* index);
BOOL InternetSetCookieA(const char* url, const char* name, const char* data);
