#pragma once

#include <utility>

#include "BaseClasses/BaseActionClass.h"

namespace modelling {

/// A delay that is computed by any function, which draws what it needs through TheDistribution. It knows no parameters.
template <Distribution kKind, typename Sample>
class FunctionDelay {
 public:
  static constexpr Distribution kDistribution = kKind;

  explicit FunctionDelay(Sample sample) : sample_(std::move(sample)) {}

  double sample() { return sample_(); }
  static double* parameters() { return nullptr; }
  static double rate() { return 0.0; }

 private:
  Sample sample_;
};

}  // namespace modelling
