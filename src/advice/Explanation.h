#pragma once

#include <optional>
#include <string>
#include <vector>

#include "advice/Mismatch.h"
#include "advice/PermitDocument.h"
#include "advice/Question.h"

// Why something is permitted, or what is in the way. The verdict is the module's own; what is said about an entry that does
// not permit is found by looking at both texts.

struct Nearest {
  const PermitEntry* entry;
  Mismatch reason;
  std::string message;  // what differs, in words
};

struct Answer {
  Question question;
  std::string asked;       // as it was asked, without user name and password
  std::string understood;  // the corrected URL, the extension, or the resolved folder
  bool isPermitted = false;
  const PermitEntry* by = nullptr;  // the entry that permits it
  std::optional<Nearest> nearest;   // of what is not permitted; nothing when the file has no such entries
};

// Asks the permission file, which is usable and outlives the answer. Unanswered when the module could not read what is
// asked: a folder that cannot be resolved.
Answer Explain(const PermitDocument& permit, const Question& question);
