// What an entry for destinations permits on this machine.

#include <algorithm>
#include <map>
#include <memory>

#include "advice/Covering.h"
#include "advice/PermitFindings.h"
#include "advice/Words.h"
#include "transfer/DestinationFolder.h"

namespace {

const CDestinationFolder& FolderOf(const CListItem* item) {
  return *static_cast<const CDestinationFolder*>(item);
}

bool IsBefore(const CListItem* item, const CListItem* other) {
  return IsBeforeNoCase(FolderOf(item).GetPath(), FolderOf(other).GetPath());
}

// A folder of the machine as a destination, by which entries are asked whether they reach it.
struct Place {
  std::unique_ptr<CDestinationFolder> folder;
  std::string words;
};

using Places = std::vector<Place>;

// The separator at the end stays: the module drops one of two.
void AddPlace(const NamedFolder& named, Places& places) {
  const std::wstring inside = named.path.back() == L'\\' ? named.path : named.path + L"\\\\";
  HRESULT hr = S_OK;
  auto folder = std::make_unique<CDestinationFolder>(inside.c_str(), &hr);
  if (SUCCEEDED(hr))
    places.push_back({std::move(folder), named.words + " " + Quoted(Utf8(named.path))});
}

Places PlacesOf(const std::vector<NamedFolder>& folders) {
  Places places;
  for (const NamedFolder& named : folders) {
    if (!named.path.empty())
      AddPlace(named, places);
  }
  return places;
}

std::vector<NamedFolder> Guarded(const Surroundings& surroundings) {
  std::vector<NamedFolder> folders;
  for (wchar_t letter = L'A'; letter <= L'Z'; ++letter)
    folders.push_back({std::wstring(1, letter) + L":\\", "the whole drive"});
  folders.push_back({L"\\\\", "every shared folder of every server:"});
  for (const NamedFolder& named : surroundings.GuardedFolders())
    folders.push_back(named);
  return folders;
}

bool IsDots(const std::string& part) {
  return part == "." || part == "..";
}

bool HasDots(const std::string& path) {
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t end = std::min(path.find_first_of("\\/", start), path.size());
    if (IsDots(path.substr(start, end - start)))
      return true;
    start = end + 1;
  }
  return false;
}

class Examiner {
 public:
  Examiner(const Surroundings& machine, Findings& foundFindings)
      : surroundings(machine),
        guarded(PlacesOf(Guarded(machine))),
        startup(PlacesOf(machine.StartupFolders())),
        findings(foundFindings) {}

  void Examine(const PermitEntry& entry) {
    if (!entry.item) {
      ExamineUnresolved(entry);
      return;
    }
    const CDestinationFolder& folder = FolderOf(entry.item);
    if (HasDots(entry.text))
      ExamineDots(entry, folder);
    if (ExamineReach(entry, folder, guarded, kFolderEverything,
                     ". A manifest could replace what others rely on there. Name a folder of its own."))
      return;
    ExamineReach(
        entry, folder, startup, kFolderStartup, ", from which programs start by themselves. Name a folder beside it.");
    ExamineBoundary(entry, folder);
  }

 private:
  void Add(const PermitEntry& entry, const FindingKind& kind, const std::string& message) {
    findings.push_back(FindingAbout(entry, kind, message));
  }

  static std::string PathOf(const CDestinationFolder& folder) { return Quoted(Utf8FromAnsi(folder.GetPath())); }

  void ExamineUnresolved(const PermitEntry& entry) {
    const int first = unresolved.emplace(entry.element, entry.line).first->second;
    if (first == entry.line)
      Add(entry, kFolderUnresolved,
          "This folder cannot be found out on this machine, or its path is too long. The entry permits nothing, and neither "
          "do "
          "those of the same name behind it.");
    else
      Add(entry, kFolderUnresolved,
          "This entry permits nothing, because the one of the same name on line " + std::to_string(first) +
              " cannot be resolved. Mend that one.");
  }

  // A `Path` stays as it is written. In other kinds dots are resolved, unless their text is not used at all.
  void ExamineDots(const PermitEntry& entry, const CDestinationFolder& folder) {
    const CDestinationFolder plain(entry.folderKind, nullptr);
    if (entry.folderKind == FolderKind::Path)
      Add(entry, kFolderDots,
          "Dots in a path are not resolved: this permits only what is written with the same dots. Write the "
          "path without them.");
    else if (plain.GetPath() && std::strcmp(plain.GetPath(), folder.GetPath()) != 0)
      Add(entry, kFolderDots, "The dots lead to " + PathOf(folder) + ". If that is meant, write it as a 'Path'.");
  }

  bool ExamineReach(const PermitEntry& entry, const CDestinationFolder& folder, const Places& places,
                    const FindingKind& kind, const char* advice) {
    const auto reached = std::find_if(
        places.begin(), places.end(), [&folder](const Place& place) { return folder.Compare(place.folder.get()) == 0; });
    if (reached == places.end())
      return false;
    const Place& place = *reached;
    Add(entry, kind, PathOf(folder) + " reaches " + place.words + advice);
    return true;
  }

  // A folder of the system's has its neighbours from the system; one that was written down can be chosen better.
  void ExamineBoundary(const PermitEntry& entry, const CDestinationFolder& folder) {
    const std::wstring path = WideFromAnsi(folder.GetPath());
    if (path.empty() || path.back() == L'\\' || path.back() == L'/')
      return;
    const std::string neighbour = surroundings.NeighbourOf(path);
    if (!neighbour.empty())
      Add(entry, kFolderNoBoundary,
          "The entry is a beginning without a boundary: it permits the folder " + Quoted(neighbour) + " beside " +
              PathOf(folder) + " too. Choose a name that no other folder begins with.");
    else if (!entry.text.empty())
      Add(entry, kFolderNoBoundary,
          "The entry is a beginning without a boundary: it permits every folder whose path begins with " + PathOf(folder) +
              ", also one beside it. There is none at the moment.");
  }

  const Surroundings& surroundings;
  Places guarded;
  Places startup;
  std::map<std::string, int> unresolved;  // the line of the first of each element
  Findings& findings;
};

}  // namespace

void AddFolderFindings(const PermitDocument& permit, const Surroundings& surroundings, Findings& findings) {
  Examiner examiner(surroundings, findings);
  for (const PermitEntry& entry : permit.Entries()) {
    if (entry.kind == EntryKind::Folder)
      examiner.Examine(entry);
  }
  for (const CoveredEntry& covered : FindCovered(TakenEntries(permit, EntryKind::Folder), IsBefore))
    findings.push_back(CoveredFinding(kFolderCovered, *covered.entry, *covered.by));
}
