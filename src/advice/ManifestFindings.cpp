#include "advice/ManifestFindings.h"

#include "common/Windows.h"

#include <shlwapi.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <unordered_map>

#include "advice/Document.h"
#include "advice/FileNames.h"
#include "advice/FindingKind.h"
#include "advice/InvalidDocument.h"
#include "advice/KeptLog.h"
#include "advice/PermitDocument.h"
#include "advice/TimeReading.h"
#include "advice/Words.h"
#include "transfer/Transfer.h"

namespace {

std::string Quoted(const std::string& text) {
  return "'" + WithoutCredentials(text) + "'";
}

std::string TextOf(const Element* element) {
  return element ? element->TrimmedText() : std::string();
}

// The element at a path of names; null when there is none.
const Element* Find(const Element& element, std::initializer_list<const char*> names) {
  const Element* found = &element;
  for (const char* const name : names)
    found = found ? found->Child(name) : nullptr;
  return found;
}

// Paths that differ only in case name one file.
std::wstring InUpperCase(std::wstring path) {
  CharUpperBuffW(path.data(), static_cast<DWORD>(path.size()));
  return path;
}

std::wstring FirstName(const std::wstring& path) {
  return path.substr(0, path.find_first_of(L"\\/"));
}

// The first name of a path of which `isSuch` says so; empty when there is none.
template <class IsSuch>
std::wstring FindName(const std::wstring& path, IsSuch isSuch) {
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find_first_of(L"\\/", start), path.size());
    std::wstring name = path.substr(start, end - start);
    if (isSuch(name))
      return name;
    start = end + 1;
  }
  return {};
}

// The user in whose profile a path lies; empty when it lies in none, or in the one that all share.
std::wstring UserOf(const std::wstring& path, const std::wstring& profiles) {
  if (profiles.empty() || PathIsRelativeW(path.c_str()))
    return {};
  const std::wstring full = FullPath(path);
  const std::wstring above = profiles + L"\\";
  if (InUpperCase(full.substr(0, above.size())) != InUpperCase(above))
    return {};
  const std::wstring user = FirstName(full.substr(above.size()));
  const bool isShared = InUpperCase(user) == L"PUBLIC" || InUpperCase(user) == L"ALL USERS";
  return isShared ? std::wstring() : user;
}

// The line of the first command that writes a file.
using Writers = std::unordered_map<std::wstring, int>;

// One command, and what is found about it.
class Examination {
 public:
  Examination(const ManifestCommand& examined, const std::wstring& profilesFolder, Findings& foundFindings)
      : command(*examined.command), element(*examined.element), profiles(profilesFolder), findings(foundFindings) {}

  void Perform(Writers& writers) {
    if (!command.GetSource() || !command.GetDestination())
      return;
    ExamineCharacters();
    ExamineSource();
    ExamineFileName();
    ExamineNames();
    ExamineTime();
    ExamineUser();
    ExamineDestination(writers);
  }

 private:
  void Add(const FindingKind& kind, const Element* place, const std::string& message) {
    const int line = place ? place->line : element.line;
    findings.push_back({kind.level, kind.code, line, WithoutCredentials(TextOf(element.Child("Source"))), message});
  }

  bool IsStore() const { return command.GetDestinationKind() == FolderKind::InternetCache; }

  std::string SourceName() const {
    const char* const name = command.GetSource()->GetFileName();
    return name ? name : "";
  }

  std::string ShownSourceName() const { return Quoted(Utf8FromAnsi(SourceName().c_str())); }

  // What the module makes of such a text is another one, with question marks in it.
  void ExamineCharacters() {
    for (const Element* const place :
         {element.Child("Source"), FolderElement(), Find(element, {"Destination", "FileName"})}) {
      if (place && !IsInCodePage(place->text))
        Add(kCharactersLost, place,
            "This has characters that the code page of this machine lacks, and the module reads others in their place. "
            "Use a name without them.");
    }
  }

  void ExamineSource() {
    if (SourceName().empty())
      Add(kSourceWithoutName, element.Child("Source"),
          "The source names no file, and so the command would write to the folder itself and fail. "
          "Let the source end with a file name.");
    if (!command.GetSource()->IsLocal())
      ExamineAddress(command.GetSource()->GetURL(), element.Child("Source"));
  }

  void ExamineAddress(const char* url, const Element* source) {
    if (BeginsWithNoCase(url, "http:"))
      Add(kSourcePlainHTTP, source, "What comes from here can be changed on its way by anybody in between. Use 'https:'.");
    if (TextOf(source).find('?') != std::string::npos && !SourceName().empty())
      Add(kSourceQueryName, source,
          "The query gives the file no name: it is stored as " + ShownSourceName() +
              ". Let the server offer it under an address that ends with its name.");
    if (!command.GetNotFoundText() || !*command.GetNotFoundText())
      Add(kNoNotFoundText, nullptr,
          "A server that answers a wrong address with a page and with success has its page stored as the "
          "file. Give a text of that page as 'NotFoundHTML'.");
  }

