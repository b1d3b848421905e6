#pragma once

#include <vector>

#include "advice/Finding.h"

// A kind of finding, by its stable code, and how grave it is when nothing else is said. docs/findings.md has a section for
// each.
struct FindingKind {
  const char* code;
  FindingLevel level;
};

constexpr FindingKind kInvalid = {"invalid", FindingLevel::Error};

constexpr FindingKind kCharactersLost = {"characters-lost", FindingLevel::Warning};

constexpr FindingKind kURLEverything = {"url-everything", FindingLevel::Error};
constexpr FindingKind kURLNoSeparator = {"url-no-separator", FindingLevel::Error};
constexpr FindingKind kURLNoBoundary = {"url-no-boundary", FindingLevel::Warning};
constexpr FindingKind kURLPlainHTTP = {"url-plain-http", FindingLevel::Warning};
constexpr FindingKind kURLUpperCaseHost = {"url-upper-case-host", FindingLevel::Warning};
constexpr FindingKind kURLQuery = {"url-query", FindingLevel::Warning};
constexpr FindingKind kURLCovered = {"url-covered", FindingLevel::Warning};
constexpr FindingKind kURLUserWritable = {"url-user-writable", FindingLevel::Warning};
constexpr FindingKind kExtensionDot = {"extension-dot", FindingLevel::Warning};
constexpr FindingKind kExtensionEmpty = {"extension-empty", FindingLevel::Warning};
constexpr FindingKind kExtensionProgram = {"extension-program", FindingLevel::Warning};
constexpr FindingKind kExtensionCovered = {"extension-covered", FindingLevel::Warning};
constexpr FindingKind kFolderEverything = {"folder-everything", FindingLevel::Error};
constexpr FindingKind kFolderStartup = {"folder-startup", FindingLevel::Warning};
constexpr FindingKind kFolderNoBoundary = {"folder-no-boundary", FindingLevel::Note};
constexpr FindingKind kFolderDots = {"folder-dots", FindingLevel::Warning};
constexpr FindingKind kFolderUnresolved = {"folder-unresolved", FindingLevel::Warning};
constexpr FindingKind kFolderCovered = {"folder-covered", FindingLevel::Warning};
constexpr FindingKind kFileWritable = {"file-writable", FindingLevel::Error};

constexpr FindingKind kDestinationTwice = {"destination-twice", FindingLevel::Warning};
constexpr FindingKind kFileNameMisleads = {"file-name-misleads", FindingLevel::Warning};
constexpr FindingKind kSourcePlainHTTP = {"source-plain-http", FindingLevel::Warning};
constexpr FindingKind kNoNotFoundText = {"no-not-found-text", FindingLevel::Note};
constexpr FindingKind kTimeRefused = {"time-refused", FindingLevel::Warning};
constexpr FindingKind kTimeShifted = {"time-shifted", FindingLevel::Warning};
constexpr FindingKind kSourceWithoutName = {"source-without-name", FindingLevel::Warning};
constexpr FindingKind kSourceQueryName = {"source-query-name", FindingLevel::Warning};
constexpr FindingKind kPathOfOneUser = {"path-of-one-user", FindingLevel::Warning};
constexpr FindingKind kCookieNeverPermitted = {"cookie-never-permitted", FindingLevel::Warning};
constexpr FindingKind kDeviceName = {"device-name", FindingLevel::Warning};
constexpr FindingKind kNameEndsInDot = {"name-ends-in-dot", FindingLevel::Warning};

// Those of a permission file and those of a manifest, in the order of the documentation. Both begin with what they share.
constexpr int kSharedFindingKinds = 2;
const std::vector<FindingKind>& PermitFindingKinds();
const std::vector<FindingKind>& ManifestFindingKinds();
