#include "transfer/DocumentType.h"

#include <cstring>

#include "common/Handles.h"

namespace {

constexpr char kManifestFormat[] = "\r\n<!DOCTYPE VantorManifest SYSTEM \"file://%s\\manifest.dtd\">";
constexpr char kPermitFormat[] = "\r\n<!DOCTYPE VantorPermissions SYSTEM \"file://%s\\permit.dtd\">";

// Room for the fixed text of each and the terminator, on top of the folder.
constexpr std::size_t kManifestRoom = 64;
constexpr std::size_t kPermitRoom = 65;

struct SystemLines {
  LocalText manifest;
  LocalText permit;
};

SystemLines lines;

LocalText Build(const char* format, const char* folder, std::size_t room) {
  LocalText line(static_cast<char*>(LocalAlloc(LPTR, std::strlen(folder) + room)));
  if (line)
    wsprintfA(line.Get(), format, folder);
  return line;
}

}  // namespace

void BuildSystemLines(const char* folder) {
  if (!folder || !*folder)
    return;
  if (!lines.manifest)
    lines.manifest = Build(kManifestFormat, folder, kManifestRoom);
  if (!lines.permit)
    lines.permit = Build(kPermitFormat, folder, kPermitRoom);
}

void FreeSystemLines() {
  lines.manifest.Close();
  lines.permit.Close();
}

const char* GetManifestSystemLine() {
  return lines.manifest.Get();
}

const char* GetPermitSystemLine() {
  return lines.permit.Get();
}