  // A name that differs in case only is the same file's.
  void ExamineFileName() {
    const Element* const fileName = Find(element, {"Destination", "FileName"});
    const std::wstring given = WideFromAnsi(command.GetFileName());
    if (TextOf(fileName).empty() || InUpperCase(given) == InUpperCase(WideFromAnsi(SourceName().c_str())))
      return;
    Add(kFileNameMisleads, fileName,
        "'FileName' does not rename the file, which is stored as " + ShownSourceName() + ": only the extension of " +
            Quoted(Utf8(given)) + " is checked. Let the source have the name, and remove 'FileName'.");
  }

  void ExamineNames() {
    if (IsStore())
      return;
    ExamineName(element.Child("Source"), WideFromAnsi(SourceName().c_str()));
    const std::wstring path = WideFromAnsi(command.GetDestination()->GetPath());
    ExamineName(FolderElement(), path.substr(path.find(L':') + 1));  // all of it without a drive
  }

  void ExamineName(const Element* place, const std::wstring& path) {
    const std::wstring device = FindName(path, IsDeviceName);
    if (!device.empty())
      Add(kDeviceName, place,
          Quoted(Utf8(device)) +
              " is the name of a device in every folder and with every extension. Nothing "
              "can be stored under it: choose another name.");
    const std::wstring ending = FindName(path, EndsInDot);
    if (!ending.empty())
      Add(kNameEndsInDot, place,
          "The system drops the dots and blanks at the end of " + Quoted(Utf8(ending)) +
              ": the name on the disk, and its extension, are not those that are checked. Choose another name.");
  }

  // The element that names the folder; null where another one has taken its place.
  const Element* FolderElement() const {
    return Find(element, {"Destination", ElementNameOf(command.GetDestinationKind())});
  }

  void ExamineTime() {
    const Element* const fileTime = Find(element, {"Destination", "Attributes", "FileTime"});
    if (!fileTime)
      return;
    const TimeReading reading = ReadTime(fileTime->TrimmedText());
    if (reading.verdict == TimeReading::Verdict::Refused)
      Add(kTimeRefused, fileTime,
          Quoted(fileTime->TrimmedText()) + " is no time for the module, which takes " +
              (reading.taken.empty() ? "none" : Quoted(reading.taken)) + ". Write it as in 2026-06-25T15:45:00Z.");
    if (reading.verdict == TimeReading::Verdict::Shifted)
      Add(kTimeShifted, fileTime,
          Quoted(fileTime->TrimmedText()) + " becomes " + Quoted(reading.taken) +
              (reading.meant.empty() ? "" : ", and not " + Quoted(reading.meant)) +
              ". Write it in UTC, as in 2026-06-25T15:45:00Z.");
  }

  void ExamineUser() {
    if (command.GetDestinationKind() != FolderKind::Path)
      return;
    const std::wstring user = UserOf(WideFromAnsi(command.GetDestination()->GetPath()), profiles);
    if (!user.empty())
      Add(kPathOfOneUser, FolderElement(),
          "This path lies in the profile of " + Quoted(Utf8(user)) +
              ", and others do not have it. Use 'LocalVantorData', 'Personal' or 'Temp'.");
  }

  void ExamineDestination(Writers& writers) {
    if (IsStore())
      return;
    OwnedText file;
    if (FAILED(command.GetDestination()->GetDestinationFile(command.GetSource(), &file)))
      return;
    const std::wstring path = FullPath(WideFromAnsi(file.get()));
    const auto [writer, isFirst] = writers.emplace(InUpperCase(path), element.line);
    if (!isFirst)
      Add(kDestinationTwice, nullptr,
          "The command on line " + std::to_string(writer->second) + " writes " + Quoted(Utf8(path)) +
              " too. Give one of the two another name or folder.");
  }

  const CCopyCommand& command;
  const Element& element;
  const std::wstring& profiles;
  Findings& findings;
};

// A manifest with cookies is refused as a whole, and has no commands to be examined.
void AddCookies(const Element& root, Findings& findings) {
  for (const Element& element : root.children) {
    const Element* const cookie = Find(element, {"Destination", "Cookie"});
    if (cookie)
      findings.push_back({kCookieNeverPermitted.level, kCookieNeverPermitted.code, cookie->line,
                          WithoutCredentials(TextOf(element.Child("Source"))),
                          "No permission file can permit a cookie, and no manifest can have one. Remove the command."});
  }
}

}  // namespace

Findings FindingsOf(const ManifestDocument& manifest, const Surroundings& surroundings) {
  const KeptLog log;
  Findings findings;
  if (!manifest.IsUsable())
    findings.push_back(
        InvalidFinding({manifest.Text(), manifest.Bytes(), kTransferManifest, manifest.Code(), manifest.Complaint()}));
  AddCookies(manifest.Text().root, findings);
  const std::wstring profiles = surroundings.ProfilesFolder();
  Writers writers;
  for (const ManifestCommand& command : manifest.Commands())
    Examination(command, profiles, findings).Perform(writers);
  std::stable_sort(
      findings.begin(), findings.end(), [](const Finding& one, const Finding& other) { return one.line < other.line; });
  return findings;
}
