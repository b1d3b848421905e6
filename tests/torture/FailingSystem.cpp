#include "torture/FailingSystem.h"

#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <wininet.h>

#include "control/Registrar.h"
#include "support/ImportPatch.h"
#include "torture/FailingObjects.h"

namespace {

// What a call is about, and which one of its kind.
struct Subject {
  Subject(const std::string& callObject, const std::string& callName = "") : object(callObject), name(callName) {}
  std::string object;
  std::string name;
};

// The class of the SAX reader.
constexpr CLSID kReaderClass = {0x079AA557, 0x4A18, 0x424A, {0x8E, 0xEE, 0xE3, 0x9F, 0x0A, 0x8D, 0x41, 0xB9}};

const auto kNothing = [](auto...) { return Subject(""); };

// What leaves no error behind is taken for a lack of memory.
DWORD KnownAs(DWORD error) {
  return error == ERROR_SUCCESS ? static_cast<DWORD>(E_OUTOFMEMORY) : error;
}

// Nobody looks at the way in which the log fails.
int Ways(const std::string& object, const std::vector<DWORD>& errors) {
  return object == "log" ? 1 : static_cast<int>(errors.size());
}

}  // namespace

template <class Tag, class Function, class Handler>
void FailingSystem::Replace(const char* name, Handler handler) {
  replaced.push_back(name);
  patches.push_back(std::make_shared<ImportedFunction<Tag, Function>>(name, handler, module));
}

// A function that answers `result` and leaves one of `errors` as the thread's last error; without errors it leaves none.
// With kAnswersError it answers the error itself.
constexpr int kAnswersError = -12345;

template <class Tag, class Function, class Result, class Describe>
void FailingSystem::MakeFallible(const char* name, Result result, std::vector<DWORD> errors, Describe describe) {
  Replace<Tag, Function>(name, [=](auto original, auto... arguments) -> decltype(original(arguments...)) {
    using Answer = decltype(original(arguments...));
    const DWORD before = GetLastError();
    const Subject subject = describe(arguments...);
    const int way = counter.Decide(name, subject.object, Ways(subject.object, errors), subject.name);
    SetLastError(before);
    if (way < 0)
      return original(arguments...);
    const DWORD error = errors[static_cast<std::size_t>(way)];
    counter.failedWith = KnownAs(error);
    if constexpr (std::is_same_v<Result, int> && std::is_integral_v<Answer>) {
      if (result == kAnswersError)
        return static_cast<Answer>(error);
    }
    if (error != ERROR_SUCCESS)
      SetLastError(error);
    return static_cast<Answer>(result);
  });
}

#define REPLACE(function, ...) Replace<struct function##Torture, decltype(&::function)>(#function, __VA_ARGS__)
#define FALLIBLE(function, result, describe, ...) \
  MakeFallible<struct function##Torture, decltype(&::function)>(#function, result, {__VA_ARGS__}, describe)

// What the function gives is on the account until it is given back.
template <class Tag, class Function, class Describe>
void FailingSystem::MakeTaken(const char* name, const char* kind, std::vector<DWORD> errors, Describe describe) {
  Replace<Tag, Function>(name, [=](auto original, auto... arguments) -> decltype(original(arguments...)) {
    const DWORD before = GetLastError();
    const Subject subject = describe(arguments...);
    const int way = counter.Decide(name, subject.object, Ways(subject.object, errors), subject.name);
    SetLastError(before);
    if (way >= 0) {
      const DWORD error = errors[static_cast<std::size_t>(way)];
      counter.failedWith = KnownAs(error);
      if (error != ERROR_SUCCESS)
        SetLastError(error);
      return nullptr;
    }
    const auto taken = original(arguments...);
    const DWORD after = GetLastError();
    counter.Take(kind, taken);
    if (taken && !subject.object.empty())
      places.Opened(taken, subject.object);
    SetLastError(after);
    return taken;
  });
}

