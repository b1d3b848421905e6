#include "Harness.h"

#include "common/Windows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "support/Stopwatch.h"

void Require(bool condition, const std::string& message) {
  if (condition)
    return;
  std::fprintf(stderr, "norvik_bench: %s (last error %lu)\n", message.c_str(), GetLastError());
  std::exit(1);
}

void Report(const std::string& name, double value) {
  std::printf("%s\t%.9g\n", name.c_str(), value);
}

void WarmUp(const std::vector<Contestant>& contestants) {
  for (const Contestant& contestant : contestants) {
    contestant.run();
    contestant.finish();
  }
}

void MeasureInTurn(const std::vector<Contestant>& contestants, int first) {
  for (std::size_t i = 0; i < contestants.size(); ++i) {
    const Contestant& contestant = contestants[(i + static_cast<std::size_t>(first)) % contestants.size()];
    Report(contestant.name, SecondsOf(contestant.run));
    contestant.finish();
  }
}

int Repeats(int count, int budget, int most) {
  return std::max(1, std::min(most, budget / std::max(1, count)));
}
