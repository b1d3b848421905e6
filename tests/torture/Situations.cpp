#include "torture/Situations.h"

#include <algorithm>
#include <map>

namespace {

using Names = std::vector<const char*>;

// What is allocated in a step, in that order. A step that begins anew with each element begins anew here as well.
const Names kUrlParts = {"object", "text", "corrected URL", "folder", "file name", "extension"};
const Names kFolderParts = {"object", "text", "path"};
const std::map<std::string, Names> kAllocations = {
    {"control", {"factory", "control", "executer"}},
    {"permissions", {"object", "object", "text", "corrected URL", "folder", "file name", "extension", "object", "path"}},
    {"permit copy", {"cache file name", "buffer"}},
    {"permit document", {"object"}},
    {"permit URL", kUrlParts},
    {"permit Extension", {"object", "text", "destination permissions"}},
    {"permit InternetCache", kFolderParts},
    {"permit Temp", kFolderParts},
    {"permit Path", kFolderParts},
    {"run",
     {"object", "text", "corrected URL", "folder", "file name", "extension",  // the question
      "object",                                                               // the manifest
      "object", "text", "corrected URL", "folder", "file name", "extension",  // its URL
      "object", "path"}},                                                     // the cache's folder
    {"manifest copy", {"cache file name", "buffer"}},
    {"manifest document", {"reason"}},
    {"Copy", {"object"}},
    {"Open", {"object"}},
    {"Source", kUrlParts},
    {"Destination/Path", kFolderParts},
    {"Destination/Cookie", {"object", "path"}},
    {"Destination/FileName", {"text"}},
    {"Destination/Attributes/FileTime", {"text", "text", "zone"}},
    {"Destination/InternetCache/ExpireTime", {"text", "text", "zone"}},
    {"NotFoundHTML", {"text"}},
    {"source copy", {"cache file name", "source text", "folder", "file name", "buffer"}},
};

// While a command is carried out, its allocations come in groups without any other call between them.
const std::map<std::size_t, Names> kGroupsOfCommand = {
    {1, {"buffer"}},
    {2, {"extension", "extension"}},
    {3, {"source text", "folder", "file name"}},
    {5, {"source text", "folder", "file name", "extension", "extension"}},  // of the next command
};

class Walk {
 public:
  explicit Walk(const std::vector<FallibleCall>& allCalls) : calls(allCalls) {}

  Situation Take(std::size_t newNumber) {
    number = newNumber;
    Enter();
    ++counts[Call().function];
    Situation situation = {step, Subject(), element};
    Leave();
    previous = Call().function;
    return situation;
  }

 private:
  const FallibleCall& Call() const { return calls[number]; }
  bool Is(const char* function) const { return Call().function == std::string(function); }

  void Begin(const std::string& newStep) {
    step = newStep;
    counts.clear();
  }

  // The steps that begin with this call.
  void Enter() {
    if (Is("CoInitialize"))
      Begin("permissions");
    else if (Is("CreateUrlCacheEntryA"))
      Begin(Call().object);
    else if (Is("LocalAlloc") && step != "run")
      Begin("run");
    else if (Is("get_item") && !element.empty())
      Begin(element);
    else if (Is("get_item") && IsPermissionRead())
      Begin(step);
    else if (Is("HeapAlloc") && (step == "browser" || (step == "Open" && previous == "reset")))
      Begin("command");
    else if (!Call().name.empty())
      EnterElement(Call().name);
  }

  bool IsPermissionRead() const { return step.find("permit ") == 0 && step != "permit copy" && step != "permit document"; }

  void EnterElement(const std::string& name) {
    if (IsPermissionRead() || (step == "permit document" && name == "Source"))
      return EnterNamed("permit " + name);
    if (step == "manifest document" ? name != "Copy" : element.empty() || step == "command" || step == "source copy")
      return;
    if (name == "Copy" || name == "Open")
      element = name;
    EnterNamed(name);
  }

