#include "support/Seed.h"

#include <cstdlib>

std::uint32_t Seed() {
  const char* const given = std::getenv("NORVIK_SEED");
  return given ? static_cast<std::uint32_t>(std::strtoul(given, nullptr, 10)) : 0;
}

// The last steps of MurmurHash3.
std::uint32_t Drawn(std::uint32_t number) {
  std::uint32_t mixed = Seed() * 0x9E3779B1u + number;
  mixed = (mixed ^ (mixed >> 16)) * 0x85EBCA6Bu;
  mixed = (mixed ^ (mixed >> 13)) * 0xC2B2AE35u;
  return mixed ^ (mixed >> 16);
}

std::uint32_t Drawn(const std::string& text) {
  std::uint32_t sum = 0;
  for (const char character : text)
    sum = (sum * 31 + static_cast<unsigned char>(character)) % 65521;
  return Drawn(sum * 4096);
}
