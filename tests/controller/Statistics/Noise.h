#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace support {

/// Reproducible noise for tests; the raw numbers of the generator are fixed by the language's standard.
class Noise {
 public:
  explicit Noise(std::uint64_t seed) : generator_(seed) {}

  /// Uniform in [0, 1).
  double uniform() { return static_cast<double>(generator_() >> 11) * 0x1p-53; }

  /// About normal, mean 0 and variance 1: the sum of twelve uniforms.
  double normal() {
    double sum = -6.0;
    for (int term = 0; term < 12; ++term) {
      sum += uniform();
    }
    return sum;
  }

  std::vector<double> normals(std::size_t count) {
    std::vector<double> values(count);
    for (double& value : values) {
      value = normal();
    }
    return values;
  }

 private:
  std::mt19937_64 generator_;
};

}  // namespace support
