#pragma once

#include "common/Windows.h"

#include <string>
#include <vector>

#include "torture/CallCounter.h"
#include "torture/Situations.h"

// What may come of a call that fails.
enum Outcome : unsigned {
  kNotMade = 1 << 0,         // there is no control, and the host has the code
  kNoEngine = 1 << 1,        // the control has no permissions, and every run is E_UNEXPECTED
  kNoList = 1 << 2,          // the permitted URLs are none, which is E_UNEXPECTED as well
  kDenied = 1 << 3,          // the manifest is not permitted: E_ACCESSDENIED
  kRunFails = 1 << 4,        // the run fails with the code that the log tells
  kRefused = 1 << 5,         // the document is not what it has to be: the run fails with E_FAIL
  kCommand = 1 << 6,         // a command fails, the run is S_FALSE, and the other one is carried out
  kCommands = 1 << 7,        // commands fail, and the run is S_FALSE
  kUnread = 1 << 8,          // a `Copy` is not read, and fails when its turn comes; an `Open` is not read, and the run fails
  kUsual = 1 << 9,           // everything is as if nothing had failed
  kLess = 1 << 10,           // a file is not written, or elsewhere, or the existing one stays; the run is a success
  kReplaced = 1 << 11,       // the existing file is replaced by the new one; the run is a success
  kRefusedAnyway = 1 << 12,  // the document is one that is refused, and it is
};

// How the log tells of a failure: by the code of the call that failed, or by another one.
constexpr HRESULT kItsOwn = S_OK;

// A failure that the log has to tell, beyond what it says when nothing fails.
struct ToldRow {
  const char* function;
  const char* step;     // null for every one; one that ends in '*' stands for all that begin so
  const char* subject;  // null for every one
  unsigned outcomes;
  HRESULT code;
};

// A failure that goes by without a line of its own, and why that is right.
struct UntoldRow {
  const char* function;
  const char* step;
  const char* subject;
  unsigned outcomes;
  const char* because;
};

// The rows that are about a call, each in its order.
std::vector<const ToldRow*> ToldRowsOf(const FallibleCall& call, const Situation& situation);
std::vector<const UntoldRow*> UntoldRowsOf(const FallibleCall& call, const Situation& situation);
