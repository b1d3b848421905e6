#pragma once

#include "common/Windows.h"

#include <shlobj.h>

#include <string>
#include <utility>
#include <vector>

#include "support/PermitFile.h"
#include "support/XmlDocuments.h"

// Documents with a `Destination` of the given entries, as a parser hands them over, and the folders to which they resolve.

using Folders = std::vector<std::pair<std::string, std::string>>;

inline Microsoft::WRL::ComPtr<IXMLDOMDocument2> DestinationDocument(const Folders& folders) {
  std::string entries;
  for (const auto& folder : folders)
    entries += XmlElement(folder.first, folder.second);
  return ParseXml("<VantorPermissions><Destination>" + entries + "</Destination></VantorPermissions>");
}

inline std::string SpecialFolderPath(int folderId) {
  char path[MAX_PATH] = "";
  SHGetFolderPathA(nullptr, folderId, nullptr, SHGFP_TYPE_CURRENT, path);
  return path;
}

inline std::string TemporaryPath() {
  char path[MAX_PATH] = "";
  GetTempPathA(MAX_PATH, path);
  std::string folder = path;
  folder.pop_back();
  return folder;
}
