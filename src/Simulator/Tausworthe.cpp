#include "Simulator/Tausworthe.h"

void Tausworthe::srnd(std::uint32_t newSeed) {
  seed = newSeed;
}

double Tausworthe::rnd() {
  static constexpr double f = 1.0 / 2147483647;
  const std::uint32_t t = ((seed << 13) ^ seed) & 0x7fffffffu;
  seed = (t >> 18) ^ t;
  return seed * f;
}
