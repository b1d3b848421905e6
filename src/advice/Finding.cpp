#include "advice/Finding.h"

const char* NameOf(FindingLevel level) {
  switch (level) {
    case FindingLevel::Error:
      return "error";
    case FindingLevel::Warning:
      return "warning";
    case FindingLevel::Note:
      break;
  }
  return "note";
}
