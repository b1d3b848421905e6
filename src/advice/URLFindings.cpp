// What an entry for URLs permits beside what it seems to.

#include <array>
#include <cstring>
#include <memory>

#include "advice/Covering.h"
#include "advice/Document.h"
#include "advice/PermitFindings.h"
#include "advice/Words.h"
#include "common/Text.h"
#include "transfer/SourceURL.h"

namespace {

constexpr char kFileRoot[] = "file://";
constexpr char kOtherHost[] = ".example.net/";

const CSourceURL& URLOf(const CListItem* item) {
  return *static_cast<const CSourceURL*>(item);
}

bool IsBefore(const CListItem* item, const CListItem* other) {
  const CSourceURL& one = URLOf(item);
  const CSourceURL& two = URLOf(other);
  if (one.IsLocal() != two.IsLocal())
    return one.IsLocal();
  return one.IsLocal() ? IsBeforeNoCase(one.GetFolder(), two.GetFolder())
                       : std::strcmp(one.GetFolder(), two.GetFolder()) < 0;
}

// The shortest URL of a kind: an entry that permits it permits all of them.
struct WholeKind {
  WholeKind(const wchar_t* url, const char* kindWords) : shortest(url, SourceRole::Command, nullptr), words(kindWords) {}

  CSourceURL shortest;
  const char* words;
};

using WholeKinds = std::array<WholeKind, 4>;

WholeKinds AllKinds() {
  return {WholeKind(L"http://", "every address that begins with 'http:'"),
          WholeKind(L"https://", "every address that begins with 'https:'"),
          WholeKind(L"file://", "every file on this machine and every shared folder"),
          WholeKind(L"\\\\", "every shared folder of every server")};
}

// What an entry's folder is for the module: of a web URL its beginning, of a local one a path.
class Reach {
 public:
  explicit Reach(const CSourceURL& entryURL) : url(entryURL), folder(WideFromAnsi(entryURL.GetFolder())) {
    if (url.IsLocal())
      folder.erase(0, std::strlen(kFileRoot));
  }

  std::string Shown() const { return Quoted(Utf8(folder)); }
  const std::wstring& Folder() const { return folder; }

  // Whether it ends within the name of a server, or behind it.
  bool IsServer() const { return !url.IsLocal() && folder.find_first_of(L"/\\", Server()) == std::wstring::npos; }
  bool HasPort() const { return folder.find(L':', Server()) != std::wstring::npos; }

  // The beginning of something that the entry permits although nobody would think so, in words; empty when there is none.
  std::string Stranger() const {
    for (const std::wstring& candidate : Candidates()) {
      const CSourceURL corrected(candidate.c_str(), SourceRole::Command, nullptr);
      if (url.Compare(&corrected) == 0)
        return InWords(candidate);
    }
    return {};
  }

 private:
  // Where the server's name begins, behind a user's.
  std::size_t Server() const {
    const std::size_t slashes = folder.find(L"//");
    const std::size_t start = slashes == std::wstring::npos ? 0 : slashes + 2;
    const std::size_t end = folder.find_first_of(L"/\\", start);
    const std::size_t at = folder.substr(0, end).find_last_of(L'@');
    return at == std::wstring::npos || at < start ? start : at + 1;
  }

  std::vector<std::wstring> Candidates() const {
    if (url.IsLocal())
      return {folder + (folder.back() == L':' ? L"\\other\\" : L"-other\\")};
    if (!IsServer())
      return {folder + L"-other/"};
    // Behind a port no name can go on; but what stands before an '@' is no server's name any more.
    return {folder + (HasPort() ? L"@" : L"") + WideFromUtf8(kOtherHost)};
  }

  std::string InWords(const std::wstring& candidate) const {
    if (IsServer() && HasPort())
      return "an address that goes on with '@' and another server";
    return Quoted(Utf8(candidate));
  }