// The call that gives a thing back; it cannot fail.
template <class Tag, class Function, class Select>
void FailingSystem::MakeGivenBack(const char* name, const char* kind, Select select) {
  Replace<Tag, Function>(name, [=](auto original, auto... arguments) {
    counter.GiveBack(kind, select(arguments...));
    return original(arguments...);
  });
}

#define TAKEN(function, kind, describe, ...) \
  MakeTaken<struct function##Torture, decltype(&::function)>(#function, kind, {__VA_ARGS__}, describe)
#define GIVEN_BACK(function, kind, select) \
  MakeGivenBack<struct function##Torture, decltype(&::function)>(#function, kind, select)

FailingSystem::FailingSystem(HMODULE patched, CallCounter& callCounter, Places& knownPlaces)
    : module(patched), counter(callCounter), places(knownPlaces) {
  ReplaceMemory();
  ReplaceText();
  ReplaceFiles();
  ReplaceFileOperations();
  ReplaceInternet();
  ReplaceCom();
  ReplaceTypeLibraries();
  ReplaceRegistry();
  ReplaceShell();
}

// HeapAlloc leaves no error behind, and the module must not expect one.
void FailingSystem::ReplaceMemory() {
  const auto third = [](auto, auto, auto thing) { return thing; };
  const auto first = [](auto thing, auto...) { return thing; };
  TAKEN(HeapAlloc, "memory", kNothing, ERROR_SUCCESS);
  GIVEN_BACK(HeapFree, "memory", third);
  TAKEN(LocalAlloc, "local memory", kNothing, ERROR_NOT_ENOUGH_MEMORY);
  GIVEN_BACK(LocalFree, "local memory", first);
  const auto text = [](const wchar_t* wide) { return Subject("", std::string(wide, wide + wcslen(wide))); };
  TAKEN(SysAllocString, "string", text, ERROR_SUCCESS);
  TAKEN(SysAllocStringLen, "string", kNothing, ERROR_SUCCESS);
  GIVEN_BACK(SysFreeString, "string", first);
  REPLACE(VariantClear, [this](auto original, VARIANTARG* value) {
    if (value->vt == VT_BSTR)
      counter.GiveBack("string", value->bstrVal);
    return original(value);
  });
  REPLACE(VariantChangeType, [this](auto original, VARIANTARG* to, VARIANTARG* from, USHORT flags, VARTYPE type) {
    if (counter.Decide("VariantChangeType", "", 1) == 0)
      return RefuseWith(E_OUTOFMEMORY);
    const HRESULT hr = original(to, from, flags, type);
    if (SUCCEEDED(hr) && to->vt == VT_BSTR)
      counter.Take("string", to->bstrVal);
    return hr;
  });
}

void FailingSystem::ReplaceText() {
  FALLIBLE(MultiByteToWideChar, 0, kNothing, ERROR_NOT_ENOUGH_MEMORY);
  FALLIBLE(WideCharToMultiByte, 0, kNothing, ERROR_NOT_ENOUGH_MEMORY);
  FALLIBLE(GetDateFormatA, 0, kNothing, ERROR_INVALID_PARAMETER);
  FALLIBLE(GetTimeFormatA, 0, kNothing, ERROR_INVALID_PARAMETER);
  FALLIBLE(FileTimeToSystemTime, FALSE, kNothing, ERROR_INVALID_PARAMETER);
  FALLIBLE(SystemTimeToFileTime, FALSE, kNothing, ERROR_INVALID_PARAMETER);
  FALLIBLE(LocalFileTimeToFileTime, FALSE, kNothing, ERROR_INVALID_PARAMETER);
  FALLIBLE(FormatMessageA, 0, kNothing, ERROR_NOT_ENOUGH_MEMORY);
}

