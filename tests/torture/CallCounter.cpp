#include "torture/CallCounter.h"

void CallCounter::Begin(Order newOrder, std::size_t number, int error) {
  order = newOrder;
  chosen = number;
  chosenError = error;
  failures = 0;
  calls.clear();
  failed.clear();
  openLogFiles = 0;
  failedWith = 0;
}

void CallCounter::LetAll() {
  Begin(Order::Let, 0, 0);
}

void CallCounter::Fail(std::size_t number, int error, bool andAllAfter) {
  Begin(andAllAfter ? Order::FailOn : Order::FailOne, number, error);
}

void CallCounter::EndProcessAt(std::size_t number) {
  Begin(Order::End, number, 0);
}

int CallCounter::Decide(const char* function, const std::string& object, int errors, const std::string& name) {
  const std::size_t number = calls.size();
  calls.push_back({function, openLogFiles > 0 ? "log" : object, errors, name});
  const bool isChosen = order == Order::FailOn ? number >= chosen : number == chosen;
  if (order == Order::Let || !isChosen)
    return -1;
  if (order == Order::End)
    TerminateProcess(GetCurrentProcess(), 0);
  ++failures;
  failed.insert(function);
  return chosenError % errors;
}

void CallCounter::Take(const char* kind, const void* thing) {
  if (thing)
    held.emplace(kind, thing);
}

void CallCounter::GiveBack(const char* kind, const void* thing) {
  const auto found = held.find({kind, thing});
  if (found != held.end())
    held.erase(found);
}

std::string CallCounter::Held() const {
  std::string kinds;
  for (const auto& [kind, thing] : held)
    kinds += (kinds.empty() ? "" : " ") + kind;
  return kinds;
}