  const CSourceURL& url;
  std::wstring folder;
};

// One entry, and what is found about it.
class Examination {
 public:
  Examination(const PermitEntry& examinedEntry, const WholeKinds& wholeKinds, Findings& foundFindings)
      : entry(examinedEntry), url(URLOf(examinedEntry.item)), reach(url), kinds(wholeKinds), findings(foundFindings) {}

  void Perform(const Surroundings& surroundings) {
    const char* const whole = FindWholeKind();
    if (whole)
      Add(kURLEverything,
          std::string("This permits ") + whole + ". Name one server or one folder, with a separator at the end.");
    else if (url.GetFileName() && *url.GetFileName())
      AddNoSeparator();
    else if (reach.IsServer())
      AddNoBoundary();
    if (!url.IsLocal())
      ExamineAddress();
    else if (!whole)
      ExamineFolder(surroundings);
  }

 private:
  void Add(const FindingKind& kind, const std::string& message) { findings.push_back(FindingAbout(entry, kind, message)); }

  const char* FindWholeKind() const {
    for (const WholeKind& kind : kinds) {
      if (url.Compare(&kind.shortest) == 0)
        return kind.words;
    }
    return nullptr;
  }

  std::string AlsoPermits() const {
    const std::string stranger = reach.Stranger();
    return stranger.empty() ? std::string() : ", and with it also " + stranger;
  }

  void AddNoSeparator() {
    const FindingKind kind = {kURLNoSeparator.code, url.IsLocal() ? FindingLevel::Warning : kURLNoSeparator.level};
    Add(kind,
        "Without a separator at its end this names a file, and permits all that begins with the folder above, " +
            reach.Shown() + AlsoPermits() + ". If it is a folder, end it with '" + (url.IsLocal() ? "\\" : "/") + "'.");
  }

  void AddNoBoundary() {
    Add(kURLNoBoundary, "The name of a server is no boundary: this permits all that begins with " + reach.Shown() +
                            AlsoPermits() + ". Name a folder of the server as well.");
  }

  void ExamineAddress() {
    const char* const text = url.GetURL();
    if (BeginsWithNoCase(text, "http:"))
      Add(kURLPlainHTTP, "What comes from here can be changed on its way by anybody in between. Use 'https:'.");
    if (HasUpperCaseServer())
      Add(kURLUpperCaseHost,
          "Case counts: who writes this server in lower case, as browsers do, is refused. Write the server in lower case.");
    if (entry.text.find('?') != std::string::npos)
      Add(kURLQuery,
          "A query does not count in an entry, or counts as the name of a folder when a separator is in it. Leave it "
          "out, and end the entry with '/'.");
  }

  bool HasUpperCaseServer() const {
    const std::string text = WithoutCredentials(url.GetURL());
    const std::size_t slashes = text.find("//");
    if (slashes == std::string::npos)
      return false;
    const std::size_t end = text.find_first_of("/\\?#", slashes + 2);
    for (std::size_t i = slashes + 2; i < std::min(end, text.size()); ++i) {
      if (text[i] >= 'A' && text[i] <= 'Z')
        return true;
    }
    return false;
  }

  void ExamineFolder(const Surroundings& surroundings) {
    const std::string writer = surroundings.WriterOf(reach.Folder());
    if (!writer.empty())
      Add(kURLUserWritable, Quoted(writer) + " may write into " + reach.Shown() +
                                ", and so bring any file here. Let only administrators and the system write there.");
  }

  const PermitEntry& entry;
  const CSourceURL& url;
  Reach reach;
  const WholeKinds& kinds;
  Findings& findings;
};

}  // namespace

void AddURLFindings(const PermitDocument& permit, const Surroundings& surroundings, Findings& findings) {
  const std::vector<const PermitEntry*> entries = TakenEntries(permit, EntryKind::URL);
  const WholeKinds kinds = AllKinds();
  for (const PermitEntry* const entry : entries)
    Examination(*entry, kinds, findings).Perform(surroundings);
  for (const CoveredEntry& covered : FindCovered(entries, IsBefore))
    findings.push_back(CoveredFinding(kURLCovered, *covered.entry, *covered.by));
}
