#include "advice/FindingKind.h"

const std::vector<FindingKind>& PermitFindingKinds() {
  static const std::vector<FindingKind> kinds = {
      kInvalid,        kCharactersLost,   kFileWritable,     kURLEverything,    kURLNoSeparator, kURLNoBoundary,
      kURLPlainHTTP,   kURLUpperCaseHost, kURLQuery,         kURLUserWritable,  kURLCovered,     kExtensionProgram,
      kExtensionEmpty, kExtensionDot,     kExtensionCovered, kFolderEverything, kFolderStartup,  kFolderNoBoundary,
      kFolderDots,     kFolderUnresolved, kFolderCovered,
  };
  return kinds;
}

const std::vector<FindingKind>& ManifestFindingKinds() {
  static const std::vector<FindingKind> kinds = {
      kInvalid,       kCharactersLost,  kDestinationTwice,  kFileNameMisleads,     kDeviceName,
      kNameEndsInDot, kPathOfOneUser,   kSourcePlainHTTP,   kNoNotFoundText,       kTimeRefused,
      kTimeShifted,   kSourceQueryName, kSourceWithoutName, kCookieNeverPermitted,
  };
  return kinds;
}
