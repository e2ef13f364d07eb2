#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace bare {

/// Uniform variates on [0,1) in steps of 2^-52, X(j) = (X(j-100) + X(j-37)) mod 1, every one of them used.
/// Source   lagged Fibonacci generator, D. E. Knuth, The Art of Computer Programming, volume 2, section 3.6. The start
///          values come from SplitMix64; G. L. Steele, D. Lea, C. H. Flood, Fast splittable pseudorandom number
///          generators, 2014.
class UniformStream {
 public:
  explicit UniformStream(std::uint64_t seed) {
    for (double& value : block_) {
      seed += 0x9e3779b97f4a7c15U;
      std::uint64_t bits = (seed ^ (seed >> 30)) * 0xbf58476d1ce4e5b9U;
      bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebU;
      value = static_cast<double>((bits ^ (bits >> 31)) >> 12) * 0x1p-52;
    }
    for (int pass = 0; pass < kWarmUpPasses; ++pass) {
      refill();
    }
  }

  double next() {
    if (used_ == kLongLag) [[unlikely]] {
      refill();
    }
    return block_[used_++];
  }

  /// An exponential variate of mean 1.
  double exponential() { return -std::log(next()); }

 private:
  static constexpr std::size_t kLongLag = 100;
  static constexpr std::size_t kShortLag = 37;
  static constexpr int kWarmUpPasses = 20;

  /// Through the truncation, as the compiler makes a branch of a comparison, which no processor can foretell.
  static double sumModuloOne(double x, double y) {
    const double sum = x + y;
    return sum - static_cast<std::int32_t>(sum);
  }

  void refill() {
    for (std::size_t i = 0; i < kShortLag; ++i) {
      block_[i] = sumModuloOne(block_[i], block_[i + kLongLag - kShortLag]);
    }
    for (std::size_t i = kShortLag; i < kLongLag; ++i) {
      block_[i] = sumModuloOne(block_[i], block_[i - kShortLag]);
    }
    used_ = 0;
  }

  std::array<double, kLongLag> block_{};  // the state and the values being used are one
  std::size_t used_ = kLongLag;
};

}  // namespace bare
