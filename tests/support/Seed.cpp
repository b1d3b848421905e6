#include "support/Seed.h"

#include <cstdlib>

std::uint32_t Seed() {
  const char* const given = std::getenv("NORVIK_SEED");
  return given ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10)) : 0;
}
