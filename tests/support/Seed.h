#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// What samples depend on: NORVIK_SEED, a number from 0 to 4294967295 (0 without it). scripts/test draws another one for each
// run, and prints it.
std::uint32_t Seed();

// Numbers that depend on NORVIK_SEED alone.
class Dice {
 public:
  // A number from 0 to `count` - 1.
  std::size_t Roll(std::size_t count) { return engine() % count; }

  // One of these.
  template <class Item>
  const Item& Choose(const std::vector<Item>& items) {
    return items[Roll(items.size())];
  }

 private:
  std::mt19937 engine{Seed()};
};

// A number without any order to it for each number, which depends on NORVIK_SEED as well.
std::uint32_t Drawn(std::uint32_t number);

// The same for a text.
std::uint32_t Drawn(const std::string& text);
