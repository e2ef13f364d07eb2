#pragma once

#include <array>
#include <cstddef>
#include <tuple>
#include <utility>

#include "BaseClasses/BaseActionClass.h"
#include "Simulator/UserDistributions.h"

namespace modelling {

/// The delay of an activity, drawn from one of the engine's distributions with parameters that are computed anew for
/// each draw.
/// kKind   what the activity calls itself in a trace
/// kDraw   the operation of the sampler
/// Order   the parameters are computed first, in their order; then the draw.
template <Distribution kKind, auto kDraw, typename... Parameters>
class DistributionDelay {
 public:
  static constexpr Distribution kDistribution = kKind;

  explicit DistributionDelay(Parameters... parameters) : parameters_(std::move(parameters)...) {}

  /// One delay, in simulated time.
  double sample() {
    compute();
    return draw(std::index_sequence_for<Parameters...>{});
  }

  /// The parameters in the present marking; the array stays this object's.
  double* parameters() {
    compute();
    return values_.data();
  }

  /// The rate of an exponential delay in the present marking; 0 for any other.
  double rate() {
    if constexpr (kKind == Exponential) {
      return *parameters();
    } else {
      return 0.0;
    }
  }

 private:
  void compute() {
    values_ = std::apply(
        [](Parameters&... parameter) {
          return std::array<double, sizeof...(Parameters)>{static_cast<double>(parameter())...};
        },
        parameters_);
  }

  template <std::size_t... kIndex>
  double draw(std::index_sequence<kIndex...> /*indices*/) {
    Distributions& sampler = *TheDistribution;
    return (sampler.*kDraw)(values_[kIndex]...);
  }

  std::tuple<Parameters...> parameters_;
  std::array<double, sizeof...(Parameters)> values_{};
};

}  // namespace modelling
