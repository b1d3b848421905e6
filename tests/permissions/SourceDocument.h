#pragma once

#include <string>
#include <vector>

#include "support/PermitFile.h"
#include "support/XmlDocuments.h"

// Documents with a `Source` of the given entries, as a parser hands them over.

using Texts = std::vector<std::string>;

inline Microsoft::WRL::ComPtr<IXMLDOMDocument2> SourceDocument(const Texts& urls, const Texts& extensions) {
  std::string entries;
  for (const std::string& url : urls)
    entries += XmlElement("URL", url);
  for (const std::string& extension : extensions)
    entries += XmlElement("Extension", extension);
  return ParseXml("<VantorPermissions><Source>" + entries + "</Source></VantorPermissions>");
}
