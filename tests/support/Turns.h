#pragma once

#include <cstdint>
#include <string>

// What takes long by its nature is shared between the two widths when both are tested side by side (NORVIK_TURNS, which
// scripts/test sets): NORVIK_SEED decides which of them does what. Otherwise a width does everything, as in scripts/torture.

// Of an even number of turns, the one that is this width's.
std::uint32_t TurnOfThisWidth(std::uint32_t turns);

// Two halves of the work, which take about as long: one width has the one, and the other width the other.
enum class Half : std::uint32_t { AHugePlan, AllElse };

// How much a test does: `whole` in the width that has this half, and `part` in the other.
int WholeInOneWidth(int whole, int part, Half half = Half::AllElse);

// A case is shared when the width that does not have it leaves it out. Names a group of such cases, as its TEST_P does: one
// of its values is one width's, and the next perhaps the other's. Gives true, for a constant that stands beside the TEST_P.
bool ShareCases(const char* suite, const char* test);

// The filter for GoogleTest that leaves out the shared cases that the other width has; `filter` is the one that was given.
std::string WithoutCasesOfTheOtherWidth(const std::string& filter);
