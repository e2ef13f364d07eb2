#pragma once

#include <cstdint>

#include "Simulator/Distributions.h"

/// The concrete sampler.
class UserDistributions : public Distributions {
 public:
  /// Holds a LaggedFibonacci, not seeded.
  UserDistributions();
  /// generator 1 gives a Tausworthe, any other value a LaggedFibonacci; the generator is then seeded with `seed`.
  UserDistributions(int generator, std::int32_t seed);
  ~UserDistributions();
};

/// The sampler of the process: what draws, draws through TheDistribution.
extern UserDistributions TheGenerator;
extern UserDistributions* TheDistribution;  // borrowed: TheGenerator, unless the run driver had to make another
