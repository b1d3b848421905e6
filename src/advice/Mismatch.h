#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "permissions/Permissions.h"
#include "permissions/SourceExtension.h"

// What keeps an entry from permitting.
enum class Mismatch {
  ClassDiffers,   // one is on the web, the other on this machine
  SchemeDiffers,  // http and https
  HostDiffers,
  CaseDiffers,  // the same but for the case of letters, which counts on the web
  PathDiffers,
  EntryLonger,  // the entry goes on where what is asked for ends
  ExtensionDiffers,
  DotInEntry,  // the entry begins with a dot, which no extension has
};

// "class-differs", "scheme-differs", ...
const char* NameOf(Mismatch mismatch);

// What keeps `entry` from permitting `candidate`; nothing when it permits it, which its Compare decides.
std::optional<Mismatch> FindMismatch(const CSourceURL& entry, const CSourceURL& candidate);
std::optional<Mismatch> FindMismatch(const CSourceExtension& entry, const CSourceExtension& candidate);
std::optional<Mismatch> FindMismatch(const CDestinationFolder& entry, const CDestinationFolder& candidate);

// How near an entry comes: by what differs first, then by the number of bytes that both begin with. The greater is the
// nearer.
using Nearness = std::pair<int, std::size_t>;

Nearness NearnessOf(Mismatch reason, const CSourceURL& entry, const CSourceURL& candidate);
Nearness NearnessOf(Mismatch reason, const CSourceExtension& entry, const CSourceExtension& candidate);
Nearness NearnessOf(Mismatch reason, const CDestinationFolder& entry, const CDestinationFolder& candidate);

// What differs, in a sentence for the reader.
std::string MessageOf(Mismatch reason, const CSourceURL& entry, const CSourceURL& candidate);
std::string MessageOf(Mismatch reason, const CSourceExtension& entry, const CSourceExtension& candidate);
std::string MessageOf(Mismatch reason, const CDestinationFolder& entry, const CDestinationFolder& candidate);