  // The name comes twice: when it is made into a string, and when the document is asked for it.
  void EnterNamed(const std::string& newStep) {
    if (newStep != step)
      Begin(newStep);
  }

  // Those that begin behind it.
  void Leave() {
    if (Is("CommitUrlCacheEntryA"))
      Begin(Call().object == "permit copy"     ? "permit document"
            : Call().object == "manifest copy" ? "manifest document"
                                               : "command");
  }

  std::string Subject() {
    if (Is("HeapAlloc"))
      return step == "command" ? InGroup() : Named(kAllocations, counts["HeapAlloc"]);
    if (Is("WideCharToMultiByte") && (step == "control" || (step == "run" && counts["WideCharToMultiByte"] == 1)))
      return "log name";
    if (step == "permit copy" || step == "manifest copy")
      return OfDocument();
    if (Is("SystemTimeToFileTime"))
      return counts["SystemTimeToFileTime"] == 1 ? "zone" : "end";
    if (Is("CloseHandle"))
      return previous == "GetFileTime" ? "read" : Call().object;
    return Is("GetFileAttributesA") ? OfAttributes() : "";
  }

  // A document's declaration is written first, by itself.
  std::string OfDocument() {
    if (Is("ReadFile") || Is("InternetReadFile"))
      return counts["WriteFile"] == 0 ? "declaration" : "rest";
    if (Is("WriteFile"))
      return counts["WriteFile"] == 1 ? "declaration" : "rest";
    return Is("CloseHandle") ? Call().object : "";
  }

  std::string Named(const std::map<std::string, Names>& names, std::size_t count) const {
    const auto found = names.find(step);
    return found == names.end() || count > found->second.size() ? "unknown" : found->second[count - 1];
  }

  // The number of the nearest call before or behind this one that is not of the log; that of this call when there is none.
  std::size_t Next(std::size_t from) const {
    for (std::size_t next = from + 1; next < calls.size(); ++next) {
      if (calls[next].object != "log")
        return next;
    }
    return from;
  }

  bool IsAllocation(std::size_t which) const { return calls[which].function == std::string("HeapAlloc"); }

  std::string InGroup() {
    if (previous != "HeapAlloc")
      groupPosition = 0;
    std::size_t size = groupPosition + 1;
    std::size_t last = number;
    for (std::size_t next = Next(last); next != last && IsAllocation(next); next = Next(next)) {
      ++size;
      last = next;
    }
    ++groupPosition;
    const bool isName = size == 1 && calls[Next(last)].function == std::string("GetFileAttributesA");
    const auto found = kGroupsOfCommand.find(size);
    if (isName)
      return "destination name";
    return found == kGroupsOfCommand.end() ? "unknown" : found->second[groupPosition - 1];
  }

  // The system is asked for the attributes of the folders down to the destination, of the file, of the file once more by the
  // policy, and of the numbered names of a rename.
  std::string OfAttributes() {
    const std::string& name = Call().name;
    const FallibleCall& next = calls[Next(number)];
    const std::string extension = name.size() > 4 ? name.substr(name.size() - 4) : "";
    if (extension.find(".00") == 0)
      return "number";
    if (extension != ".txt")
      return "folder";
    if (asked != name) {
      asked = name;
      return "existence";
    }
    if (next.function == std::string("SetFileAttributesA"))
      return "clearing";
    return next.function == Call().function && next.name != name ? "before a rename" : "protection";
  }

  const std::vector<FallibleCall>& calls;
  std::size_t number = 0;
  std::size_t groupPosition = 0;
  std::string step = "control";
  std::string element;
  std::string previous;
  std::string asked;
  std::map<std::string, std::size_t> counts;
};

}  // namespace

std::vector<Situation> SituationsOf(const std::vector<FallibleCall>& calls) {
  std::vector<Situation> all(calls.size());
  Walk walk(calls);
  for (std::size_t number = 0; number < calls.size(); ++number) {
    if (calls[number].object != "log")
      all[number] = walk.Take(number);
  }
  return all;
}
