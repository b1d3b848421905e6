#include "advice/Mismatch.h"

#include <algorithm>
#include <cstring>

#include "advice/Words.h"
#include "common/PathText.h"

namespace {

// A web URL's folder, taken apart: "http://host:80/a/b" is the scheme "http:", the host "host:80" and the path "/a/b". A
// folder that ends before one of these has an empty one.
struct WebParts {
  explicit WebParts(const char* folder) {
    const std::string text = folder;
    const std::size_t schemeEnd = text.find(':') + 1;
    scheme = text.substr(0, schemeEnd);
    const bool hasSlashes = text.compare(schemeEnd, 2, "//") == 0;
    const std::size_t hostStart = schemeEnd + (hasSlashes ? 2 : 0);
    const std::size_t pathStart = std::min(text.find_first_of("/\\", hostStart), text.size());
    host = text.substr(std::min(hostStart, text.size()), pathStart - std::min(hostStart, pathStart));
    path = text.substr(pathStart);
  }

  std::string scheme;
  std::string host;
  std::string path;
};

std::size_t CommonLength(const char* a, const char* b) {
  std::size_t length = 0;
  while (a[length] && a[length] == b[length])
    ++length;
  return length;
}

bool EqualsNoCase(const char* a, const char* b, std::size_t length) {
  return CompareNoCase(a, b, length) == 0;
}

// What a web entry's folder differs in from a candidate's, which does not begin with it.
Mismatch FindWebMismatch(const char* entry, const char* candidate) {
  const std::size_t entryLength = std::strlen(entry);
  const std::size_t candidateLength = std::strlen(candidate);
  if (candidateLength >= entryLength && EqualsNoCase(entry, candidate, entryLength))
    return Mismatch::CaseDiffers;
  if (candidateLength < entryLength && std::strncmp(entry, candidate, candidateLength) == 0)
    return Mismatch::EntryLonger;
  const WebParts entryParts(entry);
  const WebParts candidateParts(candidate);
  if (entryParts.scheme != candidateParts.scheme)
    return Mismatch::SchemeDiffers;
  return entryParts.host == candidateParts.host ? Mismatch::PathDiffers : Mismatch::HostDiffers;
}

// The same for folders and files of this machine, whose case does not count.
Mismatch FindLocalMismatch(const char* entry, const char* candidate) {
  const std::size_t candidateLength = std::strlen(candidate);
  return candidateLength < std::strlen(entry) && EqualsNoCase(entry, candidate, candidateLength)
             ? Mismatch::EntryLonger
             : Mismatch::PathDiffers;
}

const char* TextOf(const char* text) {
  return text ? text : "";
}

// The nearer the higher: what an administrator most likely meant.
int RankOf(Mismatch reason) {
  switch (reason) {
    case Mismatch::CaseDiffers:
    case Mismatch::DotInEntry:
      return 5;
    case Mismatch::EntryLonger:
      return 4;
    case Mismatch::PathDiffers:
      return 3;
    case Mismatch::SchemeDiffers:
      return 2;
    case Mismatch::HostDiffers:
    case Mismatch::ExtensionDiffers:
      return 1;
    case Mismatch::ClassDiffers:
      break;
  }
  return 0;
}

std::string Quoted(const char* ansi) {
  return "'" + WithoutCredentials(Utf8FromAnsi(ansi)) + "'";
}

}  // namespace

const char* NameOf(Mismatch mismatch) {
  switch (mismatch) {
    case Mismatch::ClassDiffers:
      return "class-differs";
    case Mismatch::SchemeDiffers:
      return "scheme-differs";
    case Mismatch::HostDiffers:
      return "host-differs";
    case Mismatch::CaseDiffers:
      return "case-differs";
    case Mismatch::PathDiffers:
      return "path-differs";
    case Mismatch::EntryLonger:
      return "entry-longer";
    case Mismatch::ExtensionDiffers:
      return "extension-differs";
    case Mismatch::DotInEntry:
      break;
  }
  return "dot-in-entry";
}

std::optional<Mismatch> FindMismatch(const CSourceURL& entry, const CSourceURL& candidate) {
  if (entry.Compare(&candidate) == 0)
    return std::nullopt;
  if (entry.IsLocal() != candidate.IsLocal())
    return Mismatch::ClassDiffers;
  const char* const entryFolder = TextOf(entry.GetFolder());
  const char* const folder = TextOf(candidate.GetFolder());
  return entry.IsLocal() ? FindLocalMismatch(entryFolder, folder) : FindWebMismatch(entryFolder, folder);
}

