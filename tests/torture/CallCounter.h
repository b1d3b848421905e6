#pragma once

#include "common/Windows.h"

#include <cstddef>
#include <set>
#include <string>
#include <vector>

// One call of the module that can fail.
struct FallibleCall {
  const char* function = "";
  std::string object;  // what it was about: "log", "permit", "manifest", "destination", ...; may be empty
  int errors = 1;      // how many ways of failing it has
  std::string name;    // the file, or the pattern or name that a document is asked for; may be empty
};

// Counts the calls of the module that can fail, and decides which of them do. It also keeps the account of what the module
// took and did not give back.
class CallCounter {
 public:
  // Every call is let through, and recorded.
  void LetAll();

  // Call `number` (counted from 0) fails in its way `error`; with `andAllAfter` so do all calls behind it.
  void Fail(std::size_t number, int error, bool andAllAfter);

  // The process ends when call `number` is made, as if it were killed.
  void EndProcessAt(std::size_t number);

  const std::vector<FallibleCall>& Calls() const { return calls; }
  int Failures() const { return failures; }

  // Did a call of this function fail since the last of the three orders above?
  bool HasFailed(const std::string& function) const { return failed.count(function) != 0; }

  // The way in which the call that is being made fails; -1 when it is let through.
  int Decide(const char* function, const std::string& object, int errors, const std::string& name = "");

  // The call that was asked about last fails by itself, so that it has no other way of failing than its first.
  void FailsByItself() { calls.back().errors = 1; }

  // The system error or the result code with which the last failing call failed; what has no code of its own, as the module
  // has to take it.
  DWORD failedWith = 0;

  // What the module holds. Everything has a name and an address; what is not its own may be given back as well.
  void Take(const char* kind, const void* thing);
  void GiveBack(const char* kind, const void* thing);

  // The kinds of what is held, each as often as it is held; empty when all was given back.
  std::string Held() const;
  void ForgetHeld() { held.clear(); }

  // While the log file is open, all that the module does is writing it.
  int openLogFiles = 0;

 private:
  enum class Order { Let, FailOne, FailOn, End };
  void Begin(Order newOrder, std::size_t number, int error);

  Order order = Order::Let;
  std::size_t chosen = 0;
  int chosenError = 0;
  int failures = 0;
  std::vector<FallibleCall> calls;
  std::set<std::string> failed;
  std::multiset<std::pair<std::string, const void*>> held;
};