void FailingSystem::ReplaceFiles() {
  const auto byHandle = [this](HANDLE handle, auto...) { return places.OfHandle(handle); };
  REPLACE(CreateFileA, [this](auto original, const char* path, auto... rest) -> HANDLE {
    static const std::vector<DWORD> errors = {ERROR_DISK_FULL, ERROR_SHARING_VIOLATION, ERROR_ACCESS_DENIED};
    const std::string object = places.OfPath(path);
    const int way = counter.Decide("CreateFileA", object, Ways(object, errors));
    if (way >= 0) {
      Refuse(errors[static_cast<std::size_t>(way)]);
      return INVALID_HANDLE_VALUE;
    }
    const HANDLE file = original(path, rest...);
    if (file != INVALID_HANDLE_VALUE) {
      counter.Take("file", file);
      places.Opened(file, object);
      counter.openLogFiles += object == "log" ? 1 : 0;
    }
    return file;
  });
  // A file whose closing fails is closed all the same.
  REPLACE(CloseHandle, [this](auto original, HANDLE handle) -> BOOL {
    const std::string object = places.OfHandle(handle);
    const int way = counter.Decide("CloseHandle", object, 1);
    counter.GiveBack("file", handle);
    places.Closed(handle);
    counter.openLogFiles -= object == "log" ? 1 : 0;
    const BOOL isClosed = original(handle);
    if (way < 0)
      return isClosed;
    Refuse(ERROR_DISK_FULL);
    return FALSE;
  });
  FALLIBLE(ReadFile, FALSE, byHandle, ERROR_CRC, ERROR_NOT_ENOUGH_MEMORY);
  // In its second way a write takes fewer bytes and reports success.
  REPLACE(WriteFile,
          [this](auto original, HANDLE file, const void* bytes, DWORD count, DWORD* written, auto overlapped) -> BOOL {
            const std::string object = places.OfHandle(file);
            switch (counter.Decide("WriteFile", object, object == "log" ? 1 : 2)) {
              case -1:
                return original(file, bytes, count, written, overlapped);
              case 0:
                *written = 0;
                Refuse(ERROR_DISK_FULL);
                return FALSE;
            }
            counter.failedWith = ERROR_WRITE_FAULT;  // that is how the module has to take it
            return original(file, bytes, count / 2, written, overlapped);
          });
  FALLIBLE(GetFileSize, INVALID_FILE_SIZE, byHandle, ERROR_ACCESS_DENIED);
  FALLIBLE(SetFilePointer, INVALID_SET_FILE_POINTER, byHandle, ERROR_INVALID_FUNCTION);
  FALLIBLE(GetFileTime, FALSE, byHandle, ERROR_ACCESS_DENIED);
  FALLIBLE(SetFileTime, FALSE, byHandle, ERROR_ACCESS_DENIED);
}

void FailingSystem::ReplaceFileOperations() {
  const auto byPath = [this](const char* path, auto...) { return Subject(places.OfPath(path), path ? path : ""); };
  FALLIBLE(CreateDirectoryA, FALSE, byPath, ERROR_ACCESS_DENIED, ERROR_DISK_FULL);
  FALLIBLE(DeleteFileA, FALSE, byPath, ERROR_ACCESS_DENIED);
  // Not the error of a file that then refuses to be written: the log has to tell of both.
  FALLIBLE(GetFileAttributesA, INVALID_FILE_ATTRIBUTES, byPath, ERROR_NOT_READY);
  FALLIBLE(SetFileAttributesA, FALSE, byPath, ERROR_NOT_READY);
  FALLIBLE(MoveFileA, FALSE, byPath, ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION);
  FALLIBLE(GetFullPathNameA, 0, byPath, ERROR_NOT_ENOUGH_MEMORY);
  FALLIBLE(GetTempPathA, 0, kNothing, ERROR_NOT_ENOUGH_MEMORY);
  FALLIBLE(GetModuleFileNameA, 0, kNothing, ERROR_NOT_ENOUGH_MEMORY);
  FALLIBLE(GetModuleFileNameW, 0, kNothing, ERROR_NOT_ENOUGH_MEMORY);
}

