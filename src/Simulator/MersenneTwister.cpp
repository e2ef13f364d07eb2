#include "Simulator/MersenneTwister.h"

namespace {

constexpr std::uint32_t kUpperBit = 0x80000000u;
constexpr std::uint32_t kLowerBits = 0x7fffffffu;
constexpr std::uint32_t kDefaultSeed = 18671867;

}  // namespace

std::uint32_t MersenneTwister::getMatrixA(std::uint32_t y) {
  return y != 0 ? 0x9908b0dfu : 0u;
}

std::uint32_t MersenneTwister::twisted(int i, int j) const {
  const std::uint32_t y = (stateVector[i] & kUpperBit) | (stateVector[j] & kLowerBits);
  return (y >> 1) ^ getMatrixA(y & 1u);
}

void MersenneTwister::srnd(std::uint32_t seed) {
  stateVector[0] = seed;
  for (sVIdx = 1; sVIdx < kDegree; ++sVIdx) {
    const std::uint32_t previous = stateVector[sVIdx - 1];
    stateVector[sVIdx] = 1812433253u * (previous ^ (previous >> 30)) + static_cast<std::uint32_t>(sVIdx);
  }
  sVInit = true;
}

// Three runs without a remainder operation, whose bodies do not depend on one another within a vector register.
void MersenneTwister::regenerate() {
  for (int i = 0; i < kDegree - kMiddle; ++i) {
    stateVector[i] = stateVector[i + kMiddle] ^ twisted(i, i + 1);
  }
  for (int i = kDegree - kMiddle; i < kDegree - 1; ++i) {
    stateVector[i] = stateVector[i + kMiddle - kDegree] ^ twisted(i, i + 1);
  }
  stateVector[kDegree - 1] = stateVector[kMiddle - 1] ^ twisted(kDegree - 1, 0);
  sVIdx = 0;
}

std::uint32_t MersenneTwister::rnd_int32() {
  if (sVIdx >= kDegree) [[unlikely]] {
    if (!sVInit) {
      srnd(kDefaultSeed);
    }
    regenerate();
  }
  std::uint32_t y = stateVector[sVIdx];
  ++sVIdx;
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680u;
  y ^= (y << 15) & 0xefc60000u;
  y ^= y >> 18;
  return y;
}

double MersenneTwister::rnd() {
  return (rnd_int32() + 0.5) * 2.3283064365386963e-10;
}
