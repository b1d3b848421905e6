#include "torture/Sample.h"

#include <cstdlib>
#include <map>
#include <string>

#include "support/Turns.h"

namespace {

std::string Wish() {
  const char* const wish = std::getenv("NORVIK_TORTURE");
  return wish ? wish : "";
}

std::uint32_t DrawnFor(std::size_t scenario, std::size_t number) {
  return Drawn(static_cast<std::uint32_t>(scenario * 4096 + number));
}

// What one of the widths tries of a scenario, the other one does not.
bool IsTurn(std::uint32_t drawn, std::uint32_t stride) {
  return drawn % stride == TurnOfThisWidth(stride);
}

// Of eight scenarios that stand side by side, a kind has its turn in one.
bool IsTurnOf(const std::string& kind, std::size_t scenario) {
  return IsTurn(Drawn(kind) + static_cast<std::uint32_t>(scenario), 8);
}

std::set<std::size_t> ChooseSample(const std::vector<FallibleCall>& calls, std::size_t scenario, std::uint32_t stride) {
  std::set<std::size_t> chosen;
  std::map<std::string, std::vector<std::size_t>> kinds;
  for (std::size_t number = 0; number < calls.size(); ++number) {
    kinds[std::string(calls[number].function) + "/" + calls[number].object].push_back(number);
    if (IsTurn(DrawnFor(scenario, number), stride))
      chosen.insert(number);
  }
  for (const auto& [kind, numbers] : kinds) {
    if (IsTurnOf(kind, scenario))
      chosen.insert(numbers[DrawnFor(scenario, numbers[0]) / stride % numbers.size()]);
  }
  return chosen;
}

}  // namespace

std::set<std::size_t> ChooseCalls(const std::vector<FallibleCall>& calls, std::size_t scenario, std::uint32_t stride) {
  const std::string wish = Wish();
  if (wish.empty())
    return ChooseSample(calls, scenario, stride);
  std::set<std::size_t> chosen;
  for (std::size_t number = 0; number < calls.size(); ++number) {
    if (wish == "all" || wish == std::to_string(number))
      chosen.insert(chosen.end(), number);
  }
  return chosen;
}