void FailingSystem::ReplaceInternet() {
  const auto session = [](auto...) { return std::string("session"); };
  const auto byUrl = [this](auto, const char* url, auto...) { return places.OfUrl(url); };
  const auto byHandle = [this](HINTERNET handle, auto...) { return places.OfHandle(handle); };
  const auto ofCookie = [](auto...) { return std::string("cookie"); };
  TAKEN(InternetOpenA, "internet session", session, ERROR_NOT_ENOUGH_MEMORY);
  TAKEN(InternetOpenUrlA, "connection", byUrl, ERROR_INTERNET_TIMEOUT, ERROR_INTERNET_NAME_NOT_RESOLVED,
        ERROR_INTERNET_CANNOT_CONNECT, ERROR_INTERNET_CONNECTION_ABORTED);
  REPLACE(InternetCloseHandle, [this](auto original, HINTERNET handle) -> BOOL {
    const int way = counter.Decide("InternetCloseHandle", places.OfHandle(handle), 1);
    counter.GiveBack("internet session", handle);
    counter.GiveBack("connection", handle);
    places.Closed(handle);
    const BOOL isClosed = original(handle);
    if (way < 0)
      return isClosed;
    Refuse(ERROR_INTERNET_INCORRECT_HANDLE_STATE);
    return FALSE;
  });
  FALLIBLE(InternetReadFile, FALSE, byHandle, ERROR_INTERNET_TIMEOUT, ERROR_INTERNET_CONNECTION_ABORTED);
  FALLIBLE(HttpQueryInfoA, FALSE, byHandle, ERROR_HTTP_HEADER_NOT_FOUND);
  FALLIBLE(InternetSetCookieA, FALSE, ofCookie, ERROR_NOT_ENOUGH_MEMORY);
  REPLACE(CreateUrlCacheEntryA,
          [this](auto original, const char* url, DWORD size, const char* extension, char* path, DWORD reserved) -> BOOL {
            if (counter.Decide("CreateUrlCacheEntryA", places.OfUrl(url) + " copy", 1) == 0) {
              Refuse(ERROR_DISK_FULL);
              return FALSE;
            }
            const BOOL isMade = original(url, size, extension, path, reserved);
            if (isMade)
              places.CacheFileMade(path, url);
            return isMade;
          });
  REPLACE(CommitUrlCacheEntryA, [this](auto original, const char* url, const char* path, auto... rest) -> BOOL {
    static const std::vector<DWORD> errors = {ERROR_DISK_FULL, ERROR_SHARING_VIOLATION};
    const int way = counter.Decide("CommitUrlCacheEntryA", places.OfUrl(url) + " copy", static_cast<int>(errors.size()));
    if (way >= 0) {
      Refuse(errors[static_cast<std::size_t>(way)]);
      return FALSE;
    }
    const BOOL isCommitted = original(url, path, rest...);
    if (isCommitted)
      places.CacheFileCommitted(path);
    return isCommitted;
  });
}

void FailingSystem::Refuse(DWORD error) {
  counter.failedWith = error;
  SetLastError(error);
}

HRESULT FailingSystem::RefuseWith(HRESULT hr) {
  counter.failedWith = static_cast<DWORD>(hr);
  return hr;
}

