// What comes of each call that fails, by the place in the module's work where it is made.
//
//  - What cannot be read is as good as absent, for elements that may be absent: the file goes to the Internet cache without
//  its
//    destination, an existing file is replaced without its policy, a file has no time, no attributes, no expiry.
//  - An entry of a permission list that cannot be read ends that list.
//  - A `Copy` that cannot be collected ends the collection, and what was collected before is carried out.
//  - Without its first item, its declaration, a document goes on.

#include "torture/Outcomes.h"

#include "common/Windows.h"

#include <cstring>

namespace {

constexpr HRESULT kOutOfMemory = E_OUTOFMEMORY;
constexpr HRESULT kAlreadyExists = __HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS);
constexpr unsigned kListEnds = kNoList | kDenied | kCommands | kUsual;
constexpr unsigned kElsewhere = kUsual | kLess;
constexpr unsigned kOtherPolicy = kUsual | kReplaced | kLess | kCommand;

constexpr ToldRow kToldRows[] = {
    // A control and its engine.
    {"HeapAlloc", "control", "executer", kNoEngine, kOutOfMemory},
    {"HeapAlloc", "permissions", "object", kNoEngine, kOutOfMemory},
    {"HeapAlloc", "permissions", "text", kNoEngine, kOutOfMemory},
    {"HeapAlloc", "permissions", "corrected URL", kNoEngine, kOutOfMemory},
    {"HeapAlloc", "permissions", "path", kNoEngine, kOutOfMemory},
    {"WideCharToMultiByte", "permissions", "", kNoEngine, kOutOfMemory},
    {"CoCreateInstance", "permissions", nullptr, kNoEngine, kItsOwn},
    {"SHGetFolderPathA", "permissions", nullptr, kNoEngine, kItsOwn},

    // The copy of the permission file.
    {"CreateUrlCacheEntryA", "permit copy", nullptr, kNoEngine, kItsOwn},
    {"HeapAlloc", "permit copy", "cache file name", kNoEngine, E_INVALIDARG},
    {"HeapAlloc", "permit copy", "buffer", kNoEngine, kOutOfMemory},
    {"CreateFileA", "permit copy", nullptr, kNoEngine, kItsOwn},
    {"ReadFile", "permit copy", nullptr, kNoEngine, kItsOwn},
    {"WriteFile", "permit copy", "declaration", kUsual | kNoEngine, kItsOwn},
    {"WriteFile", "permit copy", "rest", kNoEngine, kItsOwn},
    {"CloseHandle", "permit copy", "permit copy", kNoEngine, kItsOwn},
    {"CommitUrlCacheEntryA", "permit copy", nullptr, kNoEngine, kItsOwn},

    // Its document.
    {"MultiByteToWideChar", "permit document", nullptr, kNoEngine, kOutOfMemory},
    {"SysAllocStringLen", "permit document", nullptr, kNoEngine, kOutOfMemory},
    {"SysAllocString", "permit document", nullptr, kNoEngine, kOutOfMemory},
    {"HeapAlloc", "permit document", "object", kNoEngine, kOutOfMemory},
    {"put_async", "permit document", nullptr, kNoEngine, kItsOwn},
    {"put_validateOnParse", "permit document", nullptr, kNoEngine, kItsOwn},
    {"put_resolveExternals", "permit document", nullptr, kNoEngine, kItsOwn},
    {"put_preserveWhiteSpace", "permit document", nullptr, kNoEngine, kItsOwn},
    {"load", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_doctype", "permit document", nullptr, kNoEngine, kItsOwn},
    {"validate", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_documentElement", "permit *", nullptr, kNoEngine, kItsOwn},
    {"getElementsByTagName", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_length", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_item", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_firstChild", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_nextSibling", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_nodeType", "permit document", nullptr, kNoEngine, kItsOwn},
    {"get_nodeName", "permit document", nullptr, kNoEngine, kItsOwn},
    {"SysAllocString", "permit Source", nullptr, kNoEngine, kOutOfMemory},
    {"selectSingleNode", "permit Source", nullptr, kNoEngine, kItsOwn},
    {"SysAllocString", "permit Destination", nullptr, kNoEngine, kOutOfMemory},
    {"selectSingleNode", "permit Destination", nullptr, kNoEngine, kItsOwn},

    // Its lists, each of which a failure ends.
    {"SysAllocString", "permit URL", nullptr, kListEnds, kOutOfMemory},
    {"selectNodes", "permit URL", nullptr, kListEnds, kItsOwn},
    {"get_length", "permit URL", nullptr, kListEnds, kItsOwn},
    {"reset", "permit URL", nullptr, kListEnds, kItsOwn},
    {"get_item", "permit URL", nullptr, kListEnds, kItsOwn},
    {"get_text", "permit URL", nullptr, kListEnds, kItsOwn},
    {"WideCharToMultiByte", "permit URL", nullptr, kListEnds, kOutOfMemory},
    {"HeapAlloc", "permit URL", "object", kListEnds, E_POINTER},
    {"HeapAlloc", "permit URL", "text", kListEnds, kOutOfMemory},
    {"HeapAlloc", "permit URL", "corrected URL", kListEnds, kOutOfMemory},
    {"HeapAlloc", "permit URL", "folder", kDenied | kCommands, E_ACCESSDENIED},
    {"HeapAlloc", "permit Extension", "destination permissions", kNoEngine, kOutOfMemory},
    {"SysAllocString", "permit *", nullptr, kUsual | kCommands, kOutOfMemory},
    {"selectNodes", "permit *", nullptr, kUsual | kCommands, kItsOwn},
    {"get_length", "permit *", nullptr, kUsual | kCommands, kItsOwn},
    {"reset", "permit *", nullptr, kUsual | kCommands, kItsOwn},
    {"get_item", "permit *", nullptr, kUsual | kCommands, kItsOwn},
    {"get_text", "permit *", nullptr, kUsual | kCommands, kItsOwn},
    {"WideCharToMultiByte", "permit *", nullptr, kUsual | kCommands, kOutOfMemory},
    {"HeapAlloc", "permit *", "object", kUsual | kCommands, E_POINTER},
    {"HeapAlloc", "permit *", "text", kUsual | kCommands, kOutOfMemory},
    {"HeapAlloc", "permit *", "path", kUsual | kCommands, kOutOfMemory},
    {"SHGetFolderPathA", "permit InternetCache", nullptr, kUsual | kCommands, kItsOwn},
    {"GetTempPathA", "permit Temp", nullptr, kUsual, kItsOwn},

    // A run, up to its manifest.
    {"SysAllocString", "run", nullptr, kRunFails, kOutOfMemory},
    {"VariantChangeType", "run", nullptr, kRunFails, E_FAIL},
    {"WideCharToMultiByte", "run", "", kRunFails, kOutOfMemory},
    {"HeapAlloc", "run", "object", kRunFails, kOutOfMemory},
    {"HeapAlloc", "run", "text", kRunFails, kOutOfMemory},
    {"HeapAlloc", "run", "corrected URL", kRunFails, kOutOfMemory},
    {"HeapAlloc", "run", "folder", kDenied, E_ACCESSDENIED},
    {"HeapAlloc", "run", "path", kRunFails, kOutOfMemory},
    {"CoCreateInstance", "run", nullptr, kRunFails, kItsOwn},
    {"SHGetFolderPathA", "run", nullptr, kRunFails, kItsOwn},

    // The copy of the manifest.
    {"CreateUrlCacheEntryA", "manifest copy", nullptr, kRunFails, kItsOwn},
    {"HeapAlloc", "manifest copy", "cache file name", kRunFails, E_INVALIDARG},
    {"HeapAlloc", "manifest copy", "buffer", kRunFails, kOutOfMemory},
    {"InternetOpenA", "manifest copy", nullptr, kRunFails, kItsOwn},
    {"InternetOpenUrlA", "manifest copy", nullptr, kRunFails, kItsOwn},
    {"CreateFileA", "manifest copy", nullptr, kRunFails, kItsOwn},
    {"ReadFile", "manifest copy", "declaration", kRefused | kRunFails, kItsOwn},
    {"ReadFile", "manifest copy", "rest", kRunFails, kItsOwn},
    {"InternetReadFile", "manifest copy", "declaration", kRefused | kRunFails, kItsOwn},
    {"InternetReadFile", "manifest copy", "rest", kRunFails, kItsOwn},
    {"WriteFile", "manifest copy", "declaration", kUsual | kRefused, kItsOwn},
    {"WriteFile", "manifest copy", "rest", kRunFails, kItsOwn},
    {"CloseHandle", "manifest copy", "manifest copy", kRunFails, kItsOwn},
    {"CommitUrlCacheEntryA", "manifest copy", nullptr, kRunFails, kItsOwn},

    // Its document.
    {"MultiByteToWideChar", "manifest document", nullptr, kRunFails, kOutOfMemory},
    {"SysAllocStringLen", "manifest document", nullptr, kRunFails, kOutOfMemory},
    {"SysAllocString", "manifest document", nullptr, kRunFails, kOutOfMemory},
    {"put_async", "manifest document", nullptr, kRunFails, kItsOwn},
    {"put_validateOnParse", "manifest document", nullptr, kRunFails, kItsOwn},
    {"put_resolveExternals", "manifest document", nullptr, kRunFails, kItsOwn},
    {"put_preserveWhiteSpace", "manifest document", nullptr, kRunFails, kItsOwn},
    {"load", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_doctype", "manifest document", nullptr, kRunFails, kItsOwn},
    {"validate", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_documentElement", "manifest document", nullptr, kRunFails, kItsOwn},
    {"getElementsByTagName", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_length", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_item", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_firstChild", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_nextSibling", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_nodeType", "manifest document", nullptr, kRunFails, kItsOwn},
    {"get_nodeName", "manifest document", nullptr, kRunFails, kItsOwn},

    // Collecting the commands.
    {"SysAllocString", "Copy", nullptr, kUsual | kLess, kOutOfMemory},
    {"getElementsByTagName", "Copy", nullptr, kUsual | kLess, kItsOwn},
    {"get_length", "Copy", nullptr, kUsual | kLess, kItsOwn},
    {"reset", "Copy", nullptr, kUsual | kLess, kItsOwn},
    {"get_item", "Copy", nullptr, kUsual | kLess, kItsOwn},
    {"HeapAlloc", "Copy", "object", kLess, kOutOfMemory},
    {"SysAllocString", "Open", nullptr, kRunFails, kOutOfMemory},
    {"getElementsByTagName", "Open", nullptr, kRunFails, kItsOwn},
    {"get_length", "Open", nullptr, kRunFails, kItsOwn},
    {"reset", "Open", nullptr, kRunFails, kItsOwn},
    {"get_item", "Open", nullptr, kRunFails, kItsOwn},
    {"HeapAlloc", "Open", "object", kRunFails, kOutOfMemory},

    // What a command cannot be without.
    {"SysAllocString", "Source", nullptr, kUnread, kOutOfMemory},
    {"selectSingleNode", "Source", nullptr, kUnread, kItsOwn},
    {"get_text", "Source", nullptr, kUnread, kItsOwn},
    {"WideCharToMultiByte", "Source", nullptr, kUnread, kOutOfMemory},
    {"HeapAlloc", "Source", "object", kUnread, E_POINTER},
    {"HeapAlloc", "Source", "text", kUnread, kOutOfMemory},
    {"HeapAlloc", "Source", "corrected URL", kUnread, kOutOfMemory},
    {"HeapAlloc", "Source", "folder", kCommand, E_ACCESSDENIED},
    {"HeapAlloc", "Source", "file name", kCommand, E_UNEXPECTED},
    {"HeapAlloc", "Source", "file name", kCommand, E_ACCESSDENIED},  // with a FileName: the folder is no file
    {"SysAllocString", "browser", nullptr, kUnread, kOutOfMemory},
    {"get_attributes", "browser", nullptr, kUnread, kItsOwn},
    {"get_attributes", "NotFoundHTML", nullptr, kUnread, kItsOwn},
    {"getNamedItem", "browser", nullptr, kUnread, kItsOwn},
    {"getAttribute", "browser", nullptr, kUnread, E_FAIL},
    {"get_text", "browser", nullptr, kUnread, kItsOwn},

    // Its destination; what cannot be read or resolved is not there, and without any it is the Internet cache.
    {"HeapAlloc", "Destination/Path", "object", kUnread, E_POINTER},
    {"HeapAlloc", "Destination/Path", "text", kElsewhere, kOutOfMemory},
    {"HeapAlloc", "Destination/Path", "path", kElsewhere, kOutOfMemory},
    {"WideCharToMultiByte", "Destination/Path", nullptr, kElsewhere, kOutOfMemory},
    {"SysAllocString", "Destination/Path", nullptr, kElsewhere, kOutOfMemory},
    {"selectSingleNode", "Destination/Path", nullptr, kElsewhere, kItsOwn},
    {"get_text", "Destination/Path", nullptr, kElsewhere, kItsOwn},
    {"HeapAlloc", "Destination/Cookie", "object", kUnread, E_POINTER},
    {"HeapAlloc", "Destination/Cookie", "path", kUnread, kOutOfMemory},
    {"SHGetFolderPathA", "Destination/Cookie", nullptr, kUnread, kItsOwn},

    // What decides on an existing file: without it the file is replaced, unless it is protected.
    {"SysAllocString", "Destination/IfFileExists/*", nullptr, kOtherPolicy, kOutOfMemory},
    {"selectSingleNode", "Destination/IfFileExists/*", nullptr, kOtherPolicy, kItsOwn},
    {"get_attributes", "Destination/IfFileExists/*", nullptr, kUsual | kCommand, kItsOwn},
    {"SysAllocString", "force", nullptr, kUsual | kCommand, kOutOfMemory},
    {"getNamedItem", "force", nullptr, kUsual | kCommand, kItsOwn},
    {"getAttribute", "force", nullptr, kUsual | kCommand, E_FAIL},
    {"get_text", "force", nullptr, kUsual | kCommand, kItsOwn},
    {"SysAllocString", "Destination/Attributes/FileTime", nullptr, kOtherPolicy, kOutOfMemory},
    {"selectSingleNode", "Destination/Attributes/FileTime", nullptr, kOtherPolicy, kItsOwn},
    {"get_text", "Destination/Attributes/FileTime", nullptr, kOtherPolicy, kItsOwn},
    {"WideCharToMultiByte", "Destination/Attributes/FileTime", nullptr, kOtherPolicy, kOutOfMemory},
    {"HeapAlloc", "Destination/Attributes/FileTime", nullptr, kOtherPolicy, kOutOfMemory},
    {"SystemTimeToFileTime", "Destination/Attributes/FileTime", "end", kOtherPolicy, kItsOwn},
    {"FileTimeToSystemTime", "Destination/Attributes/FileTime", nullptr, kUsual, kItsOwn},
    {"CreateFileA", "Destination/Attributes/FileTime", nullptr, kUsual, kItsOwn},
    {"GetFileTime", "Destination/Attributes/FileTime", nullptr, kUsual, kItsOwn},

    // What else may be absent.
    {"HeapAlloc", "Destination/FileName", "text", kUsual, kOutOfMemory},
    {"HeapAlloc", "Destination/FileName", "text", kCommand, E_UNEXPECTED},  // the copy of the source's name
    {"SystemTimeToFileTime", "Destination/InternetCache/ExpireTime", "end", kUsual, kItsOwn},
    {"FileTimeToSystemTime", "Destination/InternetCache/ExpireTime", nullptr, kUsual, kItsOwn},
    {"HeapAlloc", "Destination/InternetCache/ExpireTime", nullptr, kUsual, kOutOfMemory},
    {"HeapAlloc", "NotFoundHTML", "text", kUsual, kOutOfMemory},
    {"WideCharToMultiByte", "Destination/FileName", nullptr, kUsual, kOutOfMemory},
    {"WideCharToMultiByte", "Destination/InternetCache/ExpireTime", nullptr, kUsual, kOutOfMemory},
    {"WideCharToMultiByte", "NotFoundHTML", nullptr, kUsual, kOutOfMemory},
    {"SysAllocString", "Destination/*", nullptr, kUsual, kOutOfMemory},
    {"SysAllocString", "NotFoundHTML", nullptr, kUsual, kOutOfMemory},
    {"selectSingleNode", "Destination/*", nullptr, kUsual, kItsOwn},
    {"selectSingleNode", "NotFoundHTML", nullptr, kUsual, kItsOwn},
    {"get_text", "Destination/FileName", nullptr, kUsual, kItsOwn},
    {"get_text", "Destination/InternetCache/ExpireTime", nullptr, kUsual, kItsOwn},
    {"get_text", "NotFoundHTML", nullptr, kUsual, kItsOwn},

    // A command.
    {"HeapAlloc", "command", "extension", kCommand, kOutOfMemory},
    {"HeapAlloc", "command", "destination name", kCommand, kOutOfMemory},
    {"HeapAlloc", "command", "folder", kCommand, kOutOfMemory},     // that of an Open: what it opens
    {"HeapAlloc", "command", "file name", kCommand, kOutOfMemory},  // the same
    {"HeapAlloc", "command", "buffer", kCommand, kOutOfMemory},
    {"GetFullPathNameA", "command", nullptr, kCommand, kItsOwn},
    {"CreateDirectoryA", "command", nullptr, kCommand, kItsOwn},
    {"GetFileAttributesA", "command", "existence", kCommand, E_ACCESSDENIED},  // a protected file refuses the write
    {"GetFileAttributesA", "command", "protection", kCommand, kItsOwn},
    {"GetFileAttributesA", "command", "number", kCommand, kAlreadyExists},  // the file cannot be moved to a taken name
    {"GetFileAttributesA", "command", "clearing", kUsual | kCommand, kItsOwn},
    {"SetFileAttributesA", "command", nullptr, kUsual | kCommand, kItsOwn},
    {"MoveFileA", "command", nullptr, kCommand, kItsOwn},
    {"CreateFileA", "command", nullptr, kCommand, kItsOwn},
    {"GetFileTime", "command", nullptr, kCommand, kItsOwn},
    {"InternetOpenA", "command", nullptr, kCommand, kItsOwn},
    {"InternetOpenUrlA", "command", nullptr, kCommand, kItsOwn},
    {"InternetReadFile", "command", nullptr, kCommand, kItsOwn},
    {"ReadFile", "command", nullptr, kCommand, kItsOwn},
    {"WriteFile", "command", nullptr, kCommand, kItsOwn},
    {"SetFileTime", "command", nullptr, kCommand, kItsOwn},
    {"CloseHandle", "command", "destination", kCommand, kItsOwn},
    {"MultiByteToWideChar", "command", nullptr, kCommand, kOutOfMemory},
    {"SysAllocStringLen", "command", nullptr, kCommand, kOutOfMemory},
    {"ShellExecuteExA", "command", nullptr, kCommand, kItsOwn},

    // A command whose file goes into the Internet cache.
    {"CreateUrlCacheEntryA", "source copy", nullptr, kCommand, kItsOwn},
    {"HeapAlloc", "source copy", "cache file name", kCommand, E_INVALIDARG},
    {"HeapAlloc", "source copy", "buffer", kCommand, kOutOfMemory},
    {"InternetOpenA", "source copy", nullptr, kCommand, kItsOwn},
    {"InternetOpenUrlA", "source copy", nullptr, kCommand, kItsOwn},
    {"InternetReadFile", "source copy", nullptr, kCommand, kItsOwn},
    {"CreateFileA", "source copy", nullptr, kCommand, kItsOwn},
    {"WriteFile", "source copy", nullptr, kCommand, kItsOwn},
    {"SetFileTime", "source copy", nullptr, kCommand, kItsOwn},
    {"CloseHandle", "source copy", "source copy", kCommand, kItsOwn},
    {"CommitUrlCacheEntryA", "source copy", nullptr, kCommand, kItsOwn},
};

constexpr char kNobodyToTell[] = "there is no control that could tell, and the host gets the code";
constexpr char kLogName[] = "a log whose name cannot be converted goes by the default name";
constexpr char kAnyThread[] = "a thread of another apartment kind serves as well";
constexpr char kUrlPart[] = "a part of a URL that cannot be copied is not there, and this one is not needed";
constexpr char kFileReported[] = "the names of the file that was written are for an Open, which tells when it needs them";
constexpr char kNoLine[] = "the line is for documents that refer to the module's document type, and there are none";
constexpr char kComplete[] = "what was read is complete";
constexpr char kCacheTime[] = "an entry of the Internet cache has some time or other";
constexpr char kZone[] = "the conversion that every time ends with tells of one that is none";
constexpr char kExistence[] = "what the system tells nothing of is as good as absent";
constexpr char kLength[] = "an answer whose status or length is not known is taken as it comes";
constexpr char kSameRefusal[] = "a parser that refuses a document says no more than one that finds it invalid";
constexpr char kReason[] = "the document is refused without its line or its reason";

constexpr UntoldRow kUntoldRows[] = {
    {"HeapAlloc", "control", "factory", kNotMade, kNobodyToTell},
    {"HeapAlloc", "control", "control", kNotMade, kNobodyToTell},
    {"SysAllocString", "control", nullptr, kNotMade, kNobodyToTell},
    {"WideCharToMultiByte", nullptr, "log name", kUsual, kLogName},
    {"CoInitialize", nullptr, nullptr, kUsual, kAnyThread},
    {"HeapAlloc", "permissions", "folder", kUsual, kUrlPart},
    {"HeapAlloc", "permissions", "file name", kUsual, kUrlPart},
    {"HeapAlloc", "permissions", "extension", kUsual, kUrlPart},
    {"HeapAlloc", "permit URL", "folder", kUsual, kUrlPart},
    {"HeapAlloc", "permit URL", "file name", kUsual, kUrlPart},
    {"HeapAlloc", "run", "file name", kUsual, kUrlPart},
    {"HeapAlloc", "run", "extension", kUsual, kUrlPart},
    {"HeapAlloc", "Source", "extension", kUsual, kUrlPart},
    {"LocalAlloc", "run", nullptr, kUsual, kNoLine},

    {"CloseHandle", nullptr, "permit", kUsual, kComplete},
    {"CloseHandle", nullptr, "manifest", kUsual, kComplete},
    {"CloseHandle", nullptr, "source", kUsual, kComplete},
    {"CloseHandle", nullptr, "read", kUsual, kComplete},  // for its time
    {"InternetCloseHandle", nullptr, nullptr, kUsual, kComplete},
    {"HttpQueryInfoA", nullptr, nullptr, kUsual, kLength},
    {"SystemTimeToFileTime", "permit copy", nullptr, kUsual, kCacheTime},
    {"SystemTimeToFileTime", "manifest copy", nullptr, kUsual, kCacheTime},
    {"SystemTimeToFileTime", "source copy", nullptr, kUsual, kCacheTime},
    {"LocalFileTimeToFileTime", nullptr, nullptr, kUsual, kCacheTime},
    {"SystemTimeToFileTime", "Destination/Attributes/FileTime", "zone", kUsual, kZone},
    {"SystemTimeToFileTime", "Destination/InternetCache/ExpireTime", "zone", kUsual, kZone},

    {"load", nullptr, nullptr, kRefusedAnyway, kSameRefusal},
    {"get_parseError", nullptr, nullptr, kUsual, kReason},
    {"get_line", nullptr, nullptr, kUsual, kReason},
    {"get_reason", nullptr, nullptr, kUsual, kReason},
    {"WideCharToMultiByte", "manifest document", nullptr, kUsual, kReason},
    {"HeapAlloc", "manifest document", "reason", kUsual, kReason},
    {"CoCreateInstance", "manifest document", nullptr, kUsual, kReason},
    {"putContentHandler", nullptr, nullptr, kUsual, kReason},
    {"parseURL", nullptr, nullptr, kUsual, kReason},

    {"HeapAlloc", "command", "source text", kUsual, kFileReported},
    {"HeapAlloc", "command", "folder", kUsual, kFileReported},
    {"HeapAlloc", "command", "file name", kUsual, kFileReported},
    {"HeapAlloc", "source copy", "source text", kUsual, kFileReported},
    {"HeapAlloc", "source copy", "folder", kUsual, kFileReported},
    {"HeapAlloc", "source copy", "file name", kUsual, kFileReported},
    {"GetFileAttributesA", "command", "folder", kUsual, kExistence},
    {"GetFileAttributesA", "command", "existence", kUsual | kReplaced, kExistence},
    {"GetFileAttributesA", "command", "before a rename", kUsual, kExistence},
    {"GetFileAttributesA", "command", "number", kUsual, kExistence},
};

bool Fits(const char* pattern, const std::string& text) {
  if (!pattern)
    return true;
  const std::size_t length = std::strlen(pattern);
  if (length > 0 && pattern[length - 1] == '*')
    return text.compare(0, length - 1, pattern, length - 1) == 0;
  return text == pattern;
}

// The rows of the first step that fits, so that a general one behind it does not loosen a special one.
template <class Row, std::size_t count>
std::vector<const Row*> RowsOf(const Row (&rows)[count], const FallibleCall& call, const Situation& situation) {
  std::vector<const Row*> found;
  for (const Row& row : rows) {
    if (std::strcmp(row.function, call.function) != 0 || !Fits(row.step, situation.step) ||
        !Fits(row.subject, situation.subject))
      continue;
    if (!found.empty() && (!row.step || !found[0]->step || std::strcmp(row.step, found[0]->step) != 0))
      break;
    found.push_back(&row);
  }
  return found;
}

}  // namespace

std::vector<const ToldRow*> ToldRowsOf(const FallibleCall& call, const Situation& situation) {
  return RowsOf(kToldRows, call, situation);
}

std::vector<const UntoldRow*> UntoldRowsOf(const FallibleCall& call, const Situation& situation) {
  return RowsOf(kUntoldRows, call, situation);
}
