#include "Simulator/RandomNumberGenerator.h"

double RandomNumberGenerator::rnd() {
  return 0.0;
}

void RandomNumberGenerator::srnd(std::uint32_t /*seed*/) {}
