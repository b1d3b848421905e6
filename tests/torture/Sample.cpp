#include "torture/Sample.h"

#include <cstdlib>
#include <map>
#include <string>

namespace {

std::string Wish() {
  const char* const wish = std::getenv("NORVIK_TORTURE");
  return wish ? wish : "";
}

// A number without any order to it for each seed, scenario and call (the last steps of MurmurHash3).
std::uint32_t Mix(std::size_t scenario, std::size_t number) {
  std::uint32_t mixed = Seed() * 0x9E3779B1u + static_cast<std::uint32_t>(scenario * 4096 + number);
  mixed = (mixed ^ (mixed >> 16)) * 0x85EBCA6Bu;
  mixed = (mixed ^ (mixed >> 13)) * 0xC2B2AE35u;
  return mixed ^ (mixed >> 16);
}

// The widths take turns: what one of them tries of a scenario, the other one does not.
constexpr std::uint32_t kTurn = sizeof(void*) == 8 ? 0 : 1;

bool IsTurn(std::uint32_t mixed, std::uint32_t stride) {
  return mixed % stride == kTurn * (stride / 2);
}

// Of eight scenarios that stand side by side, a kind has its turn in one.
bool IsTurnOf(const std::string& kind, std::size_t scenario) {
  std::size_t sum = 0;
  for (const char character : kind)
    sum = (sum * 31 + static_cast<unsigned char>(character)) % 65521;
  return IsTurn(Mix(sum, 0) + static_cast<std::uint32_t>(scenario), 8);
}

std::set<std::size_t> ChooseSample(const std::vector<FallibleCall>& calls, std::size_t scenario, std::uint32_t stride) {
  std::set<std::size_t> chosen;
  std::map<std::string, std::vector<std::size_t>> kinds;
  for (std::size_t number = 0; number < calls.size(); ++number) {
    kinds[std::string(calls[number].function) + "/" + calls[number].object].push_back(number);
    if (IsTurn(Mix(scenario, number), stride))
      chosen.insert(number);
  }
  for (const auto& [kind, numbers] : kinds) {
    if (IsTurnOf(kind, scenario))
      chosen.insert(numbers[Mix(scenario, numbers[0]) / stride % numbers.size()]);
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