std::optional<Mismatch> FindMismatch(const CSourceExtension& entry, const CSourceExtension& candidate) {
  if (entry.Compare(&candidate) == 0)
    return std::nullopt;
  const char* const text = TextOf(entry.GetText());
  const char* const extension = TextOf(candidate.GetText());
  const bool isDotted = text[0] == '.' && std::strlen(text + 1) == std::strlen(extension) &&
                        EqualsNoCase(text + 1, extension, std::strlen(extension));
  return isDotted ? Mismatch::DotInEntry : Mismatch::ExtensionDiffers;
}

std::optional<Mismatch> FindMismatch(const CDestinationFolder& entry, const CDestinationFolder& candidate) {
  if (entry.Compare(&candidate) == 0)
    return std::nullopt;
  return FindLocalMismatch(TextOf(entry.GetPath()), TextOf(candidate.GetPath()));
}

// An entry that differs in the scheme alone is nearer than one of the same host and another path.
Nearness NearnessOf(Mismatch reason, const CSourceURL& entry, const CSourceURL& candidate) {
  const char* const entryFolder = TextOf(entry.GetFolder());
  const char* const folder = TextOf(candidate.GetFolder());
  if (reason != Mismatch::SchemeDiffers)
    return {RankOf(reason), CommonLength(entryFolder, folder)};
  const WebParts entryParts(entryFolder);
  const WebParts parts(folder);
  const std::string entryRest = entryParts.host + entryParts.path;
  const std::string rest = parts.host + parts.path;
  const bool isSchemeAll = rest.compare(0, entryRest.size(), entryRest) == 0;
  const int rank = isSchemeAll                     ? RankOf(Mismatch::CaseDiffers)
                   : entryParts.host == parts.host ? RankOf(reason)
                                                   : RankOf(Mismatch::HostDiffers);
  return {rank, CommonLength(entryRest.c_str(), rest.c_str())};
}

Nearness NearnessOf(Mismatch reason, const CSourceExtension& entry, const CSourceExtension& candidate) {
  return {RankOf(reason), CommonLength(TextOf(entry.GetText()), TextOf(candidate.GetText()))};
}

Nearness NearnessOf(Mismatch reason, const CDestinationFolder& entry, const CDestinationFolder& candidate) {
  return {RankOf(reason), CommonLength(TextOf(entry.GetPath()), TextOf(candidate.GetPath()))};
}

std::string MessageOf(Mismatch reason, const CSourceURL& entry, const CSourceURL& candidate) {
  const char* const folder = TextOf(entry.GetFolder());
  switch (reason) {
    case Mismatch::ClassDiffers:
      return entry.IsLocal() ? "The entry is on this machine, and what is asked for is on the web."
                             : "The entry is on the web, and what is asked for is on this machine.";
    case Mismatch::SchemeDiffers:
      return "The entry permits " + WebParts(folder).scheme + "// and not " +
             WebParts(TextOf(candidate.GetFolder())).scheme + "//.";
    case Mismatch::HostDiffers:
      return "The entry permits the host '" +
             WithoutCredentials("x://" + Utf8FromAnsi(WebParts(folder).host.c_str())).substr(4) + "'.";
    case Mismatch::CaseDiffers:
      return "Only the case of letters differs, and it counts on the web: the entry permits " + Quoted(folder) + ".";
    case Mismatch::EntryLonger:
      return "The entry is longer: it permits only what begins with " + Quoted(folder) + ".";
    default:
      return "The entry permits what begins with " + Quoted(folder) + ".";
  }
}

std::string MessageOf(Mismatch reason, const CSourceExtension& entry, const CSourceExtension& /*candidate*/) {
  return reason == Mismatch::DotInEntry ? "The entry begins with a dot, which no extension has: write it without."
                                        : "The entry permits the extension " + Quoted(TextOf(entry.GetText())) + ".";
}

std::string MessageOf(Mismatch reason, const CDestinationFolder& entry, const CDestinationFolder& /*candidate*/) {
  const std::string folder = Quoted(TextOf(entry.GetPath()));
  return reason == Mismatch::EntryLonger ? "The entry is longer: it permits only what begins with " + folder + "."
                                         : "The entry permits what begins with " + folder + ".";
}
