#pragma once

#include <cstddef>
#include <tuple>
#include <utility>

#include "Performance_Variables/RateRewardWorker.h"

namespace modelling {

/// A rate worker whose reward is a function of one instance of each of the variable's models.
/// Kind    the engine's worker: InstantOfTimeWorker, IntervalOfTimeWorker and so on
/// Models  a tuple of the models' classes, in the order of their names
template <typename Kind, typename Function, typename Models>
class FunctionWorker final : public Kind {
 public:
  explicit FunctionWorker(Function function)
      : Kind(static_cast<int>(std::tuple_size_v<Models>)), function_(std::move(function)) {}

  double Reward_Function() override { return reward(std::make_index_sequence<std::tuple_size_v<Models>>{}); }

 private:
  template <std::size_t... kSlot>
  double reward(std::index_sequence<kSlot...> /*slots*/) {
    return static_cast<double>(
        function_(*this->template modelAt<std::tuple_element_t<kSlot, Models>>(static_cast<int>(kSlot))...));
  }

  Function function_;
};

}  // namespace modelling
