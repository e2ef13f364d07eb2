#pragma once

#include <cstdint>

#include "fuzz/SplitMix.h"

namespace fuzz {

/// A stream of uniform numbers, from which the engine and the plain interpreter each draw a copy. Coarse streams make
/// events fall on the same time, and reach both ends of the interval, as the engine's generators can.
class Uniforms {
 public:
  enum class Grain {
    kFine,          ///< 53 bits, in [0, 1)
    kSixtyFourths,  ///< multiples of 1/64 in [0, 1)
    kEighths,       ///< multiples of 1/8 in [0, 1)
    kClosedEighths  ///< multiples of 1/8 in [0, 1]
  };

  Uniforms(Grain grain, std::uint64_t seed) : grain_(grain), random_(seed) {}

  double next() {
    ++drawn_;
    const std::uint64_t bits = random_.next();
    switch (grain_) {
      case Grain::kSixtyFourths:
        return static_cast<double>(bits % 64) / 64;
      case Grain::kEighths:
        return static_cast<double>(bits % 8) / 8;
      case Grain::kClosedEighths:
        return static_cast<double>(bits % 9) / 8;
      default:
        return static_cast<double>(bits >> 11U) * 0x1.0p-53;
    }
  }

  /// Numbers drawn so far.
  [[nodiscard]] long drawn() const { return drawn_; }

 private:
  Grain grain_;
  SplitMix random_;
  long drawn_ = 0;
};

}  // namespace fuzz