void FailingSystem::ReplaceCom() {
  REPLACE(CoInitialize, [this](auto original, void* reserved) -> HRESULT {
    const int way = counter.Decide("CoInitialize", "", 2);
    if (way >= 0)
      return RefuseWith(way == 0 ? E_OUTOFMEMORY : RPC_E_CHANGED_MODE);
    const HRESULT hr = original(reserved);
    if (SUCCEEDED(hr))
      counter.Take("apartment", this);
    return hr;
  });
  REPLACE(CoUninitialize, [this](auto original) {
    counter.GiveBack("apartment", this);
    original();
  });
  REPLACE(
      CoCreateInstance,
      [this](auto original, REFCLSID classId, auto outer, auto context, REFIID iid, void** object) -> HRESULT {
        const bool isRegistrar = classId == kRegistrarClass;
        const bool isReader = classId == kReaderClass;
        const int way = counter.Decide("CoCreateInstance", isRegistrar ? "registrar" : isReader ? "reader" : "document", 2);
        if (way >= 0 || (isRegistrar && !hasRegistrar)) {
          *object = nullptr;
          return RefuseWith(way == 1 ? E_OUTOFMEMORY : REGDB_E_CLASSNOTREG);
        }
        const HRESULT hr = original(classId, outer, context, iid, object);
        if (SUCCEEDED(hr))
          *object = isRegistrar ? MakeFailingRegistrar(*object, counter)
                    : isReader  ? MakeFailingReader(*object, counter)
                                : MakeFailingDocument(*object, counter);
        return hr;
      });
}

void FailingSystem::ReplaceTypeLibraries() {
  const DWORD noLibrary = static_cast<DWORD>(TYPE_E_CANTLOADLIBRARY);
  const DWORD noMemory = static_cast<DWORD>(E_OUTOFMEMORY);
  const DWORD noAccess = static_cast<DWORD>(TYPE_E_REGISTRYACCESS);
  FALLIBLE(LoadTypeLib, kAnswersError, kNothing, noLibrary, noMemory);
  FALLIBLE(LoadTypeLibEx, kAnswersError, kNothing, noLibrary);
  FALLIBLE(RegisterTypeLib, kAnswersError, kNothing, noAccess);
  FALLIBLE(UnRegisterTypeLib, kAnswersError, kNothing, noAccess);
  FALLIBLE(QueryPathOfRegTypeLib, kAnswersError, kNothing, noAccess);
}

void FailingSystem::ReplaceRegistry() {
  REPLACE(RegCreateKeyA, [this](auto original, HKEY root, const char* name, HKEY* key) -> LSTATUS {
    const int way = counter.Decide("RegCreateKeyA", "", 1);
    if (way == 0)
      counter.failedWith = ERROR_ACCESS_DENIED;
    const LSTATUS status = way == 0 ? ERROR_ACCESS_DENIED : original(root, name, key);
    if (status == ERROR_SUCCESS)
      counter.Take("key", *key);
    return status;
  });
  FALLIBLE(RegSetValueExA, kAnswersError, kNothing, ERROR_ACCESS_DENIED);
  const auto registryKey = [](HKEY, const char* name) { return Subject("", name); };
  FALLIBLE(RegDeleteKeyA, kAnswersError, registryKey, ERROR_ACCESS_DENIED);
  REPLACE(RegCloseKey, [this](auto original, HKEY key) -> LSTATUS {
    const int way = counter.Decide("RegCloseKey", "", 1);
    counter.GiveBack("key", key);
    const LSTATUS status = original(key);
    return way == 0 ? ERROR_INVALID_HANDLE : status;
  });
}

void FailingSystem::ReplaceShell() {
  REPLACE(SHGetFolderPathA, [this](auto original, HWND owner, int folder, auto token, DWORD flags, char* path) -> HRESULT {
    const std::string object = (folder & ~CSIDL_FLAG_MASK) == CSIDL_LOCAL_APPDATA ? "log" : "folder";
    const int way = counter.Decide("SHGetFolderPathA", object, 1);
    return way == 0 ? RefuseWith(__HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)) : original(owner, folder, token, flags, path);
  });
  REPLACE(ShellExecuteExA, [this](auto, SHELLEXECUTEINFOA* what) -> BOOL {
    static const DWORD errors[] = {ERROR_FILE_NOT_FOUND, ERROR_NO_ASSOCIATION};
    const int way = counter.Decide("ShellExecuteExA", "", 2);
    if (way < 0) {
      started.push_back(std::string(what->lpDirectory) + "\\" + what->lpFile);
      return TRUE;
    }
    Refuse(errors[way]);
    return FALSE;
  });
}
