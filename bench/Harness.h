#pragma once

#include <functional>
#include <string>
#include <vector>

// What is given on the command line behind the scenario's name.
using Arguments = std::vector<std::string>;

// Ends the program with a message unless `condition` holds: a wrong result has no time.
void Require(bool condition, const std::string& message);

// One line of output, "name<tab>value", which scripts/bench reads.
void Report(const std::string& name, double value);

// One of several ways to the same end. `finish` checks what `run` made and removes it; it is not timed.
struct Contestant {
  const char* name;
  std::function<void()> run;
  std::function<void()> finish;
};

// Runs every contestant once, untimed, and reports nothing: what is loaded and connected once is then in place.
void WarmUp(const std::vector<Contestant>& contestants);

// Times every contestant once and reports its seconds. `first` goes first and the others follow in their order, so that over
// the rounds each of them comes in each place.
void MeasureInTurn(const std::vector<Contestant>& contestants, int first);

// The largest number below `most` that keeps `count` * repeats near `budget`, and 1 at least.
int Repeats(int count, int budget, int most);
