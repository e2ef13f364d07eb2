#pragma once

#include <cstdint>

#include "Simulator/RandomNumberGenerator.h"

/// The generator MT19937.
/// Range    open, (0,1): the middle of one of 2^32 equal parts.
/// Seeds    any; a generator that is drawn from without a seed takes 18671867.
/// Cost     regenerates its 624 words at a time.
/// Source   M. Matsumoto and T. Nishimura, Mersenne Twister: a 623-dimensionally equidistributed uniform pseudo-random
///          number generator, ACM TOMACS 8(1), 1998; seeding of their revision of 2002.
class MersenneTwister : public RandomNumberGenerator {
 public:
  double rnd() override;
  void srnd(std::uint32_t seed) override;

 private:
  static constexpr int kDegree = 624;
  static constexpr int kMiddle = 397;

  std::uint32_t stateVector[kDegree] = {};
  bool sVInit = false;  // true once seeded
  int sVIdx = kDegree;  // next word to hand out

  /// The twist constant for a non-zero `y`, else 0.
  static std::uint32_t getMatrixA(std::uint32_t y);
  /// The upper bit of word `i` joined with the lower bits of word `j`, twisted.
  std::uint32_t twisted(int i, int j) const;
  /// Replaces all words by the next 624.
  void regenerate();
  /// The next 32-bit output.
  std::uint32_t rnd_int32();
};
