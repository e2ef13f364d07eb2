#pragma once

#include <utility>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "Simulator/UserDistributions.h"

namespace modelling {

/// A delay drawn from a distribution of several phases, whose numbers are fixed when the model is built.
/// kPerPhase  numbers that describe one phase
template <Distribution kKind, auto kDraw, int kPerPhase>
class PhasesDelay {
 public:
  static constexpr Distribution kDistribution = kKind;

  explicit PhasesDelay(std::vector<double> numbers) : numbers_(std::move(numbers)) {}

  double sample() {
    Distributions& sampler = *TheDistribution;
    return (sampler.*kDraw)(static_cast<int>(numbers_.size()) / kPerPhase, numbers_.data());
  }
  double* parameters() { return numbers_.data(); }
  static double rate() { return 0.0; }

 private:
  std::vector<double> numbers_;
};

}  // namespace modelling
